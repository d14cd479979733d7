// tarn7d: the embedded service as a program.
#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <thread>

#include "apps/tarn7d/AccountCommand.h"
#include "apps/tarn7d/DemoFootage.h"
#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/Options.h"
#include "apps/tarn7d/Server.h"
#include "host/engine/os/standardDescriptors.h"
#include "host/json/Builder.h"
#include "host/text/Unicode.h"

namespace {

using namespace tarn7d;

constexpr char const* demoAccount = "editor";
constexpr char const* demoPassword = "tarn7";
constexpr std::int64_t demoCredits = 500;

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

// Turns the first signal that ends the program into a stop request. The signals are blocked in every thread,
// so that none arrives anywhere else.
class SignalWatch {
public:
    SignalWatch() {
        sigset_t const signals = endingSignals();
        ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
        (void)std::signal(SIGPIPE, SIG_IGN);
        thread_ = std::jthread([this](std::stop_token const& ended) { wait(ended); });
    }

    [[nodiscard]] std::stop_token token() const { return stop_.get_token(); }
    void waitForSignal() { thread_.join(); }

private:
    void wait(std::stop_token const& ended) {
        sigset_t const signals = endingSignals();
        constexpr timespec step{0, 100'000'000};
        while (!ended.stop_requested()) {
            if (::sigtimedwait(&signals, nullptr, &step) > 0) {
                stop_.request_stop();
                return;
            }
        }
    }

    std::stop_source stop_;
    std::jthread thread_;
};

void printReadyLine(int port, std::filesystem::path const& ca,
                    std::optional<FaultDeskAddress> const& faultDesk) {
    JSON::Builder line;
    line.startChild(nullptr);
    line.add("ready", true);
    line.add("port", static_cast<std::int32_t>(port));
    line.add("ca", fromUTF8(std::string_view(ca.native())), true);
    if (faultDesk) {
        line.startChild("faultDesk");
        line.add("port", static_cast<std::int32_t>(faultDesk->port));
        line.add("token", fromUTF8(faultDesk->token), true);
        line.endChild();
    }
    line.endChild();
    std::cout << toUTF8(line.getOutput()).view() << std::endl;
}

int serve(ServeOptions const& options) {
    SignalWatch signals;
    if (options.demo) {
        std::filesystem::create_directories(options.server.footage);
    }
    Server server(options.server);
    if (options.demo) {
        switch (makeDemoFootage(options.server.footage, signals.token())) {
        case DemoResult::complete:
            break;
        case DemoResult::stopped:
            return 0;
        case DemoResult::failed:
            throw std::runtime_error("the demonstration footage is not complete");
        }
        (void)server.addAccount(demoAccount, demoPassword, demoCredits);
    }
    int const port = server.start();
    printReadyLine(port, server.caFile(), server.faultDesk());
    signals.waitForSignal();
    logLine("ending");
    server.stop();
    return 0;
}

} // namespace

int main(int count, char** arguments) {
    engine::openStandardDescriptors();
    ParsedOptions const parsed = parseOptions(count, arguments);
    if (auto const* status = std::get_if<int>(&parsed)) {
        return *status;
    }
    if (auto const* account = std::get_if<AccountOptions>(&parsed)) {
        return runAccountCommand(*account);
    }
    try {
        return serve(std::get<ServeOptions>(parsed));
    } catch (std::exception const& error) {
        std::cerr << "tarn7d: " << error.what() << '\n';
        return 1;
    }
}
