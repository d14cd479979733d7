// "play": previews that stream from the embedded service.

#include <gmock/gmock.h>
#include <httplib.h>

#include <algorithm>
#include <chrono>
#include <csignal>

#include "host/engine/pictures/PictureDecoder.h"
#include "host/text/Unicode.h"
#include "tests/zq/EmbeddedService.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using zq_tests::errorOf;
using zq_tests::parsed;

class Play : public zq_tests::EmbeddedService {
protected:
    Play() : EmbeddedService({"--fault-desk"}), car_(clip("red car")) {}

    // All answers to requests for a preview's file, whose name is a number, go wrong.
    void spoil(std::string const& kind, std::string const& arguments) {
        httplib::Client desk("127.0.0.1", static_cast<int>(faultPort_));
        desk.set_bearer_token_auth(faultToken_);
        auto const answer = desk.Post("/faults",
                                      R"({"match":{"path":"/0"},"kind":")" + kind +
                                          R"(","count":100,"arguments":)" + arguments + "}",
                                      "application/json");
        ASSERT_TRUE(answer);
        ASSERT_EQ(answer->status, 201) << answer->body;
    }

    // Returns once the service has begun an answer as it was spoilt.
    void waitForSpoiltAnswer() const {
        httplib::Client desk("127.0.0.1", static_cast<int>(faultPort_));
        desk.set_bearer_token_auth(faultToken_);
        auto const patience = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < patience) {
            auto const answer = desk.Get("/faults");
            ASSERT_TRUE(answer);
            if (zq_tests::itemOf(parsed(answer->body), "faults", 0).getInt("met", 0) > 0) {
                return;
            }
        }
        FAIL() << "nobody asked for the preview";
    }

    std::string const car_;
};

TEST_F(Play, TellsWhatThePreviewIsAndWhatItTook) {
    Zq::Ptr<JSON::Element> const answer = parsed(answers({"play " + car_}).at(0));
    ASSERT_TRUE(answer);
    EXPECT_TRUE(answer->getBool("ok", false));
    EXPECT_EQ(answer->getString("id").view(), car_);
    EXPECT_EQ(answer->getString("codec").view(), "h264");
    EXPECT_GT(answer->getInt("width", 0), 0);
    EXPECT_GT(answer->getInt("size", 0), 0);
    EXPECT_EQ(answer->getInt("rate", 0), 25);
    EXPECT_EQ(answer->getInt("frames", 0), 1);
    EXPECT_EQ(answer->getInt("position", -1), 0);
    EXPECT_GT(answer->getInt("requests", 0), 0);
    EXPECT_GT(answer->getInt("bytesReceived", 0), 0);
    EXPECT_GT(answer->getInt("bytesRead", 0), 0);
}

TEST_F(Play, DecodesAsMuchAsIsAskedForAndStopsAtTheEnd) {
    std::vector<std::string> const lines = answers(
        {"play " + car_ + " --at 0.2 --seconds 0.4", "play " + car_ + " --seconds 100", "play " + car_});
    EXPECT_EQ(parsed(lines.at(0))->getInt("frames", 0), 10);
    EXPECT_EQ(parsed(lines.at(1))->getInt("frames", 0), 25);
    // It is all in the store by then.
    EXPECT_EQ(parsed(lines.at(2))->getInt("bytesReceived", -1), 0);
}

TEST_F(Play, WritesTheFrameOfThatTime) {
    std::vector<std::string> files;
    for (std::string const time : {"0", "0.5"}) {
        files.push_back((folder() / ("frame" + time + ".png")).string());
        EXPECT_EQ(errorOf(answers({"play " + car_ + " --at " + time + " --frame " + files.back()}).at(0)),
                  "");
    }
    Zq::Ptr<iHostImage> const first =
        engine::PictureDecoder().decodeFile(fromUTF8(std::string_view(files[0])));
    Zq::Ptr<iHostImage> const later =
        engine::PictureDecoder().decodeFile(fromUTF8(std::string_view(files[1])));
    ASSERT_TRUE(first && later);
    ASSERT_EQ(first->getWidth(), later->getWidth());
    std::size_t const size = std::size_t{first->getWidth()} * first->getHeight() * 4;
    EXPECT_FALSE(std::equal(first->getPixels(), first->getPixels() + size, later->getPixels()));
}

TEST_F(Play, SaysInWordsWhatIsWrong) {
    std::vector<std::string> const lines =
        answers({"play " + car_ + " --at 100", "play 999999", "play " + car_ + " --at -1",
                 "play " + car_ + " --frame " + (folder() / "none" / "x.png").string()});
    EXPECT_THAT(errorOf(lines.at(0)), StartsWith("the preview of clip " + car_ + " ends at 1"));
    EXPECT_EQ(errorOf(lines.at(1)), "the service has no clip 999999");
    EXPECT_EQ(errorOf(lines.at(2)), "play: --at: not a time of 0 seconds or more: -1");
    EXPECT_THAT(errorOf(lines.at(3)), StartsWith("cannot write "));
}

TEST_F(Play, TellsOfAPreviewThatIsNotThere) {
    spoil("status", R"({"status":404})");
    EXPECT_THAT(errorOf(answers({"play " + car_}).at(0)), HasSubstr("the server has no such file"));
}

TEST_F(Play, TellsOfAServiceThatFails) {
    spoil("status", R"({"status":503})");
    EXPECT_THAT(errorOf(answers({"play " + car_}).at(0)), HasSubstr("cannot be reached or refuses"));
}

TEST_F(Play, EndsOnTheFirstInterruptWhileTheServiceIsSilent) {
    auto const program = start({"--json", "shell"});
    program->write("search red car\n");
    static_cast<void>(program->readLine());
    spoil("stall", R"({"bytes":0,"time":60000})");
    program->write("play " + car_ + "\n");
    ASSERT_NO_FATAL_FAILURE(waitForSpoiltAnswer());
    program->sendSignal(SIGINT);
    EXPECT_EQ(errorOf(program->readLine()), "interrupted");
    program->write("quit\n");
    EXPECT_EQ(program->finish().status, 1) << "one command failed";
}

} // namespace
