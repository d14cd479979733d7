// The pictures of a page, fetched side by side into the cache.

#include <algorithm>
#include <chrono>
#include <future>
#include <thread>

#include "host/engine/files/DiskCache.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using test::RawConnection;
using test::RawServer;

class SmallFiles : public test::NetworkFixture {
protected:
    static std::vector<WideString> addresses(RawServer const& raw, int count, char const* folder = "") {
        std::vector<WideString> all;
        for (int i = 0; i < count; ++i) {
            std::string const text = "http://" + raw.name() + "/" + folder + std::to_string(i) + ".jpg";
            all.push_back(fromUTF8(std::string_view(text)));
        }
        return all;
    }
    [[nodiscard]] std::string stored(WideString const& address) {
        WideString const path = cache_.find(address);
        return path.isEmpty() ? "(not there)" : test::readBytes(std::string(toUTF8(path).view()));
    }

    test::TemporaryFolder folder_;
    engine::DiskCache cache_{folder_.path(), std::uint64_t{100} << 20};
};

// The path of the request.
std::string pathOf(test::RawRequest const& request) {
    return request.line.substr(4, request.line.rfind(' ') - 4);
}

void answerWithThePath(RawConnection& connection) {
    while (auto const request = connection.readRequest()) {
        connection.answer(200, "picture " + pathOf(*request));
    }
}

TEST_F(SmallFiles, AreStoredUnderTheirAddressesOverSixConnectionsAtMost) {
    RawServer const raw(answerWithThePath);
    auto const page = addresses(raw, 250);
    EXPECT_EQ(network().prefetch(page, cache_), 250U);
    for (std::size_t i = 0; i < page.size(); ++i) {
        EXPECT_EQ(stored(page[i]), "picture /" + std::to_string(i) + ".jpg");
    }
    EXPECT_EQ(raw.requests().size(), 250U);
    EXPECT_GE(raw.connections(), 1);
    EXPECT_LE(raw.connections(), 6);
    EXPECT_EQ(raw.requests()[0].header("Accept-Encoding"), "identity");
    EXPECT_EQ(network().statistics()[0].requests, 250U);
    EXPECT_EQ(network().statistics()[0].failures, 0U);
}

TEST_F(SmallFiles, ComeSideBySide) {
    std::promise<void> second;
    auto const secondCame = second.get_future().share();
    // The first answer waits for a second request.
    RawServer const raw([&](RawConnection& connection) {
        while (auto const request = connection.readRequest()) {
            if (connection.number() == 0) {
                secondCame.wait();
            } else if (connection.number() == 1) {
                second.set_value();
            }
            connection.answer(200, "picture");
        }
    });
    EXPECT_EQ(network().prefetch(addresses(raw, 2), cache_), 2U);
}

TEST_F(SmallFiles, ThatAreThereAreNotAskedForAndConnectionsAreKept) {
    RawServer const raw(answerWithThePath);
    auto const page = addresses(raw, 20);
    EXPECT_EQ(network().prefetch(page, cache_), 20U);
    int const connections = raw.connections();
    EXPECT_EQ(network().prefetch(page, cache_), 20U);
    EXPECT_EQ(raw.requests().size(), 20U);
    EXPECT_EQ(network().prefetch(addresses(raw, 20, "next/"), cache_), 20U);
    EXPECT_EQ(raw.requests().size(), 40U);
    EXPECT_LE(raw.connections(), std::max(connections, 6));
}

TEST_F(SmallFiles, OfOneAddressAreAskedForOnce) {
    RawServer const raw(answerWithThePath);
    auto page = addresses(raw, 1);
    page.push_back(page[0]);
    EXPECT_EQ(network().prefetch(page, cache_), 1U);
    EXPECT_EQ(raw.requests().size(), 1U);
}

