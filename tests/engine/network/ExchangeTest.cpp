#include <zlib.h>

#include "host/engine/network/BodySink.h"
#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"
#include "tests/support/WebServer.h"

namespace {

using test::bodyOf;
using test::RawConnection;
using test::RawServer;

class Exchange : public test::NetworkFixture {};

// Gives every request the same answer.
RawServer::Script always(int status, std::string body, std::string headers = {}) {
    return [=](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(status, body, headers);
        }
    };
}

// Sends those bytes for each request and closes.
RawServer::Script once(std::string bytes) {
    return [=](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send(bytes);
        }
    };
}

std::string gzip(std::string const& text) {
    z_stream stream{};
    EXPECT_EQ(deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY), Z_OK);
    std::string packed(deflateBound(&stream, text.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

TEST_F(Exchange, AReplyHasTheStatusAndTheWholeBody) {
    RawServer const raw(always(404, "not here"));
    auto const reply = server(raw.name())->get(L"/x");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getStatus(), 404);
    EXPECT_EQ(bodyOf(reply), "not here");
    EXPECT_GE(reply->getBody()->getPadding(), 64u);
}

TEST_F(Exchange, AnEmptyBodyIsAWholeAnswer) {
    RawServer const raw(once("HTTP/1.1 204 No Content\r\n\r\n"));
    auto const reply = server(raw.name())->get(L"/x");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getStatus(), 204);
    ASSERT_TRUE(reply->getBody());
    EXPECT_EQ(reply->getBody()->getSize(), 0u);
    EXPECT_NE(reply->getBody()->getData(), nullptr);
}

TEST_F(Exchange, ARequestNamesThePathTheServerAndTheProgram) {
    RawServer const raw(always(200, "ok"));
    EXPECT_EQ(bodyOf(server(raw.name())->get(L"?page=api")), "ok");
    ASSERT_EQ(raw.requests().size(), 1u);
    EXPECT_EQ(raw.requests()[0].line, "GET /?page=api HTTP/1.1");
    EXPECT_EQ(raw.requests()[0].header("Host"), raw.name());
    EXPECT_EQ(raw.requests()[0].header("User-Agent"), "zq");
    EXPECT_EQ(raw.requests()[0].header("Cookie"), "");
}

TEST_F(Exchange, APathCannotAddAHeaderLine) {
    RawServer const raw(always(200, "ok"));
    EXPECT_EQ(bodyOf(server(raw.name())->get(L"/a HTTP/1.1\r\nInjected: yes\r\n\r\n")), "ok");
    ASSERT_EQ(raw.requests().size(), 1u);
    EXPECT_EQ(raw.requests()[0].header("Injected"), "");
    EXPECT_EQ(raw.requests()[0].line, "GET /a%20HTTP/1.1%0D%0AInjected:%20yes%0D%0A%0D%0A HTTP/1.1");
}

TEST_F(Exchange, TheRecordsHeadersAndUserAgentAreSent) {
    RawServer const raw(always(200, "ok"));
    HTTPConnectionInfo info = test::serverRecord(raw.name());
    info.headers = {L"X-One: 1", L"X-Two: zwei \x00fc"};
    info.userAgent = L"Editor/7";
    info.user = L"somebody";
    auto const named = network().createHTTPServer(info);
    EXPECT_EQ(bodyOf(named->get(L"/")), "ok");
    EXPECT_EQ(bodyOf(named->postForm(L"", L"/")), "ok");
    ASSERT_EQ(raw.requests().size(), 2u);
    for (test::RawRequest const& request : raw.requests()) {
        EXPECT_EQ(request.header("X-One"), "1");
        EXPECT_EQ(request.header("X-Two"), "zwei \xc3\xbc");
        EXPECT_EQ(request.header("User-Agent"), "Editor/7");
        EXPECT_EQ(request.head.find("somebody"), std::string::npos);
    }
}

