// Events over connections, and connections that want to keep others out.

#include <atomic>
#include <deque>
#include <thread>

#include "apps/http/LoopbackServer.h"
#include "tests/zq/panel/TransportFixture.h"

namespace {

using panel_tests::Answer;
using panel_tests::RawClient;
using testing::HasSubstr;
using testing::Not;
using zq::panel::EventHub;

class StreamsTest : public panel_tests::TransportFixture {
protected:
    // Begins to listen, and gives the head of the answer.
    Answer listen(RawClient& client, std::string const& headers = {}) const {
        return client.ask(request("GET /api/events", headers));
    }
    [[nodiscard]] static std::string lastEvent(std::uint64_t number) {
        return "Last-Event-ID: " + std::to_string(number) + "\r\n";
    }
};

// A page that begins a new stream cannot send the header.
TEST_F(StreamsTest, WhatCameBehindANumberInTheQueryIsToldToo) {
    std::uint64_t const before = events_.last();
    events_.send("task", R"({"task":1})");
    events_.send("task", R"({"task":2})");
    RawClient client(server_->port());
    EXPECT_EQ(client.ask(request("GET /api/events?since=" + std::to_string(before + 1))).status, 200);
    std::string const told = client.receiveThrough("\n\n");
    EXPECT_THAT(told, HasSubstr("\ndata: {\"task\":2}\n"));
    EXPECT_THAT(told, Not(HasSubstr("{\"task\":1}")));
    RawClient old(server_->port());
    EXPECT_EQ(old.ask(request("GET /api/events?since=1")).status, 200);
    EXPECT_THAT(old.receiveThrough("\n\n"), HasSubstr("event: reset\n")) << "of another run";
}

TEST_F(StreamsTest, EventsComeAsTheyAreSent) {
    RawClient client(server_->port());
    Answer const head = listen(client);
    EXPECT_EQ(head.status, 200);
    EXPECT_EQ(head.header("content-type"), "text/event-stream");
    EXPECT_EQ(head.header("cache-control"), "no-store");
    std::uint64_t const before = events_.last();
    events_.send("task", R"({"task":1})");
    std::string const expected =
        "id: " + std::to_string(before + 1) + "\nevent: task\ndata: {\"task\":1}\n\n";
    EXPECT_THAT(client.receiveThrough("\n\n"), HasSubstr(expected));
}

TEST_F(StreamsTest, APageThatWasAwayGetsWhatItMissed) {
    events_.send("a", "1");
    std::uint64_t const seen = events_.last();
    events_.send("b", "2");
    events_.send("c", "3");
    RawClient client(server_->port());
    listen(client, lastEvent(seen));
    std::string const got = client.receiveThrough("data: 3\n\n");
    EXPECT_THAT(got, HasSubstr("event: b\ndata: 2\n\n"));
    EXPECT_THAT(got, Not(HasSubstr("event: a")));
    EXPECT_THAT(got, Not(HasSubstr("reset")));
}

TEST_F(StreamsTest, APageThatMissedTooMuchIsToldToBeginAnew) {
    events_.send("first", "1");
    std::uint64_t const seen = events_.last();
    for (std::size_t i = 0; i <= EventHub::kept; ++i) {
        events_.send("more", "2");
    }
    for (std::uint64_t const number : {seen, seen - 100, events_.last() + 1, std::uint64_t{1}}) {
        RawClient client(server_->port());
        listen(client, lastEvent(number));
        std::string const got = client.receiveThrough("\n\n");
        EXPECT_THAT(got,
                    HasSubstr("id: " + std::to_string(events_.last()) + "\nevent: reset\ndata: null\n\n"))
            << number;
    }
}

TEST_F(StreamsTest, TheOldestThatIsKeptIsStillTold) {
    events_.send("first", "1");
    std::uint64_t const seen = events_.last();
    for (std::size_t i = 0; i < EventHub::kept; ++i) {
        events_.send("more", std::to_string(i));
    }
    RawClient client(server_->port());
    listen(client, lastEvent(seen));
    std::string const got =
        client.receiveThrough("event: more\ndata: " + std::to_string(EventHub::kept - 1) + "\n\n");
    EXPECT_THAT(got, HasSubstr("event: more\ndata: 0\n\n"));
    EXPECT_THAT(got, Not(HasSubstr("reset")));
}

TEST_F(StreamsTest, NumbersOfAnotherRunAreNotTakenForOwnOnes) {
    std::uint64_t const earlier = events_.last();
    EventHub later;
    later.send("a", "1");
    std::string piece;
    ASSERT_TRUE(later.listen(earlier == later.last() ? earlier - 1 : earlier)->next(piece));
    EXPECT_THAT(piece, HasSubstr("reset"));
}

TEST_F(StreamsTest, ALineEndInAnEventDoesNotEndIt) {
    auto const stream = events_.listen(0);
    events_.send("a", "{\"x\":1}\n\nevent: forged\r\ndata: 2");
    std::string piece;
    ASSERT_TRUE(stream->next(piece));
    EXPECT_THAT(piece, HasSubstr("data: {\"x\":1}  event: forged  data: 2\n\n"));
}

TEST_F(StreamsTest, ManyPagesGetAllEventsInOneOrder) {
    constexpr int pages = 20;
    constexpr int count = 300;
    std::deque<RawClient> clients;
    for (int i = 0; i < pages; ++i) {
        listen(clients.emplace_back(server_->port()));
    }
    {
        std::vector<std::jthread> senders;
        for (int sender = 0; sender < 3; ++sender) {
            senders.emplace_back([this] {
                for (int i = 0; i < count / 3; ++i) {
                    events_.send("task", "{}");
                }
            });
        }
    }
    std::string const last = "id: " + std::to_string(events_.last()) + "\n";
    for (RawClient& client : clients) {
        std::string const got = client.receiveThrough(last);
        std::size_t at = 0;
        for (std::uint64_t number = events_.last() - count + 1; number <= events_.last(); ++number) {
            std::size_t const found = got.find("id: " + std::to_string(number) + "\n", at);
            ASSERT_NE(found, std::string::npos) << number;
            at = found;
        }
    }
}

TEST_F(StreamsTest, AStreamIsLeftWhenItsPageHasGone) {
    std::weak_ptr<zq::panel::LiveText> stream;
    auto const spy = [&](zq::panel::Request const&) {
        zq::panel::Response response;
        response.type = "text/event-stream";
        response.live = events_.listen(0);
        stream = response.live;
        return response;
    };
    zq::panel::PanelServer server({{"GET", "/api/spy", spy}}, zq::panel::WebFiles({}), 0);
    std::string const hostLine = "Host: 127.0.0.1:" + std::to_string(server.port()) + "\r\n";
    std::string const target = server.address().substr(server.address().find("/enter"));
    std::string cookie = RawClient(server.port())
                             .ask("GET " + target + " HTTP/1.1\r\n" + hostLine + "\r\n")
                             .header("set-cookie");
    cookie.erase(cookie.find(';'));
    RawClient client(server.port());
    client.ask("GET /api/spy HTTP/1.1\r\n" + hostLine + "Cookie: " + cookie + "\r\n\r\n");
    ASSERT_FALSE(stream.expired());
    client.close();
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!stream.expired() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_TRUE(stream.expired());
}

TEST_F(StreamsTest, StreamsEndWithTheServer) {
    std::deque<RawClient> clients;
    for (int i = 0; i < 10; ++i) {
        listen(clients.emplace_back(server_->port()));
    }
    auto const begin = std::chrono::steady_clock::now();
    events_.end();
    server_->end();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    for (RawClient& client : clients) {
        EXPECT_TRUE(client.isAtEnd());
    }
    EXPECT_THROW(RawClient(server_->port()), std::runtime_error);
}

TEST_F(StreamsTest, TheServerEndsWhileRequestsWait) {
    RawClient idle(server_->port());
    RawClient slow(server_->port());
    slow.send("GET /api/state HT");
    RawClient listening(server_->port());
    listen(listening);
    server_->end(); // the hub does not end: the streams notice
    EXPECT_TRUE(idle.isAtEnd());
    EXPECT_TRUE(slow.isAtEnd());
    EXPECT_TRUE(listening.isAtEnd());
}

TEST_F(StreamsTest, IdleAndSlowConnectionsKeepNobodyOut) {
    std::deque<RawClient> held;
    for (int i = 0; i < 200; ++i) {
        RawClient& client = held.emplace_back(server_->port());
        if (i % 4 == 1) {
            client.send("GET /api/state HTTP/1.1\r\nX: "); // and no more
        } else if (i % 4 == 2) {
            EXPECT_EQ(client.ask(request("GET /api/state")).body, "state"); // kept alive
        }
    }
    EXPECT_EQ(get("/api/state").body, "state");
}

TEST_F(StreamsTest, MoreIdleConnectionsThanThereArePlacesKeepNobodyOut) {
    std::deque<RawClient> held;
    for (int i = 0; i < 400; ++i) {
        held.emplace_back(server_->port());
    }
    EXPECT_EQ(get("/api/state").body, "state");
    EXPECT_TRUE(held.front().isAtEnd()) << "who waits the longest gives way";
}

TEST_F(StreamsTest, MoreSlowConnectionsThanThereArePlacesKeepNobodyOut) {
    std::string const body = request("POST /api/echo", json(10)); // and nothing of the ten
    for (std::string const& begun : {std::string("GET /api/state HTTP/1.1\r\nX: "), std::string("G"), body}) {
        std::deque<RawClient> held;
        for (int i = 0; i < 400; ++i) {
            held.emplace_back(server_->port()).send(begun);
        }
        EXPECT_EQ(get("/api/state").body, "state") << begun;
    }
}

TEST_F(StreamsTest, MoreStreamsThanThereArePlacesKeepNobodyOut) {
    std::deque<RawClient> listening;
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(listen(listening.emplace_back(server_->port())).status, 200);
    }
    EXPECT_EQ(get("/api/state").body, "state");
    listening.front().receiveThrough("0\r\n\r\n"); // the end of the stream
    events_.send("a", "1");
    EXPECT_THAT(listening.back().receiveThrough("\n\n"), HasSubstr("event: a"));
}

