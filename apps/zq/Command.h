// The commands of the program, each a small class that is made anew for every call.
#pragma once

#include <CLI/App.hpp>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "apps/zq/Reply.h"
#include "apps/zq/Session.h"

namespace zq {

class Command {
public:
    virtual ~Command() = default;
    // Declares options and arguments, whose values go to members of the command.
    virtual void declare(CLI::App& options) = 0;
    // Runs with the declared values. Throws CommandError to fail.
    [[nodiscard]] virtual Reply run(Session& session) = 0;
};

struct CommandEntry {
    char const* name;
    char const* summary;
    std::unique_ptr<Command> (*make)();
};

// All commands, in the order in which help lists them.
[[nodiscard]] std::span<CommandEntry const> commandTable();
// Null for a name that no command has.
[[nodiscard]] CommandEntry const* findCommand(std::string_view name);
// The command whose name is nearest to a mistyped one; null where none is near.
[[nodiscard]] CommandEntry const* nearestCommand(std::string_view name);
// The names and summaries of all commands, a line each.
[[nodiscard]] std::string commandList();

} // namespace zq
