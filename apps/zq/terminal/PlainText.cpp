#include "apps/zq/terminal/PlainText.h"

#include <clocale>
#include <cstdio>
#include <cwchar>
#include <span>

#include "host/text/Unicode.h"

namespace zq {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

bool isIn(std::span<Range const> ranges, char32_t character) {
    for (Range const& range : ranges) {
        if (character >= range.first && character <= range.last) {
            return true;
        }
    }
    return false;
}

// Characters that become a blank: those that end a line or jump.
constexpr Range blanks[] = {{0x09, 0x0d}, {0x85, 0x85}, {0x2028, 0x2029}};

// Characters that go: controls, and those that are invisible and change how others are shown. The joiners
// stay, which emoji and several scripts are written with.
constexpr Range invisible[] = {
    {0x00, 0x1f},     {0x7f, 0x9f},     {0xad, 0xad},       {0x61c, 0x61c},   {0x180e, 0x180e},
    {0x200b, 0x200b}, {0x200e, 0x200f}, {0x202a, 0x202e},   {0x2060, 0x206f}, {0xfeff, 0xfeff},
    {0xfff9, 0xfffb}, {0xfffe, 0xffff}, {0xe0000, 0xe0fff},
};

constexpr Range rightToLeft[] = {
    {0x590, 0x8ff}, {0xfb1d, 0xfdff}, {0xfe70, 0xfeff}, {0x10800, 0x10fff}, {0x1e800, 0x1efff},
};

// The character at the front of well-formed UTF-8, which it takes off.
char32_t takeCharacter(std::string_view& text) {
    auto const byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    unsigned char const lead = byte(0);
    std::size_t const length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    char32_t character = length == 1 ? lead : lead & (0x7fU >> length);
    for (std::size_t i = 1; i < length && i < text.size(); ++i) {
        character = (character << 6) | (byte(i) & 0x3fU);
    }
    text.remove_prefix(length < text.size() ? length : text.size());
    return character;
}

// The system's own width of a character, whatever locale the program runs in.
int widthOf(char32_t character) {
    static locale_t const utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (utf8 == nullptr) {
        return 1;
    }
    locale_t const before = ::uselocale(utf8);
    int const width = ::wcwidth(static_cast<wchar_t>(character));
    ::uselocale(before);
    return width < 0 ? 1 : width;
}

} // namespace

std::string plainText(std::string_view utf8) {
    // Through UTF-16 and back: what comes out is well formed.
    NarrowString const sound = toUTF8(fromUTF8(utf8));
    std::string plain;
    plain.reserve(sound.length());
    for (std::string_view rest = sound.view(); !rest.empty();) {
        std::string_view const from = rest;
        char32_t const character = takeCharacter(rest);
        if (isIn(blanks, character)) {
            plain += ' ';
        } else if (!isIn(invisible, character)) {
            plain += from.substr(0, from.size() - rest.size());
        }
    }
    return plain;
}

std::string escapeHidden(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    for (std::string_view rest = json; !rest.empty();) {
        std::string_view const from = rest;
        char32_t const character = takeCharacter(rest);
        std::string_view const bytes = from.substr(0, from.size() - rest.size());
        if (!isIn(blanks, character) && !isIn(invisible, character)) {
            text += bytes;
            continue;
        }
        for (wchar_t const unit : fromUTF8(bytes)) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(unit) & 0xffffU);
            text += escape;
        }
    }
    return text;
}

int displayWidth(std::string_view plain) {
    int width = 0;
    while (!plain.empty()) {
        width += widthOf(takeCharacter(plain));
    }
    return width;
}

std::string fitToWidth(std::string_view plain, int width) {
    if (displayWidth(plain) <= width) {
        return std::string(plain);
    }
    std::string fitting;
    int left = width - 1; // the mark takes one column
    for (std::string_view rest = plain; !rest.empty();) {
        std::string_view const from = rest;
        left -= widthOf(takeCharacter(rest));
        if (left < 0) {
            break;
        }
        fitting += from.substr(0, from.size() - rest.size());
    }
    return width > 0 ? fitting + "…" : std::string();
}

bool hasRightToLeft(std::string_view plain) {
    while (!plain.empty()) {
        if (isIn(rightToLeft, takeCharacter(plain))) {
            return true;
        }
    }
    return false;
}

} // namespace zq
