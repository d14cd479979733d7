#include "host/text/Unicode.h"

namespace {

constexpr char32_t replacement = 0xfffd;

bool isHighSurrogate(char32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool isLowSurrogate(char32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

// The element's code unit; what is no code unit at all, where wchar_t is wider, is malformed by itself.
char32_t unitOf(wchar_t element) {
    auto const value = static_cast<char32_t>(element);
    return value > 0xffff ? replacement : value;
}

template <class Output>
void putUTF8(char32_t character, Output&& put) {
    if (character < 0x80) {
        put(static_cast<char>(character));
    } else if (character < 0x800) {
        put(static_cast<char>(0xc0 | (character >> 6)));
        put(static_cast<char>(0x80 | (character & 0x3f)));
    } else if (character < 0x10000) {
        put(static_cast<char>(0xe0 | (character >> 12)));
        put(static_cast<char>(0x80 | ((character >> 6) & 0x3f)));
        put(static_cast<char>(0x80 | (character & 0x3f)));
    } else {
        put(static_cast<char>(0xf0 | (character >> 18)));
        put(static_cast<char>(0x80 | ((character >> 12) & 0x3f)));
        put(static_cast<char>(0x80 | ((character >> 6) & 0x3f)));
        put(static_cast<char>(0x80 | (character & 0x3f)));
    }
}

// Reads one character from the front of `text` and removes what it took. A malformed sequence takes its valid
// beginning, as the Unicode standard recommends (section 3.9, maximal subparts), and gives U+FFFD.
char32_t takeUTF8(std::string_view& text) {
    auto const byte = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char const first = byte(0);
    std::size_t extra = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xbf;
    char32_t value = first;
    if (first < 0x80) {
        extra = 0;
    } else if (first >= 0xc2 && first <= 0xdf) {
        extra = 1;
        value = first & 0x1fU;
    } else if (first >= 0xe0 && first <= 0xef) {
        extra = 2;
        value = first & 0x0fU;
        low = first == 0xe0 ? 0xa0 : 0x80;
        high = first == 0xed ? 0x9f : 0xbf;
    } else if (first >= 0xf0 && first <= 0xf4) {
        extra = 3;
        value = first & 0x07U;
        low = first == 0xf0 ? 0x90 : 0x80;
        high = first == 0xf4 ? 0x8f : 0xbf;
    } else {
        text.remove_prefix(1);
        return replacement;
    }
    for (std::size_t i = 1; i <= extra; ++i) {
        if (i >= text.size() || byte(i) < low || byte(i) > high) {
            text.remove_prefix(i);
            return replacement;
        }
        value = (value << 6) | (byte(i) & 0x3fU);
        low = 0x80;
        high = 0xbf;
    }
    text.remove_prefix(extra + 1);
    return value;
}

} // namespace

NarrowString toUTF8(std::wstring_view text) {
    NarrowString result;
    result.reserve(static_cast<std::uint32_t>(text.size()));
    // Runs of characters are gathered here, so that the text grows by blocks and not by bytes.
    char block[256];
    std::size_t used = 0;
    auto const put = [&](char byte) { block[used++] = byte; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = unitOf(text[i]);
        if (isHighSurrogate(character) && i + 1 < text.size() && isLowSurrogate(unitOf(text[i + 1]))) {
            character = 0x10000 + ((character - 0xd800) << 10) + (unitOf(text[i + 1]) - 0xdc00);
            ++i;
        } else if (isHighSurrogate(character) || isLowSurrogate(character)) {
            character = replacement;
        }
        putUTF8(character, put);
        if (used + 4 > sizeof block) {
            result.append(std::string_view(block, used));
            used = 0;
        }
    }
    result.append(std::string_view(block, used));
    return result;
}

WideString fromUTF8(std::string_view text) {
    WideString result;
    result.reserve(static_cast<std::uint32_t>(text.size()));
    wchar_t block[128];
    std::size_t used = 0;
    while (!text.empty()) {
        char32_t const character = takeUTF8(text);
        if (character < 0x10000) {
            block[used++] = static_cast<wchar_t>(character);
        } else {
            block[used++] = static_cast<wchar_t>(0xd800 + ((character - 0x10000) >> 10));
            block[used++] = static_cast<wchar_t>(0xdc00 + ((character - 0x10000) & 0x3ff));
        }
        if (used + 2 > sizeof block / sizeof block[0]) {
            result.append(std::wstring_view(block, used));
            used = 0;
        }
    }
    result.append(std::wstring_view(block, used));
    return result;
}
