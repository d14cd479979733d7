// What becomes of a request that was let in: its body, its path, its answer.

#include <thread>

#include "tests/zq/panel/TransportFixture.h"

namespace {

using panel_tests::Alphabet;
using panel_tests::Answer;
using panel_tests::RawClient;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RequestsTest : public panel_tests::TransportFixture {
protected:
    static constexpr std::size_t longest = std::size_t{64} << 10;

    // A JSON object of that many bytes.
    static std::string bodyOf(std::size_t size) {
        std::string const frame = R"({"text":""})";
        return R"({"text":")" + std::string(size - frame.size(), 'x') + "\"}";
    }
    [[nodiscard]] std::string chunked(std::string const& body, std::size_t chunk) const {
        std::string text =
            request("POST /api/echo", "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n");
        for (std::size_t at = 0; at < body.size(); at += chunk) {
            std::string const part = body.substr(at, chunk);
            char size[32];
            std::snprintf(size, sizeof size, "%zx\r\n", part.size());
            text += size + part + "\r\n";
        }
        return text + "0\r\n\r\n";
    }
};

TEST_F(RequestsTest, ABodyHas64KiBAtMost) {
    std::string const text = bodyOf(longest);
    EXPECT_EQ(post("/api/echo", text).body, text.substr(9, text.size() - 11));
    Answer const answer = post("/api/echo", bodyOf(longest + 1));
    EXPECT_EQ(answer.status, 413);
    EXPECT_EQ(answer.error(), "too_large");
}

TEST_F(RequestsTest, ABodyInChunksHas64KiBAtMostToo) {
    std::string const text = bodyOf(longest);
    EXPECT_EQ(ask(chunked(text, 1000)).body, text.substr(9, text.size() - 11));
    EXPECT_EQ(ask(chunked(bodyOf(longest + 1), 1000)).error(), "too_large");
    EXPECT_EQ(ask(chunked(bodyOf(longest * 10), longest * 10)).error(), "too_large");
}

TEST_F(RequestsTest, TheFramesOfChunksAreBoundedToo) {
    EXPECT_EQ(ask(chunked(bodyOf(longest), 1)).status, 200) << "chunks as small as they can be";
    std::string const head =
        request("POST /api/echo", "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n");
    std::string const much(std::size_t{1} << 20, '0');
    for (std::string const& body : {much + "2\r\n{}\r\n0\r\n\r\n", "2;" + much + "\r\n{}\r\n0\r\n\r\n",
                                    "2\r\n{}\r\n0\r\nX: " + much + "\r\n\r\n"}) {
        RawClient client(server_->port());
        std::jthread const sending([&] { client.send(head + body); }); // it may not be taken to its end
        Answer const answer = client.answer();
        EXPECT_EQ(answer.error(), "bad_request") << body.substr(0, 10);
        EXPECT_TRUE(client.isAtEnd());
    }
}

TEST_F(RequestsTest, ATooLongBodyIsRefusedBeforeItIsSent) {
    for (char const* const length : {"65537", "1000000000000", "99999999999999999999999"}) {
        RawClient client(server_->port());
        Answer const answer =
            client.ask(request("POST /api/echo", std::string("Content-Type: application/json\r\n"
                                                             "Content-Length: ") +
                                                     length + "\r\n"));
        EXPECT_EQ(answer.error(), "too_large") << length;
        EXPECT_TRUE(client.isAtEnd()) << length;
    }
}

TEST_F(RequestsTest, ALengthThatIsNotClearIsRefused) {
    std::string const type = "Content-Type: application/json\r\n";
    for (std::string const& lines :
         {std::string("Content-Length: -1\r\n"), std::string("Content-Length: 2x\r\n"),
          std::string("Content-Length: 2\r\nContent-Length: 3\r\n"),
          std::string("Content-Length: 2\r\nTransfer-Encoding: chunked\r\n"),
          std::string("Transfer-Encoding: gzip, chunked\r\n"),
          std::string("Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n")}) {
        RawClient client(server_->port());
        Answer const answer = client.ask(request("POST /api/echo", type + lines) + "{}\r\n\r\n");
        EXPECT_EQ(answer.error(), "bad_request") << lines;
        EXPECT_TRUE(client.isAtEnd()) << lines;
    }
}

TEST_F(RequestsTest, WhatFollowsAnUnreadBodyIsNoRequest) {
    std::string const smuggled = request("DELETE /api/echo");
    RawClient client(server_->port());
    Answer const answer = client.ask(request("GET /api/state", json(smuggled.size())) + smuggled);
    EXPECT_EQ(answer.error(), "bad_request");
    EXPECT_TRUE(client.isAtEnd());
}

