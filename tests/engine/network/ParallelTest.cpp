// Several threads speak to several servers through one network.

#include <thread>

#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"

namespace {

using test::RawConnection;
using test::RawServer;

class Parallel : public test::NetworkFixture {};

RawServer::Script echo(std::string name) {
    return [name = std::move(name)](RawConnection& connection) {
        while (auto const request = connection.readRequest()) {
            connection.answer(200, name + request->line + request->body);
        }
    };
}

TEST_F(Parallel, AnswersReachTheThreadThatAsked) {
    RawServer const first(echo("one "));
    RawServer const second(echo("two "));
    Zq::Ptr<iHTTPServer> const one = server(first.name());
    Zq::Ptr<iHTTPServer> const two = server(second.name());
    constexpr int threads = 6;
    constexpr int rounds = 40;
    std::atomic<int> right{0};
    auto const work = [&](int thread) {
        for (int round = 0; round < rounds; ++round) {
            std::string const mark = std::to_string(thread) + "-" + std::to_string(round);
            WideString const path = fromUTF8("/" + mark);
            auto const got = (round % 2 == 0 ? one : two)->get(path);
            right += test::bodyOf(got) == (round % 2 == 0 ? "one " : "two ") + ("GET /" + mark) + " HTTP/1.1";
            auto const posted = two->postForm(fromUTF8("=" + mark), path);
            right += test::bodyOf(posted) == "two POST /" + mark + " HTTP/1.1=" + mark;
            test::RecordingReceiver receiver;
            right += one->httpGetToReceiver(path, receiver) == 200 &&
                     receiver.data == "one GET /" + mark + " HTTP/1.1";
        }
    };
    std::vector<std::thread> all;
    for (int thread = 0; thread < threads; ++thread) {
        all.emplace_back(work, thread);
    }
    for (std::thread& thread : all) {
        thread.join();
    }
    EXPECT_EQ(right, 3 * threads * rounds);
    auto const statistics = network().statistics();
    ASSERT_EQ(statistics.size(), 2u);
    EXPECT_EQ(statistics[0].requests + statistics[1].requests, 3u * threads * rounds);
    EXPECT_EQ(statistics[0].failures + statistics[1].failures, 0u);
    // Of 360 requests. Not one each thread: a request that begins while a connection is being put back opens
    // another.
    EXPECT_LE(first.connections(), 10 * threads);
}

TEST_F(Parallel, ACancelledTaskEndsAllTransfersOfItsThreads) {
    std::atomic<int> waiting{0};
    RawServer const silent([&waiting](RawConnection& connection) {
        if (connection.readRequest()) {
            ++waiting;
            waiting.notify_all();
            connection.waitForEnd();
        }
    });
    Zq::Ptr<iHTTPServer> const one = server(silent.name());
    std::atomic<int> left{0};
    std::vector<std::thread> all;
    for (int thread = 0; thread < 4; ++thread) {
        all.emplace_back([&] { left += one->get(L"/") ? 0 : 1; });
    }
    for (int seen = waiting; seen < 4; seen = waiting) {
        waiting.wait(seen);
    }
    task.cancel();
    for (std::thread& thread : all) {
        thread.join();
    }
    EXPECT_EQ(left, 4);
}

TEST_F(Parallel, ServersAreMadeAndForgottenWhileOthersAreInUse) {
    RawServer const raw(echo(""));
    (void)network(); // made before the threads begin
    std::vector<std::thread> all;
    std::atomic<int> right{0};
    for (int thread = 0; thread < 4; ++thread) {
        all.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                right += server(raw.name())->get(L"/") ? 1 : 0;
                (void)network().statistics();
            }
        });
    }
    for (std::thread& thread : all) {
        thread.join();
    }
    EXPECT_EQ(right, 80);
}

} // namespace
