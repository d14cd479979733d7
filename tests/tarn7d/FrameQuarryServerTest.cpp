// The FrameQuarry protocol over TLS, and the media that its answers lead to.

#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include "apps/tarn7d/FaultDesk.h"
#include "apps/tarn7d/FrameQuarryProtocol.h"
#include "apps/tarn7d/MediaProbe.h"
#include "apps/tarn7d/Server.h"
#include "host/json/NumberMembers.h"
#include "tests/tarn7d/FrameQuarryRequests.h"
#include "tests/tarn7d/ServerFixture.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

namespace fs = std::filesystem;
using namespace tarn7d;
using test::Client;
using test::FrameQuarryRequest;
using testing::HasSubstr;
using testing::StartsWith;
using Element = Zq::Ptr<JSON::Element>;

class FrameQuarryServerTest : public test::ServerFixture {
protected:
    [[nodiscard]] static std::string address(std::string const& words = {}, std::string const& size = "50") {
        FrameQuarryRequest request(systemSeconds());
        request.keywords = words;
        request.pageSize = size;
        return std::string(FrameQuarryProtocol::searchPath) + "?" + request.query();
    }
    // The answer; null where none comes.
    [[nodiscard]] static Element search(Client& client, std::string const& words = {}) {
        auto const answer = client.Get(address(words));
        return answer && answer->status == 200 ? test::parseJson(answer->body) : nullptr;
    }
    [[nodiscard]] static Element item(Client& client, std::string const& words) {
        Element const items = JSON::orEmpty(search(client, words)).getChild("info");
        return items != nullptr ? items->getChild(0) : nullptr;
    }
    [[nodiscard]] static std::string code(httplib::Result const& answer) {
        Element const element = answer && answer->status == 200 ? test::parseJson(answer->body) : nullptr;
        return element != nullptr ? std::string(element->getStringView("code")) : "no answer";
    }
    // Path of an address of the protocol's own name.
    [[nodiscard]] static std::string mediaPath(Element const& from, char const* key) {
        std::string const url(JSON::orEmpty(from).getStringView(key));
        std::string const server = "https://api.framequarry.example";
        return url.starts_with(server + "/") ? url.substr(server.size()) : "not on the public name: " + url;
    }
};

TEST_F(FrameQuarryServerTest, ASearchIsAnsweredOverTls) {
    start();
    Client connection = client();
    auto const answer = connection.Get(address(), {{"Accept-Encoding", "gzip"}, {"Range", "bytes=0-3"}});
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->get_header_value("Content-Type"), "application/json; charset=utf-8");
    EXPECT_EQ(answer->get_header_value("Cache-Control"), "no-store");
    EXPECT_FALSE(answer->has_header("Content-Encoding"));
    Element const found = test::parseJson(answer->body);
    EXPECT_EQ(JSON::orEmpty(found).getInt("totalSearchResults", -1), 2);
}

TEST_F(FrameQuarryServerTest, WordsArriveAsTheyWereWritten) {
    test::putFootage(test::Footage::plain, footage_ / "c.mov");
    std::ofstream(footage_ / "c.toml") << "title = \"M\u00f6wen & \\\"Meer\\\" 100% + a=b \u5915\u65e5\"\n";
    start();
    Client connection = client();
    for (std::string const words : {"m\u00f6wen & \"meer\"", "100% +", "a=b", "\u5915\u65e5", "  MOWEN  "}) {
        Element const found = search(connection, words);
        EXPECT_EQ(JSON::orEmpty(found).getInt("totalSearchResults", -1), 1) << words;
    }
    FrameQuarryRequest request(systemSeconds());
    std::string const rest = request.query().substr(request.query().find('&'));
    auto const plus = connection.Get(std::string(FrameQuarryProtocol::searchPath) +
                                     "?keywords=m%C3%B6wen+%26+%22meer%22" + rest);
    ASSERT_TRUE(plus);
    EXPECT_THAT(plus->body, HasSubstr("\"totalSearchResults\":1"));
}

TEST_F(FrameQuarryServerTest, ARefusalHasTheStatus200) {
    start();
    Client connection = client();
    std::string const path(FrameQuarryProtocol::searchPath);
    EXPECT_EQ(code(connection.Get(path)), "bad_key");
    EXPECT_EQ(code(connection.Get(path + "?")), "bad_key");
    EXPECT_EQ(code(connection.Get(path + "?" + FrameQuarryRequest(systemSeconds() - 600).query())),
              "expired");
    EXPECT_EQ(code(connection.Get(address() + "&HMAC=")), "bad_request");
    FrameQuarryRequest request(systemSeconds());
    request.signature.back() = request.signature.back() == '0' ? '1' : '0';
    EXPECT_EQ(code(connection.Get(path + "?" + request.query())), "bad_signature");
}

