#include "apps/zq/Csv.h"

#include "apps/zq/terminal/PlainText.h"

namespace zq {

std::string csvCell(std::string_view text) {
    std::string cell = plainText(text);
    // Spreadsheets pass over blanks in front of a formula, and some read full-width signs as signs.
    std::string_view seen = cell;
    seen.remove_prefix(std::min(seen.find_first_not_of(' '), seen.size()));
    for (std::string_view const sign : {"=", "+", "-", "@", "＝", "＋", "－", "＠"}) {
        if (seen.starts_with(sign)) {
            cell.insert(0, "'");
            break;
        }
    }
    bool const padded = !cell.empty() && (cell.front() == ' ' || cell.back() == ' ');
    if (!padded && cell.find_first_of(",\"") == std::string::npos) {
        return cell;
    }
    std::string quotedCell = "\"";
    for (char const character : cell) {
        quotedCell += character == '"' ? "\"\"" : std::string(1, character);
    }
    return quotedCell + "\"";
}

std::string csvRecord(std::span<std::string const> cells) {
    std::string record;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        record += (i == 0 ? "" : ",") + csvCell(cells[i]);
    }
    return record + "\r\n";
}

} // namespace zq
