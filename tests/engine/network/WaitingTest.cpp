// Servers that cannot be reached or do not answer, and the person who does not want to wait any longer.

#include <chrono>
#include <future>
#include <thread>

#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using test::RawConnection;
using test::RawServer;

class Waiting : public test::NetworkFixture {
protected:
    // Cancels once the server has the request, and gives the time from then to the end of the call.
    template <class Call>
    std::chrono::milliseconds timeToLeave(std::future<void> reached, Call const& call) {
        Clock::time_point cancelled;
        std::thread person([&] {
            reached.wait();
            cancelled = Clock::now();
            task.cancel();
        });
        call();
        auto const left = Clock::now();
        person.join();
        return std::chrono::duration_cast<std::chrono::milliseconds>(left - cancelled);
    }
};

TEST_F(Waiting, AnUnreachablePortIsNoAnswerAndSaysWhatToCheck) {
    std::string const name = "127.0.0.1:" + std::to_string(test::closedPort());
    auto const one = server(name);
    ASSERT_TRUE(one);
    EXPECT_FALSE(one->get(L"/"));
    EXPECT_FALSE(one->postForm(L"a=b", L"/"));
    test::RecordingReceiver receiver;
    EXPECT_EQ(one->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.begins + receiver.ends, 0);
    EXPECT_NE(lastError().find("could not connect to " + name), std::string::npos) << lastError();
    EXPECT_NE(lastError().find("[network] connect in host.toml"), std::string::npos) << lastError();
    EXPECT_EQ(network().statistics()[0].failures, 3u);
}

TEST_F(Waiting, ACancelledTaskLeavesASilentServer) {
    std::promise<void> reached;
    RawServer const raw([&reached](RawConnection& connection) {
        if (connection.readRequest()) {
            reached.set_value();
            connection.waitForEnd();
        }
    });
    auto const one = server(raw.name());
    EXPECT_LT(timeToLeave(reached.get_future(), [&] { EXPECT_FALSE(one->postForm(L"a=b", L"/")); }), 500ms);
    EXPECT_NE(lastError().find("cancelled"), std::string::npos) << lastError();
}

TEST_F(Waiting, ACancelledTaskLeavesAFileThatHasStopped) {
    class Signalling final : public test::RecordingReceiver {
    public:
        [[nodiscard]] bool beginReceive(std::uint64_t length) override {
            reached.set_value();
            return RecordingReceiver::beginReceive(length);
        }
        std::promise<void> reached;
    };
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nbegin");
            connection.waitForEnd();
        }
    });
    auto const one = server(raw.name());
    Signalling receiver;
    EXPECT_LT(timeToLeave(receiver.reached.get_future(),
                          [&] { EXPECT_EQ(one->httpGetToReceiver(L"/", receiver), 0); }),
              500ms);
    EXPECT_EQ(receiver.ends, 1);
}

TEST_F(Waiting, ACancelledTaskLeavesAnUnfinishedHandshake) {
    std::promise<void> reached;
    RawServer const raw([&reached](RawConnection& connection) {
        (void)connection.receive(1);
        reached.set_value();
        connection.waitForEnd();
    });
    auto const one = server(raw.name(), true);
    EXPECT_LT(timeToLeave(reached.get_future(), [&] { EXPECT_FALSE(one->get(L"/")); }), 500ms);
}

TEST_F(Waiting, ACancelledTaskBeginsNothing) {
    RawServer const raw([](RawConnection& connection) { (void)connection.readRequest(); });
    auto const one = server(raw.name());
    task.cancel();
    EXPECT_FALSE(one->get(L"/"));
    EXPECT_FALSE(one->postForm(L"a=b", L"/"));
    test::RecordingReceiver receiver;
    EXPECT_EQ(one->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.begins + receiver.ends, 0);
    EXPECT_EQ(raw.connections(), 0);
}

TEST_F(Waiting, ASilentServerIsLeftAfterTheStallTime) {
    settings.stallTimeout = 300ms;
    RawServer const raw([](RawConnection& connection) { connection.waitForEnd(); });
    auto const start = Clock::now();
    EXPECT_FALSE(server(raw.name())->get(L"/"));
    EXPECT_GE(Clock::now() - start, 300ms);
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_NE(lastError().find("silent for too long"), std::string::npos) << lastError();
}

TEST_F(Waiting, AFileThatStopsMovingIsLeftAfterTheStallTime) {
    settings.stallTimeout = 300ms;
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nbegin");
            connection.waitForEnd();
        }
    });
    test::RecordingReceiver receiver;
    EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0);
    EXPECT_EQ(receiver.ends, 1);
    EXPECT_NE(lastError().find("silent for too long"), std::string::npos) << lastError();
}

TEST_F(Waiting, AHandshakeThatHangsEndsWithTheConnectTime) {
    settings.connectTimeout = 300ms;
    RawServer const raw([](RawConnection& connection) { connection.waitForEnd(); });
    auto const start = Clock::now();
    EXPECT_FALSE(server(raw.name(), true)->get(L"/"));
    EXPECT_LT(Clock::now() - start, 5s);
    EXPECT_NE(lastError().find("in time"), std::string::npos) << lastError();
}

TEST_F(Waiting, AHostThatHasNoAddressIsNoAnswer) {
    EXPECT_FALSE(server("no-such-host.invalid")->get(L"/"));
    EXPECT_NE(lastError().find("could not connect to no-such-host.invalid:80"), std::string::npos)
        << lastError();
}

} // namespace
