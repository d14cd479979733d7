// What a command answers, for a person and for a program.
#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "host/json/Builder.h"

namespace zq {

struct Reply {
    std::string text;  // for a person, with line ends; from printed texts that are plain
    std::string error; // one line; not empty: the command failed
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
