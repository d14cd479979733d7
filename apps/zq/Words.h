// A line of the shell as words.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zq {

// The words of a line, separated by blanks. 'Single quotes' keep everything as it stands; "double quotes"
// keep blanks, and a backslash in them or outside of quotes takes the next character as it stands. A word
// that begins with "#" and what follows it is a remark. Nothing when a quote is not closed or the line ends
// in a backslash.
[[nodiscard]] std::optional<std::vector<std::string>> splitWords(std::string_view line);

} // namespace zq