TEST_F(RequestsTest, NothingFollowsAHeadWithALineThatIsNoField) {
    for (char const* const line :
         {"X : 1", "no field", ": 1", " folded", "X: \x01", "Transfer-Encoding : chunked", "X\xc3\xa4: 1"}) {
        RawClient client(server_->port());
        client.send(request("GET /api/state", std::string(line) + "\r\n") + request("GET /api/state"));
        EXPECT_EQ(client.answer().body, "state") << line;
        EXPECT_EQ(client.answer().status, 0) << line;
    }
}

TEST_F(RequestsTest, ABodyIsJson) {
    std::string const body = R"({"text":"a"})";
    std::string const length = "Content-Length: " + std::to_string(body.size()) + "\r\n";
    for (char const* const type : {"", "Content-Type: text/plain\r\n", "Content-Type: application/jsonx\r\n",
                                   "Content-Type: application/x-www-form-urlencoded\r\n",
                                   "Content-Type: multipart/form-data; boundary=application/json\r\n",
                                   "Content-Type: application/json\r\nContent-Encoding: gzip\r\n",
                                   "Content-Type: application/json\r\nContent-Type: text/plain\r\n"}) {
        Answer const answer = ask(request("POST /api/echo", type + length) + body);
        EXPECT_EQ(answer.status, 415) << type;
        EXPECT_EQ(answer.error(), "not_json") << type;
    }
    EXPECT_EQ(
        ask(request("POST /api/echo", "content-type: Application/JSON; charset=utf-8\r\n" + length) + body)
            .body,
        "a");
}

TEST_F(RequestsTest, ABodyIsOneObject) {
    for (std::string const& body :
         {std::string("[]"), std::string("1"), std::string("\"a\""), std::string("null"), std::string("{"),
          std::string("{}{}"), std::string(" "), std::string("{\"a\":\"\xff\"}"), std::string("text=a"),
          std::string("\xef\xbb\xbf{}"), std::string("{\"a\":1,}")}) {
        Answer const answer = post("/api/echo", body);
        EXPECT_EQ(answer.status, 400) << body;
        EXPECT_EQ(answer.error(), "not_json") << body;
    }
    EXPECT_EQ(post("/api/echo", " \r\n\t{\"text\" : \"\\u00e4\"} ").body, "\xc3\xa4");
    EXPECT_EQ(ask(request("POST /api/echo")).status, 200) << "no body is an object without members";
}

