// Comma-separated values (RFC 4180) that a spreadsheet can open without harm.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace zq {

// One cell: made plain, in quotes where it needs them. A text that a spreadsheet would take for a formula
// gets an apostrophe in front, which keeps it a text.
[[nodiscard]] std::string csvCell(std::string_view text);
// One record with its line end, CR and LF.
[[nodiscard]] std::string csvRecord(std::span<std::string const> cells);

} // namespace zq
