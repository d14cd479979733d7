// A panel's server with a few routes of the test's own, and what a page sends it.
#pragma once

#include <gmock/gmock.h>

#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "apps/zq/Reply.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/PanelServer.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/zq/panel/RawClient.h"

namespace panel_tests {

// Bytes 'a', 'b', ... over and over.
class Alphabet final : public zq::panel::Content {
public:
    explicit Alphabet(std::uint64_t size) : size_(size) {}
    [[nodiscard]] std::uint64_t size() const override { return size_; }
    [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<char> bytes) override {
        std::size_t count = 0;
        for (; count < bytes.size() && offset + count < size_; ++count) {
            bytes[count] = at(offset + count);
        }
        return count;
    }
    [[nodiscard]] static char at(std::uint64_t offset) { return static_cast<char>('a' + offset % 26); }
    [[nodiscard]] static std::string part(std::uint64_t first, std::uint64_t count) {
        std::string text;
        for (std::uint64_t i = first; i < first + count; ++i) {
            text += at(i);
        }
        return text;
    }

private:
    std::uint64_t const size_;
};

// Content whose first bytes come only when it is read for the third time.
class Latecomer final : public zq::panel::Content {
public:
    [[nodiscard]] std::uint64_t size() const override { return 5; }
    [[nodiscard]] bool isLate() const override { return reads_ < 3; }
    [[nodiscard]] std::size_t read(std::uint64_t offset, std::span<char> bytes) override {
        ++reads_;
        return isLate() ? 0 : std::string_view("later").copy(bytes.data(), bytes.size(), offset);
    }

private:
    int reads_ = 0;
};

class TransportFixture : public testing::Test {
protected:
    static constexpr std::uint64_t contentSize = 100'000;

    TransportFixture() {
        std::filesystem::create_directory(folder_.path() / "assets");
        write("index.html", "<!doctype html><html><head><title>page</title></head></html>");
        write("assets/main-1234.js", "export {};");
        write("assets/notes.txt", "no asset");
        write("secret.txt", "secret");
        server_ = std::make_unique<zq::panel::PanelServer>(routes(), zq::panel::WebFiles(folder_.path()), 0);
        enter();
    }
    ~TransportFixture() override {
        events_.end();
        server_.reset();
    }

    zq::panel::Routes routes() {
        using namespace zq::panel;
        return {
            {"GET", "/api/state", [](Request const&) { return textOf("state"); }},
            {"GET", "/api/named/{name}", [](Request const& r) { return textOf(r.captures.front()); }},
            {"GET", "/api/query",
             [](Request const& r) { return textOf(r.query.contains("q") ? r.query.at("q") : "none"); }},
            {"POST", "/api/echo",
             [](Request const& r) { return textOf(std::string(r.body->getStringView("text"))); }},
            {"PUT", "/api/echo", [](Request const&) { return textOf("put"); }},
            {"DELETE", "/api/echo", [](Request const&) { return textOf("deleted"); }},
            {"GET", "/api/late",
             [](Request const&) {
                 Response response;
                 response.content = std::make_shared<Latecomer>();
                 return response;
             }},
            {"GET", "/api/bytes",
             [](Request const&) {
                 Response response;
                 response.type = "video/quicktime";
                 response.content = std::make_shared<Alphabet>(contentSize);
                 return response;
             }},
            {"GET", "/api/file",
             [](Request const&) {
                 Response response = textOf("x");
                 response.saveAs = "a\"b\r\n\xc3\xa4.csv";
                 return response;
             }},
            {"GET", "/api/fresh",
             [](Request const&) {
                 Response response = textOf("fresh");
                 response.fresh_s = 60;
                 return response;
             }},
            {"GET", "/api/events",
             [this](Request const& r) {
                 Response response;
                 response.type = "text/event-stream";
                 response.live = events_.listen(r.lastEvent);
                 return response;
             }},
            {"GET", "/api/conflict",
             [](Request const&) -> Response {
                 throw ApiError(ErrorCode::conflict, "\"no\" <b>", zq::Reason::inDoubt);
             }},
            {"GET", "/api/command",
             [](Request const&) -> Response {
                 throw zq::ReasonedError(zq::Reason::serviceRefused, "the service says no");
             }},
            {"GET", "/api/broken", [](Request const&) -> Response { throw std::runtime_error("inner"); }},
            {"GET", "/api/odd", [](Request const&) -> Response { throw 7; }},
        };
    }
    static zq::panel::Response textOf(std::string const& text) {
        zq::panel::Response response;
        response.type = "text/plain";
        response.body = text;
        return response;
    }
    void write(char const* name, char const* content) const {
        std::ofstream(folder_.path() / name, std::ios::binary) << content;
    }
    void enter() {
        std::string const address = server_->address();
        std::string const target = address.substr(address.find('/', std::string("http://").size()));
        token_ = address.substr(address.find('=') + 1);
        entered_ = RawClient(server_->port()).ask("GET " + target + " HTTP/1.1\r\n" + hostLine() + "\r\n");
        std::string const cookie = entered_.header("set-cookie");
        cookie_ = cookie.substr(0, cookie.find(';'));
        key_ = metaIn(entered_.body, "zq-panel-key");
    }

    [[nodiscard]] std::string host() const { return "127.0.0.1:" + std::to_string(server_->port()); }
    [[nodiscard]] std::string hostLine() const { return "Host: " + host() + "\r\n"; }
    [[nodiscard]] std::string cookieLine() const { return "Cookie: " + cookie_ + "\r\n"; }
    [[nodiscard]] std::string originLine() const { return "Origin: http://" + host() + "\r\n"; }
    [[nodiscard]] std::string keyLine() const { return "X-Zq-Panel-Key: " + key_ + "\r\n"; }
    // A request as the page sends it.
    [[nodiscard]] std::string request(std::string const& methodAndTarget,
                                      std::string const& headers = {}) const {
        bool const reads = methodAndTarget.starts_with("GET ") || methodAndTarget.starts_with("HEAD ");
        return methodAndTarget + " HTTP/1.1\r\n" + hostLine() + cookieLine() +
               (reads ? std::string() : originLine() + keyLine()) + headers + "\r\n";
    }
    [[nodiscard]] static std::string json(std::size_t length) {
        return "Content-Type: application/json\r\nContent-Length: " + std::to_string(length) + "\r\n";
    }
    // On a connection of its own.
    Answer ask(std::string const& wholeRequest) const { return RawClient(server_->port()).ask(wholeRequest); }
    Answer get(std::string const& target, std::string const& headers = {}) const {
        return ask(request("GET " + target, headers));
    }
    Answer post(std::string const& target, std::string const& body) const {
        return ask(request("POST " + target, json(body.size())) + body);
    }

    fake::Host host_;
    test::TemporaryFolder folder_;
    zq::panel::EventHub events_;
    std::unique_ptr<zq::panel::PanelServer> server_;
    Answer entered_;
    std::string token_;
    std::string cookie_;
    std::string key_;
};

} // namespace panel_tests