TEST_F(FrameQuarryServerTest, TheClockIsTheServices) {
    ServerOptions late = options();
    late.clock = [] { return systemSeconds() + 600; };
    start(late);
    Client connection = client();
    EXPECT_EQ(code(connection.Get(address())), "expired");
    std::string const path = std::string(FrameQuarryProtocol::searchPath) + "?";
    EXPECT_EQ(code(connection.Get(path + FrameQuarryRequest(systemSeconds() + 600).query())), "");
}

TEST_F(FrameQuarryServerTest, OtherMethodsAreNotAllowed) {
    start();
    for (char const* const method : {"POST", "PUT", "DELETE", "PATCH", "OPTIONS"}) {
        Client connection = client();
        httplib::Request request;
        request.method = method;
        request.path = address();
        request.body = "x=1";
        request.headers = {{"Content-Length", "3"}};
        auto const answer = connection.send(request);
        ASSERT_TRUE(answer) << method;
        EXPECT_EQ(answer->status, 405) << method;
        EXPECT_EQ(answer->get_header_value("Allow"), "GET, HEAD") << method;
        EXPECT_FALSE(answer->has_header("ETag"));
    }
    Client connection = client();
    EXPECT_EQ(total(connection), 2);
}

TEST_F(FrameQuarryServerTest, AHeadHasTheLengthAndNoBody) {
    start();
    Client connection = client();
    std::string const path = address("", "1");
    auto const head = connection.Head(path);
    auto const whole = connection.Get(path);
    ASSERT_TRUE(head && whole);
    EXPECT_EQ(head->status, 200);
    EXPECT_TRUE(head->body.empty());
    EXPECT_EQ(head->get_header_value("Content-Length"), std::to_string(whole->body.size()));
    EXPECT_EQ(head->get_header_value("Content-Type"), whole->get_header_value("Content-Type"));
}

TEST_F(FrameQuarryServerTest, OnlyThePathOfTheSearchIsOne) {
    start();
    Client connection = client();
    for (std::string const path : {"/api/v1/stock-items/search", "/api/v1/stock-items/search/x",
                                   "/api/v1/stock-items/", "/api/", "//api/v1/stock-items/search/"}) {
        auto const answer = connection.Get(path + address().substr(FrameQuarryProtocol::searchPath.size()));
        ASSERT_TRUE(answer) << path;
        EXPECT_EQ(answer->status, 404) << path;
    }
}

TEST_F(FrameQuarryServerTest, ARequestLineMayHaveEightKibibytes) {
    start();
    constexpr std::size_t longest = 8192;
    std::size_t const fixed = ("GET " + address("") + " HTTP/1.1\r\n").size();
    Client connection = client();
    auto const longEnough = connection.Get(address(std::string(longest - fixed, 'x')));
    ASSERT_TRUE(longEnough);
    EXPECT_EQ(longEnough->status, 200);
    auto const tooLong = connection.Get(address(std::string(longest - fixed + 1, 'x')));
    ASSERT_TRUE(tooLong);
    EXPECT_EQ(tooLong->status, 414);
    Client next = client();
    EXPECT_EQ(JSON::orEmpty(search(next)).getInt("totalSearchResults", -1), 2);
}

TEST_F(FrameQuarryServerTest, TheThumbnailIsAPicture) {
    start();
    Client connection = client();
    auto const answer = connection.Get(mediaPath(item(connection, "a"), "thumbnail_url"));
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->get_header_value("Content-Type"), "image/jpeg");
    EXPECT_THAT(answer->body, StartsWith("\xff\xd8\xff"));
}

