#include "apps/zq/terminal/Screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace zq {

namespace {

std::string_view environment(char const* name) {
    char const* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

Screen Screen::ofStandardOutput() {
    Screen screen;
    screen.isTerminal = ::isatty(STDOUT_FILENO) != 0;
    if (!screen.isTerminal) {
        return screen;
    }
    std::string_view const kind = environment("TERM");
    std::string_view const depth = environment("COLORTERM");
    screen.hasColour = environment("NO_COLOR").empty() && !kind.empty() && kind != "dumb";
    screen.hasTrueColour = screen.hasColour && (depth == "truecolor" || depth == "24bit");
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) {
        screen.columns = size.ws_col;
    }
    return screen;
}

} // namespace zq
