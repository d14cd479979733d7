// Downloads as tasks: what is silent, and what goes on without end, is left when the tasks are shut down.

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <string>

#include "host/engine/os/TaskContext.h"
#include "host/engine/tasks/TaskQueue.h"
#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using engine::TaskQueue;
using test::RawConnection;
using test::RawServer;

class Downloads : public test::NetworkFixture {
protected:
    Downloads() {
        HostServices services;
        services.tasks = &context_;
        before_ = installHost(services);
    }
    ~Downloads() override {
        forgetNetwork();
        installHost(before_);
    }

private:
    engine::TaskContext context_;
    HostServices before_;
};

// Takes everything and keeps nothing.
class Swallowing final : public iHTTPServer::iDataReceiver {
public:
    [[nodiscard]] bool receiveData(std::uint64_t, Zq::Ptr<iMemHolder> const&) override { return true; }
};

TEST_F(Downloads, EightThatRunEndWithinTwoSecondsOfTheShuttingDown) {
    constexpr int count = 8;
    std::latch underWay(count);
    // By turns: never answers, stops within the file, sends without end, stops within the head.
    RawServer const raw([&underWay](RawConnection& connection) {
        if (!connection.readRequest()) {
            return;
        }
        std::string const head = "HTTP/1.1 200 OK\r\nContent-Length: 1000000000000\r\n\r\n";
        std::string const block(64 << 10, 'x');
        switch (connection.number() % 4) {
        case 0:
            break;
        case 1:
            connection.send(head + block);
            break;
        case 2:
            connection.send(head);
            underWay.count_down();
            while (connection.send(block)) {
            }
            return;
        default:
            connection.send(head.substr(0, 30));
        }
        underWay.count_down();
        connection.waitForEnd();
    });
    Zq::Ptr<iHTTPServer> const one = server(raw.name());
    TaskQueue queue(count);
    for (int i = 0; i < count; ++i) {
        queue.add("download", [&one](engine::iTaskMonitor&) -> engine::TaskResult {
            Swallowing receiver;
            int const status = one->httpGetToReceiver(L"clip.mov", receiver);
            return {status == 200, "status " + std::to_string(status)};
        });
    }
    underWay.wait();
    auto const start = Clock::now();
    queue.shutDown();
    EXPECT_LT(Clock::now() - start, 2s);
    auto const reports = queue.reports();
    ASSERT_EQ(reports.size(), static_cast<std::size_t>(count));
    for (engine::TaskReport const& report : reports) {
        EXPECT_TRUE(report.ended);
        EXPECT_EQ(report.status, iBackgroundTask::eCancelling);
        EXPECT_EQ(report.result.text, "status 0");
    }
    EXPECT_EQ(raw.connections(), count);
}

TEST_F(Downloads, OneThatIsCancelledLeavesTheOthersAlone) {
    std::promise<void> silent;
    std::promise<void> cancelled;
    auto const wasCancelled = cancelled.get_future().share();
    RawServer const raw([&](RawConnection& connection) {
        if (auto const request = connection.readRequest()) {
            if (request->line.find("silent") != std::string::npos) {
                silent.set_value();
                connection.waitForEnd();
            } else {
                wasCancelled.wait();
                connection.answer(200, "a whole file");
            }
        }
    });
    Zq::Ptr<iHTTPServer> const one = server(raw.name());
    TaskQueue queue(2);
    auto const fetch = [&one](wchar_t const* path) {
        return [&one, path](engine::iTaskMonitor&) -> engine::TaskResult {
            Swallowing receiver;
            return {one->httpGetToReceiver(path, receiver) == 200, {}};
        };
    };
    std::uint64_t const first = queue.add("silent", fetch(L"silent.mov"));
    std::uint64_t const second = queue.add("whole", fetch(L"whole.mov"));
    silent.get_future().wait();
    EXPECT_TRUE(queue.cancel(first));
    auto const left = queue.waitFor(first, 2s);
    EXPECT_TRUE(left && left->ended);
    cancelled.set_value();
    auto const whole = queue.waitFor(second, 20s);
    EXPECT_TRUE(whole && whole->ended && whole->result.succeeded);
}

} // namespace
