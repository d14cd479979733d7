// "panel": serves the media browser until the program is told to end.

#include <chrono>
#include <thread>

#include "apps/zq/Command.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/TaskWait.h"
#include "apps/zq/commands/Commands.h"
#include "apps/zq/panel/PanelProgram.h"

namespace zq {

namespace {

class Panel final : public Command {
public:
    void declare(CLI::App& options) override {
        options
            .add_option(
                "--port", port_,
                "port of the loopback interface; where none is given, that of earlier runs or any free one")
            ->check(CLI::Range(lowestPort, highestPort))
            ->type_name("N");
        options.add_flag("--no-browser", noBrowser_, "do not open it in the web browser");
    }

    Reply run(Session& session) override {
        panel::PanelProgram program(session, port_);
        std::string const address = program.address();
        Reply reply;
        reply.standsInterrupted = true; // it runs until it is interrupted
        reply.text = address + "\n";
        reply.members = [address](JSON::Builder& json) { addText(json, "address", address); };
        session.live().tell(reply);
        if (!noBrowser_) {
            program.openInBrowser();
        }
        constexpr std::chrono::milliseconds step{100};
        while (!isCommandCancelled()) {
            std::this_thread::sleep_for(step);
            program.removeUsedPage();
        }
        return reply;
    }

private:
    // Below are those that a browser leaves out of an address, or that need rights.
    static constexpr int lowestPort = 1024;
    static constexpr int highestPort = 65535;

    int port_ = 0;
    bool noBrowser_ = false;
};

} // namespace

std::unique_ptr<Command> makePanel() {
    return std::make_unique<Panel>();
}

} // namespace zq