TEST_F(SmallFiles, ThatCannotBeHadLeaveTheOthersAlone) {
    RawServer const raw([](RawConnection& connection) {
        while (auto const request = connection.readRequest()) {
            std::string const path = pathOf(*request);
            if (path == "/0.jpg") {
                connection.answer(404, "none");
            } else if (path == "/1.jpg") {
                connection.answer(302, "", "Location: /5.jpg\r\n");
            } else if (path == "/2.jpg") {
                connection.answer(200, "packed", "Content-Encoding: gzip\r\n");
            } else if (path == "/3.jpg") {
                connection.answer(200, "");
            } else if (path == "/4.jpg") {
                connection.send("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nshort");
                return;
            } else {
                connection.answer(200, "picture");
            }
        }
    });
    auto page = addresses(raw, 8);
    for (wchar_t const* const odd :
         {L"", L"ftp://127.0.0.1/a", L"file:///etc/passwd", L"http://user@127.0.0.1/a",
          L"http://127.0.0.1:99999/a", L"http://127.0.0.1/a\r\nX: y", L"nonsense"}) {
        page.insert(page.begin(), odd);
    }
    std::string const closed = "http://127.0.0.1:" + std::to_string(test::closedPort()) + "/a.jpg";
    page.push_back(fromUTF8(std::string_view(closed)));
    EXPECT_EQ(network().prefetch(page, cache_), 3U);
    auto const known = addresses(raw, 8);
    for (std::size_t i = 0; i < known.size(); ++i) {
        EXPECT_EQ(stored(known[i]), i < 5 ? "(not there)" : "picture") << i;
    }
}

TEST_F(SmallFiles, ThatAreNotSmallAreEnded) {
    RawServer const raw([](RawConnection& connection) {
        if (auto const request = connection.readRequest()) {
            if (pathOf(*request) == "/0.jpg") {
                connection.send("HTTP/1.1 200 OK\r\nContent-Length: 8388609\r\n\r\n");
                connection.waitForEnd();
                return;
            }
            std::string const block(1 << 20, 'x');
            connection.send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n");
            while (connection.send("100000\r\n" + block + "\r\n")) {
            }
        }
    });
    EXPECT_EQ(network().prefetch(addresses(raw, 2), cache_), 0U);
}

TEST_F(SmallFiles, AreNotAskedOfAServerThatAsksForPatience) {
    RawServer const raw([](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(429, "", "Retry-After: 60\r\n");
        }
    });
    EXPECT_EQ(network().prefetch(addresses(raw, 300), cache_), 0U);
    EXPECT_LE(raw.requests().size(), 12U) << "those that were under way";
    EXPECT_NE(lastError().find("429"), std::string::npos);
}

TEST_F(SmallFiles, AreLeftWhenTheTaskIsCancelled) {
    std::promise<void> reached;
    RawServer const raw([&reached](RawConnection& connection) {
        if (connection.readRequest()) {
            if (connection.number() == 0) {
                reached.set_value();
            }
            connection.waitForEnd();
        }
    });
    Clock::time_point cancelled;
    std::thread person([&] {
        reached.get_future().wait();
        cancelled = Clock::now();
        task.cancel();
    });
    EXPECT_EQ(network().prefetch(addresses(raw, 50), cache_), 0U);
    EXPECT_LT(Clock::now() - cancelled, 500ms);
    person.join();
    EXPECT_NE(lastError().find("cancelled"), std::string::npos);
    EXPECT_EQ(network().prefetch(addresses(raw, 50), cache_), 0U);
}

TEST_F(SmallFiles, AreLeftWhenNothingMovesForTheStallTime) {
    settings.stallTimeout = 300ms;
    RawServer const raw([](RawConnection& connection) { connection.waitForEnd(); });
    auto const start = Clock::now();
    EXPECT_EQ(network().prefetch(addresses(raw, 10), cache_), 0U);
    EXPECT_GE(Clock::now() - start, 300ms);
    EXPECT_LT(Clock::now() - start, 5s);
}

} // namespace
