// "help" and "shell", the commands about commands.

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/Commands.h"

namespace zq {

namespace {

class Help final : public Command {
public:
    void declare(CLI::App&) override {}

    Reply run(Session&) override {
        Reply reply;
        reply.text = commandList();
        reply.members = [text = reply.text](JSON::Builder& json) { addText(json, "help", text); };
        return reply;
    }
};

// The program itself opens the shell.
class ShellInShell final : public Command {
public:
    void declare(CLI::App&) override {}
    Reply run(Session&) override { throw CommandError("this is the shell already"); }
};

} // namespace

std::unique_ptr<Command> makeHelp() {
    return std::make_unique<Help>();
}
std::unique_ptr<Command> makeShell() {
    return std::make_unique<ShellInShell>();
}

} // namespace zq
