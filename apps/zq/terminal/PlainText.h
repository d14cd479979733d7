// Text of a service, made fit for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace zq {

// The text on one line, without anything that moves the cursor, changes colours or turns the direction of
// what follows: control characters and line ends become blanks or go, bidirectional controls and other
// invisible characters go, malformed UTF-8 becomes U+FFFD.
[[nodiscard]] std::string plainText(std::string_view utf8);

// The same characters in a text of JSON as escapes, which mean the same: inside strings, the only place where
// JSON has them.
[[nodiscard]] std::string escapeHidden(std::string_view json);

// Columns that the text takes on a terminal, 2 for a wide character and 0 for a combining one. The text is
// plain.
[[nodiscard]] int displayWidth(std::string_view plain);

// The longest beginning of the text that fits, with a "…" where something was cut off.
[[nodiscard]] std::string fitToWidth(std::string_view plain, int width);

// True when a character of the text is written from right to left.
[[nodiscard]] bool hasRightToLeft(std::string_view plain);

} // namespace zq
