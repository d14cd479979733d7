#include "host/engine/os/DesktopShell.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/engine/files/LocalPath.h"
#include "host/engine/os/BrowserUrl.h"
#include "host/text/Unicode.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/EnvironmentVariable.h"
#include "tests/engine/local/InstalledLog.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::HasSubstr;
using testing::Not;

TEST(BrowserUrl, AnAddressIsTakenApartAndBuiltAgain) {
    EXPECT_EQ(engine::browserUrl(L"HTTPS://pay.example:8443/a?b=c&d=e%20f"),
              "https://pay.example:8443/a?b=c&d=e%20f");
    EXPECT_EQ(engine::browserUrl(L"http://pay.example"), "http://pay.example/");
    EXPECT_EQ(engine::browserUrl(L"http://pay.example?x=1"), "http://pay.example/?x=1");
}

TEST(BrowserUrl, CharactersThatAUrlCannotHoldAreEncoded) {
    EXPECT_EQ(engine::browserUrl(L"https://a.example/x y\"<>`{}|\\^\u00e9"),
              "https://a.example/x%20y%22%3C%3E%60%7B%7D%7C%5C%5E%C3%A9");
}

TEST(BrowserUrl, AnythingButHttpAndHttpsIsRefused) {
    for (wchar_t const* const address :
         {L"javascript:alert(1)", L"file:///etc/passwd", L"ftp://a.example/", L"data:text/html,x",
          L"mailto:a@b", L"--version", L"/etc/passwd", L"a.example", L"", L"http://", L"https:///path",
          L"http://user@a.example/", L"http://a.example/\n--flag", L" https://a.example/",
          L"Virtual:T7 https://a.example/", L"http:\\\\a.example", L"x:https://a.example/"}) {
        EXPECT_FALSE(engine::browserUrl(address).has_value()) << toUTF8(address).c_str();
    }
}

// A browser that reports how it was started through a pipe with a name.
class DesktopShell : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(mkfifo(report_.c_str(), 0600), 0);
        test::writeBytes(browser_, "#!/bin/sh\n{\n" + script_ + "} > '" + report_.native() + "'\n");
        std::filesystem::permissions(browser_, std::filesystem::perms::owner_all);
    }
    // Waits for the browser and gives what it reports.
    [[nodiscard]] std::vector<std::string> report() const {
        std::ifstream stream(report_);
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    test::TemporaryFolder folder_;
    std::filesystem::path const report_ = folder_.path() / "report";
    std::filesystem::path const browser_ = folder_.path() / "browser";
    std::string const script_ = "echo \"$#\"\necho \"$1\"\necho $$\ncut -d ' ' -f 6 /proc/$$/stat\n"
                                "[ -e /proc/$$/fd/57 ] && echo open || echo closed\n";
    test::InstalledLog log_;
    engine::DesktopShell shell_{folder_.path() / "media"};
};

TEST_F(DesktopShell, TheBrowserGetsExactlyOneArgument) {
    test::EnvironmentVariable const browser("ZQ_BROWSER", browser_.c_str());
    ASSERT_TRUE(shell_.openInBrowser(L"https://pay.example/a b?c=$(id)&d='x';e=`id` f"));
    std::vector<std::string> const lines = report();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], "1");
    EXPECT_EQ(lines[1], "https://pay.example/a%20b?c=$(id)&d='x';e=%60id%60%20f");
}

TEST_F(DesktopShell, TheBrowserHasASessionOfItsOwnAndNoneOfTheHostsFiles) {
    test::EnvironmentVariable const browser("ZQ_BROWSER", browser_.c_str());
    ASSERT_EQ(dup2(STDIN_FILENO, 57), 57);
    ASSERT_TRUE(shell_.openInBrowser(L"https://pay.example/"));
    std::vector<std::string> const lines = report();
    close(57);
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[3], lines[2]) << "leads its session";
    EXPECT_EQ(lines[4], "closed");
}