TEST_F(Exchange, NoServerIsMadeOfARecordThatCouldAddToARequest) {
    auto const refused = [this](auto const& change) {
        HTTPConnectionInfo info = test::serverRecord("localhost:80");
        change(info);
        return !network().createHTTPServer(info);
    };
    EXPECT_FALSE(refused([](HTTPConnectionInfo&) {}));
    EXPECT_TRUE(refused([](HTTPConnectionInfo& info) { info.server.clear(); }));
    EXPECT_TRUE(refused([](HTTPConnectionInfo& info) { info.server = L"a/b"; }));
    EXPECT_TRUE(refused([](HTTPConnectionInfo& info) { info.port = 70'000; }));
    EXPECT_TRUE(refused([](HTTPConnectionInfo& info) { info.headers = {L"A: b\r\nC: d"}; }));
    EXPECT_TRUE(refused([](HTTPConnectionInfo& info) { info.userAgent = L"a\nb"; }));
}

TEST_F(Exchange, APostCarriesTheTextAsItIs) {
    RawServer const raw(always(500, "sorry"));
    WideString const form = L"api={\"q\":\"a&b=c d%20+\x00fc\"}";
    auto const reply = server(raw.name())->postForm(form, L"?page=api");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getStatus(), 500);
    EXPECT_EQ(bodyOf(reply), "sorry");
    ASSERT_EQ(raw.requests().size(), 1u);
    EXPECT_EQ(raw.requests()[0].line, "POST /?page=api HTTP/1.1");
    EXPECT_EQ(raw.requests()[0].header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(raw.requests()[0].body, "api={\"q\":\"a&b=c d%20+\xc3\xbc\"}");
}

TEST_F(Exchange, AnEmptyFormIsSent) {
    RawServer const raw(always(200, "ok"));
    EXPECT_EQ(bodyOf(server(raw.name())->postForm(L"", L"/")), "ok");
    ASSERT_EQ(raw.requests().size(), 1u);
    EXPECT_EQ(raw.requests()[0].line, "POST / HTTP/1.1");
    EXPECT_EQ(raw.requests()[0].header("Content-Length"), "0");
}

TEST_F(Exchange, ALargeFormWaitsForNoPermission) {
    RawServer const raw(always(200, "ok"));
    WideString const form(3u << 20, L'x');
    EXPECT_EQ(bodyOf(server(raw.name())->postForm(form, L"/")), "ok");
    ASSERT_EQ(raw.requests().size(), 1u);
    EXPECT_EQ(raw.requests()[0].header("Expect"), "");
    EXPECT_EQ(raw.requests()[0].body.size(), std::size_t{3} << 20);
}

TEST_F(Exchange, AGetAfterAPostOnTheSameConnectionIsAPlainGet) {
    RawServer const raw(always(200, "ok"));
    auto const one = server(raw.name());
    EXPECT_EQ(bodyOf(one->postForm(L"a=b", L"/p")), "ok");
    EXPECT_EQ(bodyOf(one->get(L"/g")), "ok");
    EXPECT_EQ(bodyOf(one->postForm(L"c=d", L"/p")), "ok");
    ASSERT_EQ(raw.requests().size(), 3u);
    EXPECT_EQ(raw.requests()[1].line, "GET /g HTTP/1.1");
    EXPECT_EQ(raw.requests()[1].header("Content-Type"), "");
    EXPECT_EQ(raw.requests()[2].body, "c=d");
    EXPECT_EQ(raw.connections(), 1);
}

TEST_F(Exchange, KeptConnectionsAreUsedAgainByOtherServerObjects) {
    RawServer const raw(always(200, "ok"));
    EXPECT_EQ(bodyOf(server(raw.name())->get(L"/1")), "ok");
    EXPECT_EQ(bodyOf(server(raw.name())->get(L"/2")), "ok");
    EXPECT_EQ(bodyOf(server(raw.name())->postForm(L"a=b", L"/3")), "ok");
    EXPECT_EQ(raw.connections(), 1);
}

TEST_F(Exchange, AServerWorksOnWhenItsNetworkIsGone) {
    RawServer const raw(always(200, "ok"));
    Zq::Ptr<iHTTPServer> kept;
    {
        engine::CurlNetwork shortLived(settings);
        kept = shortLived.createHTTPServer(test::serverRecord(raw.name()));
    }
    EXPECT_EQ(bodyOf(kept->get(L"/")), "ok");
}

TEST_F(Exchange, AChunkedAnswerIsPutTogether) {
    RawServer const raw(once(
        "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n7;x=y\r\n, world\r\n0\r\n\r\n"));
    EXPECT_EQ(bodyOf(server(raw.name())->get(L"/")), "hello, world");
}

TEST_F(Exchange, AnAnswerWithoutALengthEndsWithTheConnection) {
    RawServer const raw(once("HTTP/1.0 200 OK\r\n\r\nuntil the end"));
    EXPECT_EQ(bodyOf(server(raw.name())->get(L"/")), "until the end");
}

TEST_F(Exchange, APackedAnswerIsUnpacked) {
    std::string const text(100'000, 'j');
    std::string const packed = gzip(text);
    RawServer const raw(always(200, packed, "Content-Encoding: gzip\r\n"));
    auto const reply = server(raw.name())->get(L"/");
    ASSERT_TRUE(reply);
    EXPECT_EQ(bodyOf(reply), text);
    EXPECT_NE(raw.requests()[0].header("Accept-Encoding").find("gzip"), std::string::npos);
    EXPECT_LT(network().statistics()[0].bytesReceived, packed.size() + 200);
}

TEST_F(Exchange, ABrokenPackIsNoAnswer) {
    std::string packed = gzip(std::string(100'000, 'j'));
    packed[packed.size() - 6] ^= 1; // in the checksum
    RawServer const raw(always(200, packed, "Content-Encoding: gzip\r\n"));
    EXPECT_FALSE(server(raw.name())->get(L"/"));
}

TEST_F(Exchange, AnAnswerOf64MiBIsTakenAndOneByteMoreIsNot) {
    std::string text(engine::BodySink::largestBody, 'z');
    std::string const packed = gzip(text);
    std::string const bomb = gzip(text + 'z');
    ASSERT_LT(bomb.size(), std::size_t{1} << 20);
    RawServer const raw([&](RawConnection& connection) {
        while (auto const request = connection.readRequest()) {
            connection.answer(200, request->line.find(" /bomb ") != std::string::npos ? bomb : packed,
                              "Content-Encoding: gzip\r\n");
        }
    });
    auto const reply = server(raw.name())->get(L"/packed");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getBody()->getSize(), engine::BodySink::largestBody);
    EXPECT_FALSE(server(raw.name())->get(L"/bomb"));
    EXPECT_FALSE(server(raw.name())->postForm(L"a=b", L"/bomb"));
}

TEST_F(Exchange, AnAnnouncementBeyondTheBoundIsRefusedAtOnce) {
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\nContent-Length: 67108865\r\n\r\nx");
            connection.waitForEnd(); // the rest never comes
        }
    });
    EXPECT_FALSE(server(raw.name())->get(L"/"));
}

TEST_F(Exchange, AnEndlessAnswerIsLeftAtTheBound) {
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\n\r\n");
            std::string const part(1 << 20, 'x');
            while (connection.send(part)) {
            }
        }
    });
    EXPECT_FALSE(server(raw.name())->get(L"/"));
}

