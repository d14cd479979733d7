#include "host/engine/network/PercentEncoding.h"

#include <string_view>

#include "host/text/Unicode.h"

namespace engine {

namespace {

template <class Keeps>
std::string encode(std::string_view text, Keeps const& keeps) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size() + text.size() / 4);
    for (char const character : text) {
        if (keeps(character)) {
            encoded += character;
        } else {
            auto const byte = static_cast<unsigned char>(character);
            encoded += '%';
            encoded += digits[byte >> 4];
            encoded += digits[byte & 15];
        }
    }
    return encoded;
}

bool isUnreserved(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

bool isPrintable(char c) {
    return c > 0x20 && c < 0x7f;
}

} // namespace

WideString encodeComponent(WideString const& text) {
    return fromUTF8(encode(toUTF8(text).view(), isUnreserved));
}

std::string encodePath(WideString const& path) {
    return encode(toUTF8(path).view(), isPrintable);
}

} // namespace engine
