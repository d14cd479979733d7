// The walk that "zq demo" takes, on the embedded service.

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>

#include "tests/tarn7d/TestFootage.h"
#include "tests/zq/EmbeddedService.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using zq_tests::Finished;
using zq_tests::itemOf;
using zq_tests::parsed;

class Demo : public zq_tests::EmbeddedService {
protected:
    Demo() { EXPECT_EQ(addAccount("editor", "tarn7", "500").status, 0); }

    // The text of the step of that name.
    [[nodiscard]] static std::string step(Zq::Ptr<JSON::Element> const& answer, std::string_view name) {
        Zq::Ptr<JSON::Element> const steps = JSON::orEmpty(answer).getChild("steps");
        for (JSON::ChildMember const& member : JSON::orEmpty(steps).children()) {
            if (member.element->getStringView("step") == name) {
                return std::string(member.element->getStringView("text"));
            }
        }
        return {};
    }
};

TEST_F(Demo, WalksTheWholeRoadAndWalksItAgain) {
    Finished const first = run({"--json", "demo"});
    Zq::Ptr<JSON::Element> const answer = parsed(first.out);
    ASSERT_TRUE(answer) << first.out;
    ASSERT_TRUE(answer->getBool("ok", false)) << first.out;
    EXPECT_EQ(answer->getString("sequence"), "Demo");
    EXPECT_THAT(step(answer, "play the preview"), HasSubstr("h264"));
    EXPECT_THAT(step(answer, "buy"), HasSubstr("bought 2 clips with credits"));
    EXPECT_THAT(step(answer, "fetch"), HasSubstr("2 files"));
    EXPECT_THAT(step(answer, "relinked"), HasSubstr("2 of 2 clips play the full file"));
    EXPECT_GT(answer->getInt("frames", 0), 0);
    EXPECT_EQ(answer->getInt("frames", 0), answer->getInt("renderedFrames", -1));
    EXPECT_TRUE(fs::exists(home() / "demo" / "Demo.mp4"));
    EXPECT_FALSE(fs::exists(home() / "demo" / "Demo.unfinished.mp4"));

    Finished const second = run({"--json", "demo"});
    Zq::Ptr<JSON::Element> const again = parsed(second.out);
    ASSERT_TRUE(again) << second.out;
    EXPECT_TRUE(again->getBool("ok", false)) << second.out;
    EXPECT_EQ(again->getString("sequence"), "Demo 2");
    EXPECT_THAT(step(again, "search"), HasSubstr("everything is owned already"));
    EXPECT_THAT(step(again, "fetch, cancelled half way"), HasSubstr("on this disk already"));
    EXPECT_EQ(again->getInt("frames", 0), again->getInt("renderedFrames", -1));
}

TEST_F(Demo, SaysALineForEachStep) {
    Finished const finished = run({"demo"});
    EXPECT_EQ(finished.status, 0) << finished.out << finished.err;
    EXPECT_THAT(finished.out, testing::StartsWith(" 1 of 12  sign in: signed in as editor\n"));
    EXPECT_THAT(finished.out, HasSubstr("\n12 of 12  render: "));
    EXPECT_EQ(finished.err, "");
}

TEST_F(Demo, EndsWithTheStepThatFails) {
    service_->sendSignal(SIGTERM);
    static_cast<void>(service_->finish());
    Finished const finished = run({"--json", "demo"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_THAT(finished.out, HasSubstr("\"error\":\"sign in: "));
    EXPECT_THAT(finished.out, HasSubstr("\"steps\":[]"));
}

} // namespace
