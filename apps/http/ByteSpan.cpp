#include "apps/http/ByteSpan.h"

#include <algorithm>
#include <charconv>

namespace http {

namespace {

// One number of a range; nothing for anything else than digits.
std::optional<std::uint64_t> positionFrom(std::string_view text) {
    std::uint64_t position = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), position);
    bool const whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional(position) : std::nullopt;
}

} // namespace

std::optional<ByteSpan> byteSpanOf(std::string_view header, std::uint64_t size) {
    constexpr std::string_view unit = "bytes=";
    std::size_t const dash = header.find('-');
    if (!header.starts_with(unit) || dash == std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view const before = header.substr(unit.size(), dash - unit.size());
    std::string_view const behind = header.substr(dash + 1);
    std::optional<std::uint64_t> const first = positionFrom(before);
    std::optional<std::uint64_t> const last = positionFrom(behind);
    if ((!first && !before.empty()) || (!last && !behind.empty()) || (!first && !last)) {
        return std::nullopt;
    }
    if (!first) { // the last so many bytes
        std::uint64_t const length = std::min(*last, size);
        return ByteSpan{size - length, length};
    }
    if (last && *last < *first) {
        return std::nullopt;
    }
    if (*first >= size) {
        return ByteSpan{};
    }
    return ByteSpan{*first, (last ? std::min(size - 1, *last) : size - 1) - *first + 1};
}

} // namespace http
