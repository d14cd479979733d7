// The built program's panel, from its address to its end.

#include <gmock/gmock.h>

#include <signal.h>

#include <fstream>
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
        std::string const cookie = ask("GET " + address.substr(address.find("/enter"))).header("set-cookie");
        cookie_ = cookie.substr(0, cookie.find(';'));
    }
    [[nodiscard]] int port() const noexcept { return port_; }
    [[nodiscard]] std::string head(std::string const& methodAndTarget) const {
        return methodAndTarget + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(port_) +
               "\r\nOrigin: http://127.0.0.1:" + std::to_string(port_) + "\r\nCookie: " + cookie_ + "\r\n";
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

TEST_F(PanelCommandTest, TheBrowserOfTheMachineIsOpenedUnlessItIsForbidden) {
    std::filesystem::path const opened = folder() / "opened";
    std::filesystem::path const script = folder() / "browser";
    std::ofstream(script) << "#!/bin/sh\nprintf '%s\\n' \"$@\" >'" << opened.string() << ".new'\nmv '"
                          << opened.string() << ".new' '" << opened.string() << "'\n";
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    environment.push_back("ZQ_BROWSER=" + script.string());
    {
        auto const quiet = start({"panel", "--no-browser"});
        static_cast<void>(quiet->readLine());
        quiet->sendSignal(SIGINT);
        EXPECT_EQ(quiet->finish().status, 0);
        EXPECT_FALSE(std::filesystem::exists(opened));
    }
    auto const program = start({"panel"});
    std::string const address = program->readLine();
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!std::filesystem::exists(opened) && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    std::ifstream file(opened);
    std::string line;
    std::getline(file, line);
    EXPECT_EQ(line, address);
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->finish().status, 0);
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
