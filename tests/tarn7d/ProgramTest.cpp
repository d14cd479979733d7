// The built program, as a user starts it.
#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestFootage.h"
#include "tests/tarn7d/TestRequests.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// A running tarn7d with its standard streams in the test's hands.
class Program {
public:
    explicit Program(std::vector<std::string> arguments, fs::path const& errors,
                     std::string const& input = {}) {
        arguments.insert(arguments.begin(), TARN7D_PROGRAM);
        std::vector<char*> pointers;
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        std::array<int, 2> in{};
        std::array<int, 2> out{};
        EXPECT_EQ(::pipe2(in.data(), O_CLOEXEC) | ::pipe2(out.data(), O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], 0);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        EXPECT_EQ(posix_spawn(&pid_, TARN7D_PROGRAM, &actions, nullptr, pointers.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        ::close(in[0]);
        ::close(out[1]);
        EXPECT_EQ(::write(in[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
        ::close(in[1]);
        output_ = ::fdopen(out[0], "r");
    }
    ~Program() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            (void)exitStatus();
        }
        std::fclose(output_);
    }
    Program(Program const&) = delete;
    Program& operator=(Program const&) = delete;

    // The next line of standard output without its end; empty at the end.
    std::string line() {
        std::string text;
        for (int c = std::fgetc(output_); c != EOF && c != '\n'; c = std::fgetc(output_)) {
            text += static_cast<char>(c);
        }
        return text;
    }
    // Everything up to the end of standard output.
    std::string rest() {
        std::string text;
        for (int c = std::fgetc(output_); c != EOF; c = std::fgetc(output_)) {
            text += static_cast<char>(c);
        }
        return text;
    }
    void signal(int number) const { ::kill(pid_, number); }
    // Waits for the end; -1 when a signal ended it.
    int exitStatus() {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t pid_ = -1;
    std::FILE* output_ = nullptr;
};

class ProgramTest : public testing::Test {
protected:
    ProgramTest() { test::putFootage(test::Footage::plain, footage_ / "a.mov"); }

    [[nodiscard]] std::vector<std::string> serveArguments() const {
        return {"--data", data_.string(), "--footage", footage_.string(), "--prepare", "asked"};
    }
    [[nodiscard]] std::string errors() const {
        std::ostringstream text;
        text << std::ifstream(errors_).rdbuf();
        return text.str();
    }
    // Runs to the end; what it says on standard error can then be read.
    [[nodiscard]] int run(std::vector<std::string> const& arguments, std::string const& input = {}) {
        Program program(arguments, errors_, input);
        output_ = program.rest();
        return program.exitStatus();
    }

    test::TemporaryFolder folder_;
    fs::path const data_ = folder_.path() / "data";
    fs::path const footage_ = folder_.path() / "footage";
    fs::path const errors_ = folder_.path() / "errors.txt";
    std::string output_;
};

TEST_F(ProgramTest, SaysWhenItIsReadyServesAndEndsCleanlyOnASignal) {
    for (int const signal : {SIGTERM, SIGINT}) {
        Program program(serveArguments(), errors_);
        auto const ready = test::parseJson(program.line());
        ASSERT_NE(ready, nullptr) << errors();
        EXPECT_TRUE(ready->getBool("ready", false));
        auto const port = static_cast<int>(ready->getInt("port", 0));
        std::string const ca(ready->getStringView("ca"));
        EXPECT_EQ(ca, fs::canonical(data_ / "ca.pem").string());
        httplib::SSLClient client("127.0.0.1", port);
        client.set_ca_cert_path(ca.c_str());
        auto const answer = client.Post(
            "/?page=api", test::requestBody(R"([{"command":"search","query":"a"}])"), "text/plain");
        ASSERT_TRUE(answer);
        EXPECT_THAT(answer->body, HasSubstr("\"tot_nbr_rows\":1"));
        program.signal(signal);
        EXPECT_EQ(program.line(), "");
        EXPECT_EQ(program.exitStatus(), 0);
    }
}

TEST_F(ProgramTest, ASecondOneOnTheSameDataFolderIsRefused) {
    Program first(serveArguments(), folder_.path() / "first.txt");
    ASSERT_THAT(first.line(), HasSubstr("\"ready\":true"));
    EXPECT_NE(run(serveArguments()), 0);
    EXPECT_THAT(errors(), HasSubstr("another tarn7d runs on it"));
    EXPECT_EQ(output_, "");
    first.signal(SIGTERM);
    EXPECT_EQ(first.exitStatus(), 0);
}

TEST_F(ProgramTest, TheFaultDeskIsOffUnlessAskedForAndTheReadyLineTellsWhereItIs) {
    {
        Program plain(serveArguments(), errors_);
        auto const ready = test::parseJson(plain.line());
        ASSERT_NE(ready, nullptr) << errors();
        EXPECT_EQ(ready->getChild("faultDesk"), nullptr);
    }
    auto arguments = serveArguments();
    arguments.push_back("--fault-desk");
    Program program(arguments, errors_);
    auto const ready = test::parseJson(program.line());
    ASSERT_NE(ready, nullptr) << errors();
    auto const desk = ready->getChild("faultDesk");
    ASSERT_NE(desk, nullptr);
    httplib::Client client("127.0.0.1", static_cast<int>(desk->getInt("port", 0)));
    client.set_default_headers({{"Authorization", "Bearer " + std::string(desk->getStringView("token"))}});
    auto const listed = client.Get("/faults");
    ASSERT_TRUE(listed);
    EXPECT_EQ(listed->body, R"({"faults":[]})");
    program.signal(SIGTERM);
    EXPECT_EQ(program.exitStatus(), 0);
}

TEST_F(ProgramTest, APurchaseSurvivesAKilledService) {
    std::string const data = data_.string();
    ASSERT_EQ(run({"account", "add", "anna", "--credits", "20", "--data", data}, "secret\n"), 0) << errors();
    // The clip costs 9 credits: it is bought before the kill, and again after it.
    for (std::string const& charged : {std::string("\"charged\":9"), std::string("\"charged\":0")}) {
        Program program(serveArguments(), errors_);
        auto const ready = test::parseJson(program.line());
        ASSERT_NE(ready, nullptr) << errors();
        httplib::SSLClient client("127.0.0.1", static_cast<int>(ready->getInt("port", 0)));
        client.set_ca_cert_path(std::string(ready->getStringView("ca")).c_str());
        auto const signedIn = client.Post(
            "/?page=api", test::requestBody(R"([{"command":"login","username":"anna","password":"secret"}])"),
            "text/plain");
        ASSERT_TRUE(signedIn);
        auto const session = test::reply(test::parseJson(signedIn->body));
        auto const bought = client.Post(
            "/?page=api",
            test::requestBody(
                R"([{"command":"modify_active_cart","addid":"1"},{"command":"purchase_using_credits"}])",
                {static_cast<std::int32_t>(JSON::orEmpty(session).getInt("cx", -1)),
                 static_cast<std::int32_t>(JSON::orEmpty(session).getInt("cm", -1))}),
            "text/plain");
        ASSERT_TRUE(bought);
        EXPECT_THAT(bought->body, HasSubstr(charged));
        program.signal(SIGKILL);
        EXPECT_EQ(program.exitStatus(), -1);
    }
    EXPECT_EQ(run({"account", "list", "--data", data}), 0);
    EXPECT_EQ(output_, "anna\t11\n");
}

TEST_F(ProgramTest, MistakesAreToldAndEndTheProgram) {
    EXPECT_EQ(run({"--data", data_.string()}), 2);
    EXPECT_THAT(errors(), HasSubstr("--footage"));
    EXPECT_NE(run({"--data", data_.string(), "--footage", (folder_.path() / "none").string()}), 0);
    EXPECT_THAT(errors(), HasSubstr("footage folder"));
    auto outside = serveArguments();
    outside.insert(outside.end(), {"--listen", "0.0.0.0:0"});
    EXPECT_NE(run(outside), 0);
    EXPECT_THAT(errors(), HasSubstr("loopback"));
    auto badPort = serveArguments();
    badPort.insert(badPort.end(), {"--listen", "127.0.0.1:70000"});
    EXPECT_NE(run(badPort), 0);
    EXPECT_THAT(errors(), HasSubstr("HOST:PORT"));
    EXPECT_NE(run({"--data", (footage_ / "a.mov").string(), "--footage", footage_.string()}), 0);
    EXPECT_THAT(errors(), HasSubstr("data folder"));
}

TEST_F(ProgramTest, ADamagedCatalogueIsToldAndLeftAlone) {
    fs::create_directories(data_);
    std::ofstream(data_ / "catalogue.db") << std::string(10000, 'x');
    EXPECT_NE(run(serveArguments()), 0);
    EXPECT_THAT(errors(), HasSubstr("cannot open the catalogue " + (data_ / "catalogue.db").string()));
    EXPECT_THAT(errors(), HasSubstr("move it away"));
    EXPECT_EQ(fs::file_size(data_ / "catalogue.db"), 10000U);
}

TEST_F(ProgramTest, AccountsAreKeptFromTheCommandLine) {
    std::string const data = data_.string();
    EXPECT_EQ(run({"account", "add", "anna", "--credits", "7", "--data", data}, "secret\n"), 0) << errors();
    EXPECT_EQ(run({"account", "list", "--data", data}), 0);
    EXPECT_EQ(output_, "anna\t7\n");
    EXPECT_NE(run({"account", "add", "anna", "--data", data}, "secret\n"), 0);
    EXPECT_NE(run({"account", "add", "ben", "--data", data}, ""), 0);
    EXPECT_THAT(errors(), HasSubstr("no password"));
    EXPECT_EQ(run({"account", "credits", "anna", "12", "--data", data}), 0);
    EXPECT_NE(run({"account", "credits", "anna", "--data", data, "--", "-5"}), 0);
    EXPECT_NE(run({"account", "credits", "anna", "99999999999999999999", "--data", data}), 0);
    EXPECT_THAT(errors(), HasSubstr("range 0 to 1000000000\n"));
    EXPECT_EQ(run({"account", "password", "anna", "--data", data}, "other\n"), 0);
    EXPECT_EQ(run({"account", "list", "--data", data}), 0);
    EXPECT_EQ(output_, "anna\t12\n");
    EXPECT_EQ(run({"account", "block", "anna", "--data", data}), 0);
    EXPECT_EQ(run({"account", "list", "--data", data}), 0);
    EXPECT_EQ(output_, "anna\t12\tblocked\n");
    EXPECT_EQ(run({"account", "unblock", "anna", "--data", data}), 0);
    EXPECT_EQ(run({"account", "list", "--data", data}), 0);
    EXPECT_EQ(output_, "anna\t12\n");
    EXPECT_EQ(run({"account", "remove", "anna", "--data", data}), 0);
    EXPECT_NE(run({"account", "remove", "anna", "--data", data}), 0);
    EXPECT_THAT(errors(), HasSubstr("no account of that name"));
}

TEST_F(ProgramTest, AccountsThatAreNotThereAreNotMade) {
    std::string const data = data_.string();
    EXPECT_NE(run({"account", "list", "--data", data}), 0);
    EXPECT_THAT(errors(), HasSubstr("no accounts in " + data));
    EXPECT_FALSE(fs::exists(data_));
    EXPECT_EQ(run({"account", "add", "anna", "--data", data}, "secret\n"), 0) << errors();
    EXPECT_EQ(fs::status(data_).permissions(), fs::perms::owner_all);
}

TEST_F(ProgramTest, AnAddressThatIsNotServedIsRefusedBeforeFootageIsMade) {
    auto arguments = serveArguments();
    arguments.insert(arguments.end(), {"--demo", "--listen", "0.0.0.0:0"});
    EXPECT_NE(run(arguments), 0);
    EXPECT_THAT(errors(), HasSubstr("loopback"));
    EXPECT_FALSE(fs::exists(data_));
}

TEST_F(ProgramTest, HelpNamesTheOptions) {
    EXPECT_EQ(run({"--help"}), 0);
    for (char const* option :
         {"--data", "--footage", "--listen", "--demo", "--public-name", "--framequarry-name", "--fault-desk",
          "--payment-pages", "--download-minutes", "account"}) {
        EXPECT_THAT(output_, HasSubstr(option));
    }
}

} // namespace
