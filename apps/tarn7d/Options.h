// The command line of the service.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "apps/tarn7d/Server.h"

namespace tarn7d {

struct ServeOptions {
    ServerOptions server;
    bool demo = false;
};

struct AccountOptions {
    enum class Action { add, list, remove, credits, password, block, unblock };

    Action action = Action::list;
    std::filesystem::path data;
    std::string name;
    std::int64_t credits = 0;
};

// What the arguments ask for, or the exit status when all is said: after --help, or a message about wrong
// arguments.
using ParsedOptions = std::variant<ServeOptions, AccountOptions, int>;

// Reads the program's arguments. Prints help to standard output and messages to standard error.
[[nodiscard]] ParsedOptions parseOptions(int count, char const* const* arguments);

} // namespace tarn7d
