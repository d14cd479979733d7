// What a command answers, for a person and for a program.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/json/Builder.h"

namespace zq {

struct Reply {
    std::string text;                  // for a person, with line ends; from printed texts that are plain
    std::string error;                 // one line; not empty: the command failed
    std::vector<std::string> warnings; // a line each, for a person; a program finds them in the members
    // The command has done, or told, something that an interruption does not take back: the reply stands
    // then too. Others count as not having run.
    bool standsInterrupted = false;
    // The command has printed this answer itself, at its start, as it runs until it is told to end.
    bool told = false;
    // Adds the members of the JSON answer that stand behind "ok" and "error"; may be empty.
    std::function<void(JSON::Builder&)> members;

    [[nodiscard]] bool ok() const noexcept { return error.empty(); }
};

// Thrown by a command that fails; its text becomes the reply's error.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace zq
