// The built program's panel, from its address to its end.

#include <gmock/gmock.h>

#include <signal.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include "tests/support/RawServer.h"
#include "tests/zq/ProgramFixture.h"
#include "tests/zq/panel/RawClient.h"

namespace {

using panel_tests::Answer;
using panel_tests::RawClient;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using zq_tests::Finished;
using zq_tests::RunningProgram;

// What a browser does with the address that was printed.
class Browser {
public:
    explicit Browser(std::string const& address) {
        std::string const host = "http://127.0.0.1:";
        EXPECT_THAT(address, MatchesRegex(host + "[0-9]+/enter\\?token=[0-9a-f]{64}"));
        port_ = std::stoi(address.substr(host.size()));
        Answer const entered = ask("GET " + address.substr(address.find("/enter")));
        std::string const cookie = entered.header("set-cookie");
        cookie_ = cookie.substr(0, cookie.find(';'));
        key_ = panel_tests::metaIn(entered.body, "zq-panel-key");
    }
    [[nodiscard]] int port() const noexcept { return port_; }
    [[nodiscard]] std::string head(std::string const& methodAndTarget) const {
        return methodAndTarget + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port_) +
               "\r\nOrigin: http://127.0.0.1:" + std::to_string(port_) + "\r\nCookie: " + cookie_ +
               "\r\nX-Zq-Panel-Key: " + key_ + "\r\n";
    }
    [[nodiscard]] Answer ask(std::string const& methodAndTarget) const {
        return RawClient(port_).ask(head(methodAndTarget) + "\r\n");
    }
    [[nodiscard]] Answer post(std::string const& target, std::string const& body) const {
        return RawClient(port_).ask(head("POST " + target) +
                                    "Content-Type: application/json\r\nContent-Length: " +
                                    std::to_string(body.size()) + "\r\n\r\n" + body);
    }

private:
    int port_ = 0;
    std::string cookie_ = "none";
    std::string key_ = "none";
};

class PanelCommandTest : public zq_tests::ProgramFixture {
protected:
    PanelCommandTest() {
        configure({programFile("tarn7.zqd")}, network("127.0.0.1:" + std::to_string(test::closedPort()), {}));
    }
};

TEST_F(PanelCommandTest, ThePanelIsAtTheAddressThatIsPrinted) {
    auto const program = start({"panel", "--no-browser"});
    Browser const browser(program->readLine());
    EXPECT_EQ(browser.ask("GET /").header("content-type"), "text/html; charset=utf-8");
    Answer const state = browser.ask("GET /api/state");
    EXPECT_EQ(state.status, 200);
    EXPECT_THAT(state.body, HasSubstr(R"("shortName":"T7")"));
    program->sendSignal(SIGINT);
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 0) << finished.err;
    EXPECT_EQ(finished.out, "") << "one line";
    EXPECT_EQ(finished.err, "");
    EXPECT_THROW(RawClient(browser.port()), std::runtime_error);
}

TEST_F(PanelCommandTest, ItsStateIsThatOfItsRoutes) {
    auto const program = start({"--language", "de", "panel", "--no-browser"});
    Browser const browser(program->readLine());
    std::string const state = browser.ask("GET /api/state").body;
    EXPECT_THAT(state, HasSubstr(R"("language":"de")"));
    EXPECT_THAT(state, HasSubstr("\"project\":" + browser.ask("GET /api/project").body));
    EXPECT_THAT(state, HasSubstr(R"("tasks":[])"));
    EXPECT_THAT(state, HasSubstr("\"repositories\":[" + browser.ask("GET /api/repositories/T7").body + "]"));
    EXPECT_THAT(state, HasSubstr("\"version\":\""));
    EXPECT_THAT(state, HasSubstr("\"event\":"));
    EXPECT_THAT(state, HasSubstr("\"theme\":\""));
}