TEST_F(DesktopShell, ABrowserThatEndedLeavesNoEntryInTheProcessTable) {
    test::EnvironmentVariable const browser("ZQ_BROWSER", browser_.c_str());
    ASSERT_TRUE(shell_.openInBrowser(L"https://pay.example/"));
    std::vector<std::string> const lines = report();
    ASSERT_EQ(lines.size(), 5U);
    pid_t const process = std::stoi(lines[2]);
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (kill(process, 0) == 0 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_EQ(kill(process, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST_F(DesktopShell, AnAddressThatIsRefusedStartsNothing) {
    // A browser that could be started would end in a report that nobody reads; this one is a sign if it runs.
    std::filesystem::path const sign = folder_.path() / "ran";
    test::writeBytes(browser_, "#!/bin/sh\ntouch '" + sign.native() + "'\n");
    test::EnvironmentVariable const browser("ZQ_BROWSER", browser_.c_str());
    EXPECT_FALSE(shell_.openInBrowser(L"javascript:alert(1)"));
    EXPECT_FALSE(shell_.openInBrowser(L"file:///etc/passwd"));
    // No child was made: there is none to wait for.
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_FALSE(std::filesystem::exists(sign));
    EXPECT_EQ(log_.lines().size(), 2U);
}

TEST_F(DesktopShell, ARefusedAddressIsNotRepeatedInTheLog) {
    (void)shell_.openInBrowser(L"file:///home/kim/private");
    ASSERT_EQ(log_.lines().size(), 1U);
    EXPECT_THAT(log_.lines().front(), Not(HasSubstr("private")));
}

TEST_F(DesktopShell, ABrowserThatIsNotThereIsAFailureWithALogLine) {
    test::EnvironmentVariable const browser("ZQ_BROWSER", (folder_.path() / "gone").c_str());
    EXPECT_FALSE(shell_.openInBrowser(L"https://pay.example/"));
    EXPECT_EQ(log_.count("could not be started"), 1);
}

TEST_F(DesktopShell, TheLastAddressIsKeptUntilItIsAskedFor) {
    engine::DesktopShell shell(folder_.path());
    EXPECT_EQ(shell.takeLastPage().address, "");
    {
        test::EnvironmentVariable const browser("ZQ_BROWSER", (folder_.path() / "missing").c_str());
        EXPECT_FALSE(shell.openInBrowser(L"https://a.example/pay"));
    }
    EXPECT_FALSE(shell.openInBrowser(L"javascript:alert(1)"));
    engine::DesktopShell::Page const unseen = shell.takeLastPage();
    EXPECT_EQ(unseen.address, "https://a.example/pay");
    EXPECT_FALSE(unseen.started);
    EXPECT_EQ(shell.takeLastPage().address, "");

    test::EnvironmentVariable const browser("ZQ_BROWSER", "true");
    EXPECT_TRUE(shell.openInBrowser(L"https://a.example/again"));
    engine::DesktopShell::Page const shown = shell.takeLastPage();
    EXPECT_EQ(shown.address, "https://a.example/again");
    EXPECT_TRUE(shown.started);
}

TEST_F(DesktopShell, WithoutXdgOpenTheFirstProgramOfBrowserIsTaken) {
    test::EnvironmentVariable const forced("ZQ_BROWSER", nullptr);
    test::EnvironmentVariable const list("BROWSER", (browser_.native() + ":other").c_str());
    std::string const path = std::getenv("PATH");
    bool started = false;
    {
        test::EnvironmentVariable const none("PATH", folder_.path().c_str());
        started = shell_.openInBrowser(L"https://pay.example/");
    }
    ASSERT_TRUE(started);
    std::vector<std::string> const lines = report();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[1], "https://pay.example/");
}

TEST_F(DesktopShell, TheMediaFolderExistsAndItsTextEndsInASeparator) {
    WideString const folder = shell_.getStandardFolder(iShell::mediaFolder);
    EXPECT_EQ(folder, engine::wideText(folder_.path() / "media") + L"/");
    EXPECT_TRUE(std::filesystem::is_directory(folder_.path() / "media"));
    EXPECT_EQ(engine::DesktopShell(folder_.path() / "media/").getStandardFolder(5), folder);
}

TEST_F(DesktopShell, OtherFolderNumbersAreNotKnown) {
    EXPECT_TRUE(shell_.getStandardFolder(0).isEmpty());
    EXPECT_TRUE(shell_.getStandardFolder(-1).isEmpty());
    EXPECT_TRUE(shell_.getStandardFolder(6).isEmpty());
}

} // namespace
