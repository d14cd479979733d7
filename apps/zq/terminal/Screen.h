// What the standard output can show.
#pragma once

namespace zq {

// Plain by default: what a file or a pipe gets.
struct Screen {
    bool isTerminal = false;
    bool hasColour = false;     // and NO_COLOR is not set
    bool hasTrueColour = false; // 24 bits a colour
    int columns = 0;            // 0: no limit

    // The standard output of this process as the environment describes it.
    [[nodiscard]] static Screen ofStandardOutput();
};

} // namespace zq
