#include "apps/tarn7d/Text.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace tarn7d {

namespace {

constexpr char32_t replacement = 0xfffd;

struct Range {
    char32_t first;
    char32_t last;
};

// Writing without blanks between words.
constexpr Range unspacedRanges[] = {
    {0x0e00, 0x0eff},   // Thai, Lao
    {0x2600, 0x27bf},   // symbols and dingbats
    {0x2e80, 0x2fff},   // radicals
    {0x3040, 0x9fff},   // kana, Han
    {0xf900, 0xfaff},   // Han, compatibility
    {0x1f000, 0x1faff}, // pictographs
    {0x20000, 0x3ffff}, // Han, supplementary
};

bool isUnspaced(char32_t character) {
    return std::any_of(std::begin(unspacedRanges), std::end(unspacedRanges), [character](Range range) {
        return character >= range.first && character <= range.last;
    });
}

bool isControl(char32_t character) {
    return character < 0x20 || (character >= 0x7f && character < 0xa0) || character == 0x2028 ||
           character == 0x2029 ||
           // Direction marks can make a log line or a title read as something else.
           (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
}

} // namespace

char32_t takeCharacter(std::string_view& text) noexcept {
    auto const byte = [&text](std::size_t i) -> char32_t { return static_cast<unsigned char>(text[i]); };
    char32_t const first = byte(0);
    std::size_t length = 1;
    char32_t value = first;
    char32_t least = 0;
    if (first >= 0xf0 && first < 0xf5) {
        length = 4;
        value = first & 0x07;
        least = 0x10000;
    } else if (first >= 0xe0 && first < 0xf0) {
        length = 3;
        value = first & 0x0f;
        least = 0x800;
    } else if (first >= 0xc2 && first < 0xe0) {
        length = 2;
        value = first & 0x1f;
        least = 0x80;
    } else if (first >= 0x80) {
        text.remove_prefix(1);
        return replacement;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= text.size() || (byte(i) & 0xc0) != 0x80) {
            text.remove_prefix(1);
            return replacement;
        }
        value = value << 6 | (byte(i) & 0x3f);
    }
    if (value < least || value > 0x10ffff || (value >= 0xd800 && value <= 0xdfff)) {
        text.remove_prefix(1);
        return replacement;
    }
    text.remove_prefix(length);
    return value;
}

void appendCharacter(std::string& text, char32_t character) {
    auto const add = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (character < 0x80) {
        add(character);
    } else if (character < 0x800) {
        add(0xc0 | character >> 6);
        add(0x80 | (character & 0x3f));
    } else if (character < 0x10000) {
        add(0xe0 | character >> 12);
        add(0x80 | (character >> 6 & 0x3f));
        add(0x80 | (character & 0x3f));
    } else {
        add(0xf0 | character >> 18);
        add(0x80 | (character >> 12 & 0x3f));
        add(0x80 | (character >> 6 & 0x3f));
        add(0x80 | (character & 0x3f));
    }
}

bool isBlank(char32_t character) noexcept {
    return character == ' ' || (character >= '\t' && character <= '\r') || character == 0xa0 ||
           (character >= 0x2000 && character <= 0x200a) || character == 0x202f || character == 0x3000;
}

std::string cleanText(std::string_view text, std::size_t mostCharacters) {
    std::string clean;
    bool blank = false;
    for (std::size_t count = 0; !text.empty() && count < mostCharacters;) {
        char32_t const character = takeCharacter(text);
        if (isBlank(character) || isControl(character)) {
            blank = !clean.empty();
            continue;
        }
        if (blank) {
            clean += ' ';
            ++count;
            blank = false;
        }
        appendCharacter(clean, character);
        ++count;
    }
    return clean;
}

std::string titleFromFileName(std::string_view fileName) {
    std::size_t const dot = fileName.rfind('.');
    std::string stem(dot == std::string_view::npos || dot == 0 ? fileName : fileName.substr(0, dot));
    std::replace_if(
        stem.begin(), stem.end(), [](char c) { return c == '_' || c == '-' || c == '.'; }, ' ');
    std::string title = cleanText(stem);
    if (!title.empty() && title.front() >= 'a' && title.front() <= 'z') {
        title.front() = static_cast<char>(title.front() - 'a' + 'A');
    }
    return title.empty() ? "Untitled" : title;
}

std::string segmentForSearch(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        char32_t const character = takeCharacter(text);
        if (character == 0) {
            continue; // the index's query language ends a text there
        }
        bool const apart = isUnspaced(character);
        if (apart && !result.empty() && result.back() != ' ') {
            result += ' ';
        }
        appendCharacter(result, character);
        if (apart) {
            result += ' ';
        }
    }
    return result;
}

bool parseInteger(std::string_view text, std::int64_t& value) noexcept {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::result_out_of_range) {
        value = text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                    : std::numeric_limits<std::int64_t>::max();
    } else if (error != std::errc()) {
        return false;
    }
    return end == text.data() + text.size();
}

} // namespace tarn7d
