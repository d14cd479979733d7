// One line on a terminal that tells how far something has come.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zq {

// The line for a screen of that many columns, one column narrower than it: the label, a bar, and the fraction
// in whole percent. The label gives way first, then the bar. Without a fraction, the label alone. The label
// is made plain.
[[nodiscard]] std::string progressLine(std::string_view label, std::optional<double> fraction, int columns);

// Writes to the standard error, and only where that is a terminal. The line is drawn over itself and is gone
// when the bar ends. Thread: the main thread.
class ProgressBar {
public:
    ProgressBar();
    ~ProgressBar();
    ProgressBar(ProgressBar const&) = delete;
    ProgressBar& operator=(ProgressBar const&) = delete;

    // `fraction` from 0 to 1; nothing where nobody knows.
    void show(std::string_view label, std::optional<double> fraction);
    // Takes the line away, until the next show.
    void erase();
    [[nodiscard]] bool isVisible() const noexcept { return isTerminal_; }

private:
    bool const isTerminal_;
    std::string shown_; // what stands on the terminal now
};

} // namespace zq