TEST_F(StreamsTest, TheStreamThatHasListenedTheLongestEndsForOneTooMany) {
    std::deque<std::shared_ptr<zq::panel::LiveText>> streams;
    for (std::size_t i = 0; i < EventHub::mostStreams; ++i) {
        streams.push_back(events_.listen(0));
    }
    streams[1].reset(); // one that has gone makes room
    streams.push_back(events_.listen(0));
    events_.send("a", "1");
    std::string piece;
    EXPECT_TRUE(streams.front()->next(piece));
    streams.push_back(events_.listen(0));
    EXPECT_FALSE(streams.front()->next(piece));
    EXPECT_TRUE(streams[2]->next(piece));
    EXPECT_THAT(piece, HasSubstr("event: a"));
}

TEST_F(StreamsTest, OneConnectionCarriesManyRequests) {
    RawClient client(server_->port());
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(client.ask(request("GET /api/state")).body, "state") << i;
    }
    // Also when they are sent at once.
    client.send(request("GET /api/named/a") + request("GET /api/named/b"));
    EXPECT_EQ(client.answer().body, "a");
    EXPECT_EQ(client.answer().body, "b");
}

TEST_F(StreamsTest, ATakenPortIsToldInWords) {
    try {
        zq::panel::PanelServer const second({}, zq::panel::WebFiles({}), server_->port());
        FAIL() << "two servers on one port";
    } catch (std::runtime_error const& error) {
        EXPECT_THAT(error.what(), HasSubstr("port " + std::to_string(server_->port())));
    }
}

