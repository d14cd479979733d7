// Fetching full files while the service misbehaves, and while people change their minds.

#include <gmock/gmock.h>
#include <httplib.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/zq/EmbeddedService.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using zq_tests::errorOf;
using zq_tests::Finished;
using zq_tests::itemOf;
using zq_tests::parsed;

// anna owns the clip "sea", and the service goes wrong when it is asked to.
class Fetch : public zq_tests::EmbeddedService {
protected:
    Fetch()
        : EmbeddedService({"--fault-desk"}), sea_(clip("sea")),
          desk_(std::make_unique<httplib::Client>("127.0.0.1", static_cast<int>(faultPort_))) {
        desk_->set_bearer_token_auth(faultToken_);
        EXPECT_EQ(errorOf(signedIn({"buy " + sea_ + " --credits"}).at(0)), "");
    }
    // The next full file is sent like this.
    void spoil(std::string const& kind, std::string const& arguments = "{}",
               char const* match = R"("path":"/full/")") {
        auto const answer = desk_->Post("/faults",
                                        "{\"match\":{" + std::string(match) + "},\"kind\":\"" + kind +
                                            "\",\"count\":1,\"arguments\":" + arguments + "}",
                                        "application/json");
        ASSERT_TRUE(answer);
        ASSERT_EQ(answer->status, 201) << answer->body;
    }
    // Returns once the service has begun to send a file as it was spoilt.
    void waitForSpoiltTransfer() {
        auto const patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < patience) {
            auto const answer = desk_->Get("/faults");
            ASSERT_TRUE(answer);
            if (itemOf(parsed(answer->body), "faults", 0).getInt("met", 0) > 0) {
                return;
            }
        }
        FAIL() << "nobody asked for the file";
    }
    // The service does as it should again.
    void heal() { ASSERT_TRUE(desk_->Delete("/faults")); }

    [[nodiscard]] std::vector<fs::path> filesInMediaFolder() const {
        std::vector<fs::path> files;
        for (fs::directory_entry const& entry : fs::recursive_directory_iterator(home())) {
            if (entry.is_regular_file() && entry.path().parent_path().filename() == "Tarn7") {
                files.push_back(entry.path());
            }
        }
        return files;
    }
    [[nodiscard]] std::uintmax_t seaSize() const { return fs::file_size(folder() / "footage" / "sea.mp4"); }
    // A shell in which anna is signed in.
    [[nodiscard]] std::unique_ptr<zq_tests::RunningProgram> signedInShell(bool json) const {
        auto program = start(json ? Words{"--json", "shell"} : Words{"shell"});
        program->write("login anna\nopen sesame\n");
        static_cast<void>(program->readLine());
        return program;
    }

    std::string const sea_;
    std::unique_ptr<httplib::Client> const desk_;
};

constexpr char const* stallInTheMiddle = R"({"bytes":20000,"time":60000})";

TEST_F(Fetch, OfAnInterruptedTransferLeavesNothingAndSucceedsTheNextTime) {
    for (std::string const kind : {"cut", "wrong-length", "status"}) {
        spoil(kind, kind == "cut"      ? R"({"bytes":20000})"
                    : kind == "status" ? R"({"status":500})"
                                       : R"({"bytes":1000})");
        std::vector<std::string> const lines = signedIn({"fetch " + sea_});
        Zq::Ptr<JSON::Element> const answer = parsed(lines.at(0));
        EXPECT_FALSE(answer->getBool("ok", true)) << kind;
        EXPECT_TRUE(answer->getBool("result", false)) << "the service gave an address";
        EXPECT_EQ(itemOf(answer, "failed", 0).getString("id").view(), sea_) << kind;
        EXPECT_TRUE(
            itemOf(answer, "failed", 0).getString("reason").startsWith("The download of \"Sea\" failed"));
        EXPECT_THAT(filesInMediaFolder(), SizeIs(0)) << kind;
    }
    EXPECT_EQ(errorOf(signedIn({"fetch " + sea_}).at(0)), "");
    ASSERT_THAT(filesInMediaFolder(), SizeIs(1));
    EXPECT_EQ(fs::file_size(filesInMediaFolder()[0]), seaSize());
}

TEST_F(Fetch, OfARefusedDownloadSaysWhatTheServiceSays) {
    spoil("not-json", "{}", R"("command":"download")");
    std::string const line = signedIn({"fetch " + sea_}).at(0);
    EXPECT_FALSE(parsed(line)->getBool("result", true)) << line;
    EXPECT_THAT(errorOf(line), HasSubstr("The download was refused"));
    EXPECT_THAT(filesInMediaFolder(), SizeIs(0));
}

TEST_F(Fetch, IsCancelledByCtrlCAndLeavesNothing) {
    spoil("stall", stallInTheMiddle);
    auto const program = signedInShell(false);
    program->write("fetch " + sea_ + "\n");
    static_cast<void>(program->readThrough("Downloading\n"));
    waitForSpoiltTransfer();
    auto const before = std::chrono::steady_clock::now();
    program->sendSignal(SIGINT);
    static_cast<void>(program->readThrough("not fetched: " + sea_ + " Sea: cancelled\n"));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    EXPECT_THAT(filesInMediaFolder(), SizeIs(0));
    heal();
    program->write("fetch " + sea_ + "\n");
    static_cast<void>(program->readThrough("relinked: " + sea_ + " Sea plays "));
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 1) << "one command failed";
    EXPECT_THAT(finished.err, HasSubstr("clip " + sea_ + " was not fetched: cancelled"));
    ASSERT_THAT(filesInMediaFolder(), SizeIs(1));
    EXPECT_EQ(fs::file_size(filesInMediaFolder()[0]), seaSize());
}

