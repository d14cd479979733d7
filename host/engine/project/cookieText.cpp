#include <algorithm>
#include <optional>
#include <span>

#include "host/engine/crypto/Digest.h"
#include "host/engine/project/EditRecord.h"

namespace engine {

namespace {

constexpr std::size_t uuidSize = std::tuple_size_v<decltype(Zq::UUID::bytes)>;
constexpr std::size_t cookieSize = uuidSize + std::tuple_size_v<decltype(Cookie::kind)>;

std::optional<std::uint8_t> valueOf(char digit) {
    if (digit >= '0' && digit <= '9') {
        return static_cast<std::uint8_t>(digit - '0');
    }
    char const lower = static_cast<char>(digit | 0x20);
    if (lower >= 'a' && lower <= 'f') {
        return static_cast<std::uint8_t>(lower - 'a' + 10);
    }
    return std::nullopt;
}

} // namespace

std::string cookieText(Cookie const& cookie) {
    std::array<unsigned char, cookieSize> bytes{};
    std::ranges::copy(cookie.kind, std::ranges::copy(cookie.uuid.bytes, bytes.begin()).out);
    return toHex(bytes);
}

Cookie cookieFromText(std::string_view text) {
    Cookie cookie;
    if (text.size() != 2 * cookieSize) {
        return cookie;
    }
    for (std::size_t i = 0; i < cookieSize; ++i) {
        auto const high = valueOf(text[2 * i]);
        auto const low = valueOf(text[2 * i + 1]);
        if (!high || !low) {
            return {};
        }
        std::uint8_t& target = i < uuidSize ? cookie.uuid.bytes[i] : cookie.kind[i - uuidSize];
        target = static_cast<std::uint8_t>(*high << 4 | *low);
    }
    return cookie;
}

} // namespace engine