TEST_F(Exchange, AnAnswerThatIsCutShortIsNoAnswer) {
    for (char const* const bytes :
         {"", "HTTP/1.1 200 OK\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n123456789",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\n",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhel"}) {
        RawServer const raw(once(bytes));
        EXPECT_FALSE(server(raw.name())->get(L"/")) << bytes;
        EXPECT_FALSE(server(raw.name())->postForm(L"a=b", L"/")) << bytes;
    }
}

TEST_F(Exchange, WhatIsNoHttpIsNoAnswer) {
    for (char const* const bytes :
         {"hello\r\n\r\n", "SSH-2.0-OpenSSH\r\n", "HTTP/1.1\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\nxxxx",
          "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nhello\r\n0\r\n\r\n"}) {
        RawServer const raw(once(bytes));
        EXPECT_FALSE(server(raw.name())->get(L"/")) << bytes;
    }
}

TEST_F(Exchange, AHeadWithoutEndIsNoAnswer) {
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.send("HTTP/1.1 200 OK\r\n");
            std::string const lines = "X-Filler: " + std::string(8000, 'f') + "\r\n";
            while (connection.send(lines)) {
            }
        }
    });
    EXPECT_FALSE(server(raw.name())->get(L"/"));
}

TEST_F(Exchange, AnEarlyHintIsNotTheAnswer) {
    RawServer const raw(
        once("HTTP/1.1 103 Early Hints\r\nLink: </a>\r\n\r\nHTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"));
    auto const reply = server(raw.name())->get(L"/");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getStatus(), 200);
    EXPECT_EQ(bodyOf(reply), "ok");
}

