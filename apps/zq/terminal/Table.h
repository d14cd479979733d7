// Rows of texts as aligned columns.
#pragma once

#include <string>
#include <vector>

#include "apps/zq/terminal/Screen.h"

namespace zq {

class Table {
public:
    enum class Align { left, right };
    struct Column {
        std::string title;
        Align align = Align::left;
        bool shrinks = false; // gives way first where the screen is too narrow
    };

    explicit Table(std::vector<Column> columns);

    // One text a column, in any state: they are made plain here.
    void addRow(std::vector<std::string> const& cells);
    // The header and the rows, each with its line end. Cells are aligned by what a terminal shows of them.
    [[nodiscard]] std::string render(Screen const& screen) const;

private:
    [[nodiscard]] std::vector<int> widths(Screen const& screen) const;
    [[nodiscard]] std::string line(std::vector<std::string> const& cells, std::vector<int> const& widths,
                                   Screen const& screen) const;

    std::vector<Column> columns_;
    std::vector<std::string> titles_;
    std::vector<std::vector<std::string>> rows_;
};

} // namespace zq