// A server with few places, and more clients than those.
class CrowdedServer : public testing::Test {
protected:
    CrowdedServer() {
        server_.Get("/", [](httplib::Request const&, httplib::Response& response) {
            response.set_content("here", "text/plain");
        });
        server_.Get("/endless", [](httplib::Request const&, httplib::Response& response) {
            response.set_chunked_content_provider("text/plain", [](std::size_t, httplib::DataSink& sink) {
                std::string const block(std::size_t{1} << 20, 'x');
                return sink.write(block.data(), block.size());
            });
        });
        server_.Get("/held", [this](httplib::Request const&, httplib::Response& response) {
            ++begun_;
            released_.wait(false);
            response.set_content("late", "text/plain");
        });
        port_ = server_.bind(0);
        server_.start();
    }
    ~CrowdedServer() override { release(); }
    void release() {
        released_ = true;
        released_.notify_all();
    }
    Answer ask() const { return RawClient(port_).ask("GET / HTTP/1.1\r\n\r\n"); }

    static constexpr int places = 8;
    std::atomic<int> begun_ = 0;
    std::atomic<bool> released_ = false;
    int port_ = 0;

private:
    static http::LoopbackServer::Limits limits() {
        http::LoopbackServer::Limits limits;
        limits.connections = places;
        return limits;
    }
    http::LoopbackServer server_{limits()};
};

