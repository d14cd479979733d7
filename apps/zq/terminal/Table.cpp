#include "apps/zq/terminal/Table.h"

#include <algorithm>
#include <utility>

#include "apps/zq/terminal/PlainText.h"

namespace zq {

namespace {

constexpr int gap = 2;
constexpr int narrowest = 8; // columns that a shrinking cell keeps

std::string blanks(int count) {
    return std::string(static_cast<std::size_t>(std::max(count, 0)), ' ');
}

// On a terminal that reorders text a cell from right to left must not pull its neighbours along.
std::string isolated(std::string const& cell, Screen const& screen) {
    return screen.isTerminal && hasRightToLeft(cell) ? "\u2068" + cell + "\u2069" : cell;
}

} // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
    for (Column const& column : columns_) {
        titles_.push_back(plainText(column.title));
    }
}

void Table::addRow(std::vector<std::string> const& cells) {
    std::vector<std::string>& row = rows_.emplace_back(columns_.size());
    for (std::size_t i = 0; i < std::min(row.size(), cells.size()); ++i) {
        row[i] = plainText(cells[i]);
    }
}

std::vector<int> Table::widths(Screen const& screen) const {
    std::vector<int> widths;
    int total = -gap;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        int width = displayWidth(titles_[i]);
        for (std::vector<std::string> const& row : rows_) {
            width = std::max(width, displayWidth(row[i]));
        }
        widths.push_back(width);
        total += gap + width;
    }
    for (std::size_t i = 0; screen.columns > 0 && i < columns_.size(); ++i) {
        if (columns_[i].shrinks && total > screen.columns) {
            int const kept = std::max(widths[i] - (total - screen.columns), std::min(narrowest, widths[i]));
            total -= widths[i] - kept;
            widths[i] = kept;
        }
    }
    return widths;
}

std::string Table::line(std::vector<std::string> const& cells, std::vector<int> const& widths,
                        Screen const& screen) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        std::string const cell = fitToWidth(cells[i], widths[i]);
        std::string const padding = blanks(widths[i] - displayWidth(cell));
        bool const last = i + 1 == cells.size();
        line += i > 0 ? blanks(gap) : "";
        line += columns_[i].align == Align::right ? padding + isolated(cell, screen)
                                                  : isolated(cell, screen) + (last ? "" : padding);
    }
    return line.substr(0, line.find_last_not_of(' ') + 1);
}

std::string Table::render(Screen const& screen) const {
    std::vector<int> const all = widths(screen);
    std::string const header = line(titles_, all, screen);
    std::string text = screen.hasColour ? "\033[1m" + header + "\033[0m\n" : header + "\n";
    for (std::vector<std::string> const& row : rows_) {
        text += line(row, all, screen) + "\n";
    }
    return text;
}

} // namespace zq