TEST_F(RequestsTest, DepthIsBounded) {
    auto const nested = [](std::size_t depth) {
        return R"({"text":"deep","a":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
    };
    EXPECT_EQ(post("/api/echo", nested(500)).body, "deep");
    EXPECT_EQ(post("/api/echo", nested(600)).error(), "not_json");
    EXPECT_EQ(post("/api/echo", nested(30'000)).error(), "not_json");
}

TEST_F(RequestsTest, ABodyThatStopsHalfwayEndsItsConnectionOnly) {
    RawClient client(server_->port());
    client.send(request("POST /api/echo", json(100)) + "{\"text\"");
    client.close();
    EXPECT_EQ(get("/api/state").body, "state");
}

TEST_F(RequestsTest, HeadIsGetWithoutTheBody) {
    RawClient client(server_->port());
    Answer const answer = client.ask(request("HEAD /api/state"));
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.header("content-length"), "5");
    Answer const content = client.ask(request("HEAD /api/bytes"));
    EXPECT_EQ(content.header("content-length"), std::to_string(contentSize));
    EXPECT_EQ(client.ask(request("GET /api/state")).body, "state") << "nothing stands before the next answer";
}

TEST_F(RequestsTest, AnotherMethodIsToldWhichThereAre) {
    for (char const* const method : {"OPTIONS", "TRACE", "PATCH", "GET", "CONNECT"}) {
        Answer const answer = ask(request(std::string(method) + " /api/echo"));
        EXPECT_EQ(answer.status, 405) << method;
        EXPECT_EQ(answer.error(), "not_allowed") << method;
        EXPECT_EQ(answer.header("allow"), "POST, PUT, DELETE") << method;
    }
    EXPECT_EQ(ask(request("DELETE /api/state")).header("allow"), "GET, HEAD");
    EXPECT_EQ(ask(request("TRACE /nowhere")).error(), "not_found");
}

TEST_F(RequestsTest, WhatIsNoHttpIsABadRequest) {
    for (std::string const& text :
         {std::string("BREW /api/state HTTP/1.1\r\n\r\n"), std::string("GET /api/state\r\n\r\n"),
          std::string("GET /api/state HTTP/3\r\n\r\n"), std::string("\r\n\r\n"),
          std::string("\x16\x03\x01\r\n\r\n"), "GET /" + std::string(9000, 'a') + " HTTP/1.1\r\n\r\n"}) {
        Answer const answer = ask(text);
        EXPECT_TRUE(answer.status == 400 || answer.status == 414) << text << answer.status;
        EXPECT_EQ(answer.error(), "bad_request") << text;
    }
}

TEST_F(RequestsTest, AnEndlessHeadIsCutOff) {
    RawClient client(server_->port());
    std::string const line = "X-Filler: " + std::string(1000, 'x') + "\r\n";
    client.send("GET /api/state HTTP/1.1\r\n");
    for (int i = 0; i < 1000 && client.send(line); ++i) {
    }
    Answer const answer = client.answer();
    EXPECT_TRUE(answer.status == 400 || answer.status == 0);
    EXPECT_EQ(get("/api/state").body, "state");
}

TEST_F(RequestsTest, PartsOfAPathAreDecodedOnce) {
    EXPECT_EQ(get("/api/named/a%20b").body, "a b");
    EXPECT_EQ(get("/api/named/a+b").body, "a+b");
    EXPECT_EQ(get("/api/named/%E6%98%A0%E7%94%BB").body, "\xe6\x98\xa0\xe7\x94\xbb");
    EXPECT_EQ(get("/api/named/%252e%252e").body, "%2e%2e");
    EXPECT_EQ(get("/api/named/A%2FB").body, "A/B") << "a name may hold what parts a path";
}

TEST_F(RequestsTest, APathThatMeansSomethingElseLeadsNowhere) {
    for (char const* const path : {"/api/named/..",
                                   "/api/named/.",
                                   "/api/named/%2e%2e",
                                   "/api/named/%2E.",
                                   "/api/named/",
                                   "/api/named",
                                   "/api/named/a/",
                                   "/api/named/a%00",
                                   "/api/named/%ff",
                                   "/api/named/%c0%af",
                                   "/api/named/%ed%a0%80",
                                   "/api/named/%",
                                   "/api/named/%4",
                                   "/api/named/%zz",
                                   "/api/named/%+1",
                                   "/api%2fstate",
                                   "/%61pi/state",
                                   "/api/../api/state",
                                   "//api/state",
                                   "/api//state",
                                   "/api/state/",
                                   "/API/state",
                                   "api/state",
                                   "http://127.0.0.1/api/state",
                                   "/assets/..%2findex.html",
                                   "/assets/%2e%2e%2fsecret.txt",
                                   "/secret.txt",
                                   "/index.html",
                                   "/assets/",
                                   "/assets/notes.txt",
                                   "/assets/main-1234.js%00",
                                   "/assets/..\\secret.txt"}) {
        Answer const answer = get(path);
        EXPECT_TRUE(answer.status == 404 || answer.status == 400) << path << " " << answer.status;
        EXPECT_NE(answer.error(), "") << path;
    }
}

TEST_F(RequestsTest, AQueryIsPercentEncodedUtf8) {
    EXPECT_EQ(get("/api/query?q=a+b%26%3D%C3%A4&q=second").body, "a b&=\xc3\xa4");
    EXPECT_EQ(get("/api/query?x").body, "none");
    EXPECT_EQ(get("/api/query?&&q=1&").body, "1");
    for (char const* const query : {"q=%", "q=%0", "q=%xy", "q=%ff", "q=%00", "%ff=1"}) {
        EXPECT_EQ(get(std::string("/api/query?") + query).error(), "bad_request") << query;
    }
}

TEST_F(RequestsTest, ContentComesWholeAndByRanges) {
    Answer const whole = get("/api/bytes");
    EXPECT_EQ(whole.status, 200);
    EXPECT_EQ(whole.header("content-type"), "video/quicktime");
    EXPECT_EQ(whole.header("accept-ranges"), "bytes");
    EXPECT_TRUE(whole.body == Alphabet::part(0, contentSize));
    struct {
        char const* range;
        std::uint64_t first;
        std::uint64_t length;
    } const cases[] = {{"bytes=0-9", 0, 10},
                       {"bytes=70000-", 70'000, 30'000},
                       {"bytes=-7", contentSize - 7, 7},
                       {"bytes=99999-99999", 99'999, 1},
                       {"bytes=5-999999999999", 5, contentSize - 5},
                       {"bytes=-999999999", 0, contentSize}};
    for (auto const& expected : cases) {
        Answer const part = get("/api/bytes", std::string("Range: ") + expected.range + "\r\n");
        EXPECT_EQ(part.status, 206) << expected.range;
        EXPECT_EQ(part.header("content-range"), "bytes " + std::to_string(expected.first) + "-" +
                                                    std::to_string(expected.first + expected.length - 1) +
                                                    "/" + std::to_string(contentSize));
        EXPECT_TRUE(part.body == Alphabet::part(expected.first, expected.length)) << expected.range;
    }
}

TEST_F(RequestsTest, ContentThatIsLateIsWaitedFor) {
    Answer const answer = get("/api/late");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "later");
}

TEST_F(RequestsTest, ARangeBehindTheEndIsRefusedAndOddOnesAreTheWhole) {
    Answer const behind = get("/api/bytes", "Range: bytes=100000-\r\n");
    EXPECT_EQ(behind.status, 416);
    EXPECT_EQ(behind.error(), "bad_request");
    EXPECT_EQ(behind.header("content-range"), "bytes */100000");
    for (char const* const range : {"bytes=0-1,5-6", "bytes=-1,-2"}) {
        Answer const answer = get("/api/bytes", std::string("Range: ") + range + "\r\n");
        EXPECT_EQ(answer.status, 200) << range;
        EXPECT_EQ(answer.body.size(), contentSize) << range;
    }
    // A text is not cut.
    EXPECT_EQ(get("/api/state", "Range: bytes=0-1\r\n").body, "state");
}

TEST_F(RequestsTest, AnswersAreNotKeptUnlessTheyMayBe) {
    EXPECT_EQ(get("/").header("cache-control"), "no-store");
    EXPECT_EQ(get("/api/state").header("cache-control"), "no-store");
    EXPECT_EQ(get("/nowhere").header("cache-control"), "no-store");
    EXPECT_EQ(get("/api/fresh").header("cache-control"), "private, max-age=60");
    EXPECT_EQ(get("/assets/main-1234.js").header("cache-control"), "private, max-age=31536000, immutable");
}

TEST_F(RequestsTest, AnswersAreNotCompressed) {
    Answer const answer = get("/api/state", "Accept-Encoding: gzip, br\r\n");
    EXPECT_EQ(answer.header("content-encoding"), "");
    EXPECT_EQ(answer.body, "state");
}

TEST_F(RequestsTest, AFileToKeepHasAHarmlessName) {
    EXPECT_EQ(get("/api/file").header("content-disposition"),
              "attachment; filename*=UTF-8''a%22b%0D%0A%C3%A4.csv");
}

TEST_F(RequestsTest, FailuresHaveTheirCodesAndTexts) {
    Answer const conflict = get("/api/conflict");
    EXPECT_EQ(conflict.status, 409);
    EXPECT_EQ(conflict.body, R"({"error":{"code":"conflict","reason":"in_doubt","text":"\"no\" <b>"}})");
    EXPECT_EQ(conflict.header("content-type"), "application/json; charset=utf-8");
    Answer const command = get("/api/command");
    EXPECT_EQ(command.status, 502);
    EXPECT_EQ(command.body,
              R"({"error":{"code":"failed","reason":"service_refused","text":"the service says no"}})");
}