TEST_F(CrowdedServer, LetsInWhoeverComesBehindReadersThatDoNotRead) {
    std::deque<RawClient> held;
    for (int i = 0; i < 3 * places; ++i) {
        RawClient& client = held.emplace_back(port_);
        EXPECT_EQ(client.ask("GET /endless HTTP/1.1\r\n\r\n").status, 200) << i;
    }
    EXPECT_EQ(ask().body, "here");
}

TEST_F(CrowdedServer, EndsNobodyWhoWaitsForItsAnswer) {
    std::deque<RawClient> waiting;
    for (int i = 0; i < places - 2; ++i) {
        waiting.emplace_back(port_).send("GET /held HTTP/1.1\r\n\r\n");
    }
    while (begun_ < places - 2) {
        std::this_thread::yield();
    }
    std::deque<RawClient> idle;
    for (int i = 0; i < 3 * places; ++i) {
        idle.emplace_back(port_).send("G");
    }
    EXPECT_EQ(ask().body, "here");
    release();
    for (RawClient& client : waiting) {
        EXPECT_EQ(client.answer().body, "late");
    }
}

// A server that has less patience.
class ImpatientServer {
public:
    ImpatientServer() {
        server_.Get("/", [](httplib::Request const&, httplib::Response& response) {
            response.set_content("here", "text/plain");
        });
        server_.Post("/", [](httplib::Request const&, httplib::Response& response,
                             httplib::ContentReader const& read) {
            response.status = read([](char const*, std::size_t) { return true; }) ? 200 : 400;
        });
        port = server_.bind(0);
        server_.start();
    }
    int port = 0;

private:
    static http::LoopbackServer::Limits limits() {
        http::LoopbackServer::Limits limits;
        limits.head = limits.body = limits.idle = std::chrono::milliseconds(200);
        return limits;
    }
    http::LoopbackServer server_{limits()};
};

TEST(LoopbackServerTest, AHeadHasATimeInWhichToArriveHoweverItsBytesDrip) {
    ImpatientServer const server;
    RawClient client(server.port);
    client.send("GET / HTTP/1.1\r\nX: ");
    std::atomic<bool> ended = false;
    std::jthread const dripping([&] {
        while (!ended && client.send("x")) {
            std::this_thread::yield();
        }
    });
    // Cut off, whether with an answer or without.
    EXPECT_NE(client.answer().status, 200);
    ended = true;
}

TEST(LoopbackServerTest, ABodyHasATimeInWhichToArrive) {
    ImpatientServer const server;
    RawClient client(server.port);
    EXPECT_EQ(client.ask("POST / HTTP/1.1\r\nContent-Length: 10\r\n\r\n12345").status, 400);
}

TEST(LoopbackServerTest, AnIdleConnectionEnds) {
    ImpatientServer const server;
    RawClient fresh(server.port);
    RawClient used(server.port);
    EXPECT_EQ(used.ask("GET / HTTP/1.1\r\n\r\n").body, "here");
    EXPECT_TRUE(fresh.isAtEnd());
    EXPECT_TRUE(used.isAtEnd());
}

} // namespace
