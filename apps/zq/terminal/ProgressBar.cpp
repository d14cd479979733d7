#include "apps/zq/terminal/ProgressBar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "apps/zq/terminal/PlainText.h"

namespace zq {

namespace {

constexpr int defaultColumns = 80;
constexpr int widestBar = 40;
constexpr int narrowestBar = 8;
constexpr int percentWidth = 4; // "100%"

int terminalColumns() {
    winsize size{};
    bool const known = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : defaultColumns;
}

std::string blanks(int count) {
    return std::string(static_cast<std::size_t>(std::max(count, 0)), ' ');
}

std::string percentText(double fraction) {
    std::string const number = std::to_string(static_cast<int>(std::floor(fraction * 100)));
    return blanks(percentWidth - 1 - static_cast<int>(number.size())) + number + "%";
}

void writeToTerminal(std::string_view text) {
    [[maybe_unused]] auto const written = ::write(STDERR_FILENO, text.data(), text.size());
}

} // namespace

std::string progressLine(std::string_view label, std::optional<double> fraction, int columns) {
    int const room = columns - 1; // a full line would make the terminal begin another
    std::string const plain = plainText(label);
    if (!fraction) {
        return fitToWidth(plain, room);
    }
    double const part = std::isfinite(*fraction) ? std::clamp(*fraction, 0.0, 1.0) : 0.0;
    int const bar = std::min(widestBar, room / 2 - percentWidth - 4);
    int const besides =
        percentWidth + 1 + (bar >= narrowestBar ? bar + 3 : 0); // what stands behind the label
    std::string const fitting = fitToWidth(plain, room - besides);
    std::string line = fitting + " ";
    if (bar >= narrowestBar) {
        int const done = static_cast<int>(part * bar);
        line += "[" + std::string(static_cast<std::size_t>(done), '#') +
                std::string(static_cast<std::size_t>(bar - done), '.') + "] ";
    }
    return line + percentText(part);
}

ProgressBar::ProgressBar() : isTerminal_(::isatty(STDERR_FILENO) != 0) {}

ProgressBar::~ProgressBar() {
    erase();
}

void ProgressBar::show(std::string_view label, std::optional<double> fraction) {
    if (!isTerminal_) {
        return;
    }
    std::string line = progressLine(label, fraction, terminalColumns());
    if (line == shown_) {
        return;
    }
    writeToTerminal("\r" + line + blanks(displayWidth(shown_) - displayWidth(line)));
    shown_ = std::move(line);
}

void ProgressBar::erase() {
    if (!shown_.empty()) {
        writeToTerminal("\r" + blanks(displayWidth(shown_)) + "\r");
        shown_.clear();
    }
}

} // namespace zq