TEST_F(Fetch, InTheBackgroundIsSeenCancelledAndNotDoneTwiceAtATime) {
    spoil("stall", stallInTheMiddle);
    auto const program = signedInShell(true);
    program->write("fetch " + sea_ + " --background\nfetch " + sea_ + "\ntasks\n");
    EXPECT_EQ(program->readLine(), R"({"ok":true,"task":1})");
    EXPECT_EQ(errorOf(program->readLine()), "clip " + sea_ + " is being fetched by task 1");
    Zq::Ptr<JSON::Element> const running = parsed(program->readLine());
    EXPECT_FALSE(itemOf(running, "tasks", 0).getBool("ended", true));
    waitForSpoiltTransfer();
    program->write("cancel 1\ntasks\ncancel 1\n");
    EXPECT_EQ(program->readLine(), R"({"ok":true,"task":1,"state":"cancelled"})");
    Zq::Ptr<JSON::Element> const ended = parsed(program->readLine());
    EXPECT_EQ(itemOf(ended, "tasks", 0).getString("state"), "cancelled");
    EXPECT_EQ(errorOf(program->readLine()), "no task 1 waits or runs");
    EXPECT_THAT(filesInMediaFolder(), SizeIs(0));
    heal();
    program->write("fetch " + sea_ + " --background\ntasks --wait\n");
    static_cast<void>(program->readLine());
    Zq::Ptr<JSON::Element> const done = parsed(program->readLine());
    EXPECT_EQ(itemOf(done, "tasks", 1).getString("state"), "done");
    EXPECT_EQ(itemOf(done, "tasks", 1).getString("result"), "1 of 1 clip relinked");
    EXPECT_EQ(program->finish().status, 1);
    EXPECT_THAT(filesInMediaFolder(), SizeIs(1));
}

TEST_F(Fetch, EndsBeforeASignOut) {
    spoil("stall", stallInTheMiddle);
    auto const program = signedInShell(true);
    program->write("fetch " + sea_ + " --background\n");
    static_cast<void>(program->readLine());
    waitForSpoiltTransfer();
    program->write("logout\ntasks\n");
    EXPECT_EQ(program->readLine(), R"({"ok":true})");
    EXPECT_EQ(itemOf(parsed(program->readLine()), "tasks", 0).getString("state"), "cancelled");
    EXPECT_THAT(filesInMediaFolder(), SizeIs(0));
}

TEST_F(Fetch, EndsWithTheProgramWithinTwoSeconds) {
    spoil("stall", stallInTheMiddle);
    auto const program = signedInShell(true);
    program->write("fetch " + sea_ + " --background\n");
    static_cast<void>(program->readLine());
    waitForSpoiltTransfer();
    auto const before = std::chrono::steady_clock::now();
    EXPECT_EQ(program->finish().status, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    EXPECT_THAT(filesInMediaFolder(), SizeIs(0));
}

TEST_F(Fetch, TakesOwnedClipsOnly) {
    std::vector<std::string> const lines =
        signedIn({"fetch 424242", "fetch", "fetch " + sea_ + " --owned", "fetch ../x", "tasks"});
    EXPECT_EQ(errorOf(lines[0]), "clip 424242 is not owned: zq buy 424242 --credits buys it");
    EXPECT_THAT(errorOf(lines[1]), HasSubstr("--owned"));
    EXPECT_THAT(errorOf(lines[2]), HasSubstr("--owned"));
    EXPECT_THAT(errorOf(lines[3]), StartsWith("\"../x\" is no clip's number"));
    EXPECT_EQ(lines[4], R"({"ok":true,"tasks":[]})");
}

TEST_F(Fetch, TakesAllThatIsOwned) {
    std::string const line = signedIn({"fetch --owned"}).at(0);
    EXPECT_EQ(itemOf(parsed(line), "relinked", 0).getString("id").view(), sea_) << line;
}

TEST_F(Fetch, InTheBackgroundIsNothingForACommandOnItsOwn) {
    Finished const finished =
        run({"--json", "--login", "anna", "fetch", sea_, "--background"}, "open sesame\n");
    EXPECT_THAT(finished.out, HasSubstr("use it in zq shell"));
}

TEST_F(Fetch, ShowsABarOnATerminalAndTakesItAway) {
    auto const terminal =
        start({"--login", "anna", "fetch", sea_}, zq_tests::RunningProgram::Around::terminal);
    static_cast<void>(terminal->readThrough("password: "));
    terminal->write("open sesame\n");
    std::string const out = terminal->finish().out;
    EXPECT_THAT(out, HasSubstr("relinked: "));
    EXPECT_THAT(out, testing::Not(HasSubstr("\033[")));
}

} // namespace