TEST_F(RequestsTest, AFailureOfTheProgramIsToldToTheLogAlone) {
    for (char const* const target : {"/api/broken", "/api/odd"}) {
        Answer const answer = get(target);
        EXPECT_EQ(answer.status, 500) << target;
        EXPECT_EQ(answer.error(), "internal") << target;
        EXPECT_THAT(answer.head + answer.body, Not(HasSubstr("inner"))) << target;
    }
    EXPECT_THAT(host_.log.lines(), Contains(HasSubstr("GET /api/broken: inner")));
}

TEST_F(RequestsTest, ThePageIsThere) {
    Answer const page = get("/");
    EXPECT_EQ(page.header("content-type"), "text/html; charset=utf-8");
    EXPECT_THAT(page.body, HasSubstr("<title>page</title>"));
    Answer const script = get("/assets/main-1234.js");
    EXPECT_EQ(script.header("content-type"), "text/javascript; charset=utf-8");
    EXPECT_EQ(script.body, "export {};");
}

TEST_F(RequestsTest, AFileThatComesLaterIsNotServed) {
    write("assets/late.js", "late");
    EXPECT_EQ(get("/assets/late.js").error(), "not_found");
}

TEST(WebFilesTest, APageThatWasNotBuiltSaysSo) {
    test::TemporaryFolder const empty;
    zq::panel::WebFiles const files(empty.path());
    EXPECT_FALSE(files.isBuilt());
    EXPECT_THAT(files.page().body, StartsWith("<!doctype html>"));
    EXPECT_THAT(files.page().body, HasSubstr("The page was not built"));
}

} // namespace
