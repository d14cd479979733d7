// Words of a command line or of a line of the shell, made into a command and run.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "apps/zq/Command.h"
#include "apps/zq/Interrupts.h"
#include "apps/zq/Output.h"

namespace zq {

// A command that is ready to run, or what is to be answered in its place: its help, or a mistake in the
// words.
struct PreparedCommand {
    CommandEntry const* entry = nullptr;
    std::unique_ptr<Command> command; // null: answer `reply`
    Reply reply;
    Output::Format format = Output::Format::text;
};

// The first word is the command's name. The format is the given one unless the words ask for JSON.
[[nodiscard]] PreparedCommand prepareCommand(std::vector<std::string> const& words, Output::Format format);

// Runs it, cancelled by a signal. What it throws becomes the reply's error.
[[nodiscard]] Reply runCommand(PreparedCommand& prepared, Session& session);

// Reads commands from the session's input until it ends, "quit" or "exit", or a signal asks for the end, and
// answers each. True when every command succeeded.
[[nodiscard]] bool runShell(Session& session, Interrupts const& interrupts, Output& output,
                            Output::Format format);

} // namespace zq