TEST_F(PanelCommandTest, AsJsonTheAddressStandsInOneLineAtTheStart) {
    auto const program = start({"--json", "panel", "--no-browser"});
    std::string const line = program->readLine();
    std::string const before = R"({"ok":true,"address":")";
    ASSERT_THAT(line, testing::StartsWith(before));
    Browser const browser(line.substr(before.size(), line.size() - before.size() - 2));
    EXPECT_EQ(browser.ask("GET /api/state").status, 200);
    program->sendSignal(SIGTERM);
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 128 + SIGTERM);
    EXPECT_EQ(finished.out, "");
}

TEST_F(PanelCommandTest, ItEndsWhilePagesListen) {
    auto const program = start({"panel", "--no-browser"});
    Browser const browser(program->readLine());
    RawClient page(browser.port());
    EXPECT_EQ(page.ask(browser.head("GET /api/events") + "\r\n").status, 200);
    RawClient idle(browser.port());
    program->sendSignal(SIGTERM);
    EXPECT_TRUE(page.isAtEnd());
    EXPECT_TRUE(idle.isAtEnd());
    EXPECT_EQ(program->finish().status, 128 + SIGTERM);
}

TEST_F(PanelCommandTest, ATakenPortIsAFailure) {
    auto const first = start({"panel", "--no-browser"});
    Browser const browser(first->readLine());
    Finished const second = run({"panel", "--no-browser", "--port", std::to_string(browser.port())});
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.err, HasSubstr("cannot listen on port " + std::to_string(browser.port())));
    first->sendSignal(SIGINT);
    EXPECT_EQ(first->finish().status, 0);
}

TEST_F(PanelCommandTest, APortIsTakenAsAsked) {
    int const port = test::closedPort();
    auto const program = start({"panel", "--no-browser", "--port", std::to_string(port)});
    EXPECT_EQ(Browser(program->readLine()).port(), port);
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->finish().status, 0);
    for (char const* const wrong : {"80", "0", "65536", "-1", "x"}) {
        EXPECT_NE(run({"panel", "--no-browser", "--port", wrong}).status, 0) << wrong;
    }
}

// What a browser keeps of a page, it keeps for its port.
TEST_F(PanelCommandTest, ThePortOfTheLastRunIsTakenAgain) {
    int before = 0;
    std::string tokenBefore;
    {
        auto const program = start({"panel", "--no-browser"});
        std::string const address = program->readLine();
        before = Browser(address).port();
        tokenBefore = address.substr(address.find("token="));
        program->sendSignal(SIGINT);
        EXPECT_EQ(program->finish().status, 0);
    }
    auto const program = start({"panel", "--no-browser"});
    std::string const address = program->readLine();
    EXPECT_EQ(Browser(address).port(), before);
    EXPECT_THAT(address, Not(HasSubstr(tokenBefore)));

    int secondPort = 0;
    for (int run = 0; run < 2; ++run) {
        auto const second = start({"panel", "--no-browser"});
        int const port = Browser(second->readLine()).port();
        EXPECT_NE(port, before);
        EXPECT_TRUE(run == 0 || port == secondPort) << "beside the first one, each time";
        secondPort = port;
        second->sendSignal(SIGINT);
        EXPECT_EQ(second->finish().status, 0);
    }
}

TEST_F(PanelCommandTest, AnUnusablePortOfAnEarlierRunIsPassedOver) {
    std::ofstream(home() / "panel.toml") << "ports = [80, -1, 99999, \"x\", 2.5]\n";
    auto const program = start({"panel", "--no-browser"});
    EXPECT_EQ(Browser(program->readLine()).ask("GET /api/state").status, 200);
}

TEST_F(PanelCommandTest, InTheShellItEndsWithCtrlCAndTheShellGoesOn) {
    auto const program = start({"shell"});
    program->write("panel --no-browser\n");
    Browser const browser(program->readLine());
    EXPECT_EQ(browser.ask("GET /api/state").status, 200);
    program->sendSignal(SIGINT);
    program->write("tasks\n");
    EXPECT_EQ(program->readLine(), "no tasks");
    EXPECT_EQ(program->finish().status, 0);
}