TEST_F(FrameQuarryServerTest, ThePreviewOfEveryClipIsAnMp4ThatComesInParts) {
    start();
    Client connection = client();
    struct {
        char const* word;
        int width;
        int height;
        Rate rate;
        double duration_ms;
    } const cases[] = {{"a", 320, 240, {25, 1}, 1000}, {"b", 1280, 720, {24000, 1001}, 500}};
    for (auto const& expected : cases) {
        Element const clip = item(connection, expected.word);
        std::string const path = mediaPath(clip, "preview_url");
        EXPECT_TRUE(path.ends_with(".mp4")) << path;
        auto const whole = connection.Get(path);
        ASSERT_TRUE(whole);
        ASSERT_EQ(whole->status, 200);
        EXPECT_EQ(whole->get_header_value("Content-Type"), "video/mp4");
        EXPECT_EQ(whole->get_header_value("Accept-Ranges"), "bytes");
        EXPECT_EQ(whole->get_header_value("Cache-Control"), "no-cache");
        std::string const etag = whole->get_header_value("ETag");
        EXPECT_THAT(etag, StartsWith("\""));
        fs::path const file = folder_.path() / "preview.mp4";
        std::ofstream(file, std::ios::binary) << whole->body;
        auto const info = probeMedia(file);
        ASSERT_TRUE(info);
        EXPECT_EQ(info->rate, expected.rate);
        EXPECT_NEAR(static_cast<double>(info->duration_ms), expected.duration_ms, 45);
        EXPECT_EQ(info->width, expected.width);
        EXPECT_EQ(info->height, expected.height);

        std::string const size = std::to_string(whole->body.size());
        auto const part = connection.Get(path, {{"Range", "bytes=10-109"}, {"If-Range", etag}});
        ASSERT_TRUE(part);
        EXPECT_EQ(part->status, 206);
        EXPECT_EQ(part->get_header_value("Content-Range"), "bytes 10-109/" + size);
        EXPECT_TRUE(part->body == whole->body.substr(10, 100));
        auto const head = connection.Head(path);
        ASSERT_TRUE(head);
        EXPECT_EQ(head->get_header_value("Content-Length"), size);
        EXPECT_EQ(head->get_header_value("ETag"), etag);
        auto const again = connection.Get(path, {{"If-None-Match", etag}});
        ASSERT_TRUE(again);
        EXPECT_EQ(again->status, 304);
    }
}

TEST_F(FrameQuarryServerTest, ThePreviewOfALargeClipIsItsHighQualityPreview) {
    start();
    Client connection = client();
    auto const own = connection.Head(mediaPath(item(connection, "b"), "preview_url"));
    auto const other = connection.Head("/previews/000000002_main_xl.mp4");
    ASSERT_TRUE(own && other);
    EXPECT_EQ(own->get_header_value("ETag"), other->get_header_value("ETag"));
    auto const none = connection.Head("/previews/000000001_main_xl.mp4");
    ASSERT_TRUE(none);
    EXPECT_EQ(none->status, 404);
}

TEST_F(FrameQuarryServerTest, ThePublicNameIsAnOptionAndTheCertificateCoversIt) {
    ServerOptions other = options();
    other.frameQuarryName = "stock.studio.example:8443";
    start(other);
    Client connection = client();
    Element const clip = item(connection, "a");
    EXPECT_EQ(JSON::orEmpty(clip).getStringView("thumbnail_url"),
              "https://stock.studio.example:8443/icons/000000001_iconm.jpeg");
    EXPECT_EQ(JSON::orEmpty(clip).getStringView("preview_url"),
              "https://stock.studio.example:8443/previews/000000001.mp4");
    for (std::string const name : {"stock.studio.example", "api.framequarry.example", "www.tarn7.example"}) {
        httplib::SSLClient named(name, port_);
        named.set_hostname_addr_map({{name, "127.0.0.1"}});
        named.set_ca_cert_path(server_->caFile().c_str());
        auto const answer = named.Get(address());
        ASSERT_TRUE(answer) << name << ": " << httplib::to_string(answer.error());
        EXPECT_EQ(answer->status, 200) << name;
    }
    httplib::SSLClient stranger("www.framequarry.example", port_);
    stranger.set_hostname_addr_map({{"www.framequarry.example", "127.0.0.1"}});
    stranger.set_ca_cert_path(server_->caFile().c_str());
    EXPECT_FALSE(stranger.Get(address()));
}

TEST_F(FrameQuarryServerTest, TheFaultDeskMeetsTheSearchByItsPath) {
    start();
    auto const add = [this](FaultKind kind) {
        FaultRule rule;
        rule.path = FrameQuarryProtocol::searchPath;
        rule.kind = kind;
        rule.status = 503;
        (void)server_->faults().add(rule);
    };
    auto const ask = [this] {
        Client connection = client();
        return connection.Get(address());
    };
    add(FaultKind::status);
    auto const failed = ask();
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->status, 503);
    add(FaultKind::notJson);
    auto const page = ask();
    ASSERT_TRUE(page);
    EXPECT_THAT(page->body, StartsWith("<!doctype html>"));
    add(FaultKind::expiredAddress);
    EXPECT_EQ(code(ask()), "expired");
    add(FaultKind::cut);
    EXPECT_FALSE(ask());
    add(FaultKind::lostAnswer);
    EXPECT_FALSE(ask());
    EXPECT_EQ(code(ask()), "") << "all rules are spent";

    FaultRule commands;
    commands.command = "*";
    commands.kind = FaultKind::status;
    (void)server_->faults().add(commands);
    EXPECT_EQ(code(ask()), "") << "a search has no command words";
}

} // namespace