TEST_F(Exchange, StatisticsTellRequestsBytesAndTheLastError) {
    RawServer const raw([](RawConnection& connection) {
        while (auto const request = connection.readRequest()) {
            if (request->line.starts_with("GET /cut ")) {
                connection.send("HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nx");
                return;
            }
            connection.answer(200, std::string(1000, 'b'));
        }
    });
    EXPECT_TRUE(network().statistics().empty());
    auto const one = server(raw.name());
    EXPECT_TRUE(one->get(L"/"));
    ASSERT_EQ(network().statistics().size(), 1u);
    EXPECT_EQ(network().statistics()[0].lastError, "");
    EXPECT_TRUE(one->postForm(WideString(500u, L'f'), L"/"));
    EXPECT_FALSE(one->get(L"/cut"));
    ASSERT_EQ(network().statistics().size(), 1u);
    engine::ServerStatistics const statistics = network().statistics()[0];
    EXPECT_EQ(statistics.server, "http://" + raw.name());
    EXPECT_EQ(statistics.requests, 3u);
    EXPECT_EQ(statistics.failures, 1u);
    EXPECT_GT(statistics.bytesSent, 500u);
    EXPECT_GT(statistics.bytesReceived, 2000u);
    EXPECT_LT(statistics.bytesReceived, 2400u);
    EXPECT_GT(statistics.totalTime.count(), 0);
    EXPECT_NE(statistics.lastError.find("cut short"), std::string::npos) << statistics.lastError;
}

TEST_F(Exchange, StatisticsTellTheStatusOfARefusal) {
    RawServer const raw([](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(503, "later");
        }
    });
    EXPECT_TRUE(server(raw.name())->get(L"/"));
    engine::ServerStatistics const statistics = network().statistics()[0];
    EXPECT_EQ(statistics.failures, 0u);
    EXPECT_EQ(statistics.refusals, 1u);
    EXPECT_EQ(statistics.lastError, raw.name() + " answered with the error status 503");
}

TEST_F(Exchange, AWebServerOfTheLibraryAnswersGetAndPost) {
    test::WebServer web; // ends after the connections of the network
    web.routes().Get("/", [](httplib::Request const& request, httplib::Response& response) {
        response.set_content("page " + request.get_param_value("page"), "text/plain");
    });
    web.routes().Post("/", [](httplib::Request const& request, httplib::Response& response) {
        response.set_content(std::to_string(request.body.size()) + request.get_header_value("Content-Type"),
                             "text/plain");
    });
    web.start();
    EXPECT_EQ(bodyOf(server(web.name())->get(L"?page=api")), "page api");
    EXPECT_EQ(bodyOf(server(web.name())->postForm(L"api={}", L"?page=api")),
              "6application/x-www-form-urlencoded");
    forgetNetwork();
}

} // namespace