// What the machine's browser is started with.
class PanelInBrowserTest : public PanelCommandTest {
protected:
    PanelInBrowserTest() {
        std::filesystem::path const script = folder() / "browser";
        std::ofstream(script) << "#!/bin/sh\nprintf '%s\\n' \"$@\" >'" << opened_.string() << ".new'\nmv '"
                              << opened_.string() << ".new' '" << opened_.string() << "'\n";
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        environment.push_back("ZQ_BROWSER=" + script.string());
    }
    [[nodiscard]] std::string words() const {
        waitUntil([this] { return std::filesystem::exists(opened_); });
        return contentOf(opened_);
    }
    static std::string contentOf(std::filesystem::path const& path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void waitUntil(std::function<bool()> const& holds) {
        auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!holds() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        EXPECT_TRUE(holds());
    }
    // The file that the browser was told.
    [[nodiscard]] std::filesystem::path page() const {
        std::string const told = words();
        EXPECT_THAT(told, testing::EndsWith(".html\n"));
        return told.substr(0, told.find('\n'));
    }
    // Where the page leads.
    static std::string addressIn(std::string const& html) {
        std::string const before = "content=\"0; url=";
        std::size_t const at = html.find(before) + before.size();
        std::string address = html.substr(at, html.find('"', at) - at);
        std::size_t const escaped = address.find("&amp;");
        return escaped != std::string::npos ? address.replace(escaped, 5, "&") : address;
    }

private:
    std::filesystem::path const opened_{folder() / "opened"};
};

TEST_F(PanelInBrowserTest, IsOpenedByAPageOfItsUsersAloneThatGoesOnceItWasUsed) {
    auto const program = start({"panel"});
    std::string const address = program->readLine();
    EXPECT_THAT(words(), Not(HasSubstr(address.substr(address.find("token=")))))
        << "others read command lines";
    EXPECT_EQ(page().parent_path(), home());
    EXPECT_EQ(std::filesystem::status(page()).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    Browser const typed(address);
    EXPECT_EQ(typed.ask("GET /api/state").status, 200);
    EXPECT_EQ(typed.ask("GET /enter?token=0&page=1").status, 401);
    EXPECT_TRUE(std::filesystem::exists(page())) << "nobody has used it";

    std::string const leads = addressIn(contentOf(page()));
    EXPECT_EQ(leads, address + "&page=1");
    Answer const entered = typed.ask("GET " + leads.substr(leads.find("/enter")));
    EXPECT_EQ(entered.status, 200) << "the cookie would be lost along a redirect";
    EXPECT_EQ(entered.header("content-type"), "text/html; charset=utf-8");
    EXPECT_THAT(entered.header("set-cookie"), HasSubstr("SameSite=Strict"));
    EXPECT_EQ(panel_tests::metaIn(entered.body, "zq-panel-address"), "/");
    EXPECT_EQ(panel_tests::metaIn(entered.body, "zq-panel-key").size(), 64U);
    waitUntil([this] { return !std::filesystem::exists(page()); });
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->finish().status, 0);
}

TEST_F(PanelInBrowserTest, ThePageGoesAtTheEndWhereNobodyHasUsedIt) {
    auto const program = start({"panel"});
    static_cast<void>(program->readLine());
    EXPECT_TRUE(std::filesystem::exists(page()));
    program->sendSignal(SIGTERM);
    EXPECT_EQ(program->finish().status, 128 + SIGTERM);
    EXPECT_FALSE(std::filesystem::exists(page()));
}

TEST_F(PanelInBrowserTest, IsNotOpenedWhereThatIsForbidden) {
    auto const quiet = start({"panel", "--no-browser"});
    static_cast<void>(quiet->readLine());
    quiet->sendSignal(SIGINT);
    EXPECT_EQ(quiet->finish().status, 0);
    EXPECT_FALSE(std::filesystem::exists(folder() / "opened"));
    for (auto const& entry : std::filesystem::directory_iterator(home())) {
        EXPECT_NE(entry.path().extension(), ".html");
    }
}

TEST_F(PanelCommandTest, TheWordsOfTheLastSearchAreThereAfterARestart) {
    {
        auto const program = start({"panel", "--no-browser"});
        Browser const browser(program->readLine());
        EXPECT_EQ(browser.ask("GET /api/repositories/T7/search?words=red%20car").status, 502) << "no service";
        program->sendSignal(SIGINT);
        EXPECT_EQ(program->finish().status, 0);
    }
    auto const program = start({"panel", "--no-browser"});
    Browser const browser(program->readLine());
    EXPECT_THAT(browser.ask("GET /api/state").body, HasSubstr(R"("words":"red car")"));
    EXPECT_THAT(browser.ask("GET /api/repositories/T7").body, HasSubstr(R"("words":"red car")"));
}

TEST_F(PanelCommandTest, WhileAnotherProcessHoldsTheProjectItCanOnlyBeLookedAt) {
    auto const holder = start({"shell"});
    holder->write("tasks\n");
    EXPECT_EQ(holder->readLine(), "no tasks");
    auto const program = start({"panel", "--no-browser"});
    Browser const browser(program->readLine());
    EXPECT_THAT(browser.ask("GET /api/state").body, HasSubstr(R"("writable":false)"));
    Answer const refused = browser.post("/api/project/undo", "{}");
    EXPECT_EQ(refused.status, 409);
    EXPECT_THAT(refused.body, HasSubstr("another program works on this project"));
    EXPECT_EQ(holder->finish().status, 0);
    EXPECT_THAT(browser.ask("GET /api/project").body, HasSubstr(R"("writable":true)"));
}

TEST_F(PanelCommandTest, OnlyLinksThatARepositoryHasGivenAreOpened) {
    std::filesystem::path const opened = folder() / "opened";
    std::filesystem::path const script = folder() / "browser";
    std::ofstream(script) << "#!/bin/sh\nprintf '%s\\n' \"$1\" >>'" << opened.string() << "'\n";
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    environment.push_back("ZQ_BROWSER=" + script.string());
    auto const program = start({"panel", "--no-browser"});
    Browser const browser(program->readLine());
    for (char const* const url : {"http://evil.example/", "file:///etc/passwd", "javascript:alert(1)", ""}) {
        Answer const answer = browser.post("/api/links", std::string(R"({"url":")") + url + "\"}");
        EXPECT_GE(answer.status, 400) << url;
    }
    std::string const repository = browser.ask("GET /api/repositories/T7").body;
    std::string const key = R"("webLink":")";
    std::size_t const at = repository.find(key) + key.size();
    std::string const link = repository.substr(at, repository.find('"', at) - at);
    EXPECT_EQ(browser.post("/api/links", R"({"url":")" + link + "\"}").status, 200) << link;
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->finish().status, 0);
    std::ifstream file(opened);
    std::string lines((std::istreambuf_iterator<char>(file)), {});
    EXPECT_THAT(lines, Not(HasSubstr("evil")));
}

TEST_F(PanelCommandTest, TheTokenIsInNoFileOfTheHome) {
    auto const program = start({"panel", "--no-browser"});
    std::string const address = program->readLine();
    Browser const browser(address);
    static_cast<void>(browser.ask("GET /api/log"));
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->finish().status, 0);
    std::string const token = address.substr(address.find('=') + 1);
    for (auto const& entry : std::filesystem::recursive_directory_iterator(home())) {
        if (entry.is_regular_file()) {
            std::ifstream file(entry.path(), std::ios::binary);
            std::string const content((std::istreambuf_iterator<char>(file)), {});
            EXPECT_EQ(content.find(token), std::string::npos) << entry.path();
        }
    }
}

} // namespace
