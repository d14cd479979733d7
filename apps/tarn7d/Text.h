// Small helpers for text that may be hostile: names of files, titles, queries.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn7d {

// Takes the next character off the text. Malformed bytes give U+FFFD, one at a time. The text must not be
// empty.
[[nodiscard]] char32_t takeCharacter(std::string_view& text) noexcept;

void appendCharacter(std::string& text, char32_t character);

// One line of valid UTF-8: control characters and line ends become blanks, malformed bytes U+FFFD, runs of
// blanks one blank, none at the ends, and at most so many characters.
[[nodiscard]] std::string cleanText(std::string_view text, std::size_t mostCharacters = 200);

// A readable title from the name of a file: without extension, "_", "-" and "." as blanks, first letter
// large.
[[nodiscard]] std::string titleFromFileName(std::string_view fileName);

// Sets characters that are written without blanks between words (Han, kana, Thai and Lao, pictographs) apart,
// so that each is a word of the search index, and a phrase of them finds them anywhere in a title.
[[nodiscard]] std::string segmentForSearch(std::string_view text);

// True for ASCII blanks and the blanks of East Asian and typeset text.
[[nodiscard]] bool isBlank(char32_t character) noexcept;

// A number of decimal digits with an optional minus sign, and nothing else; too large a number becomes the
// largest. False if the text is none.
[[nodiscard]] bool parseInteger(std::string_view text, std::int64_t& value) noexcept;

} // namespace tarn7d
