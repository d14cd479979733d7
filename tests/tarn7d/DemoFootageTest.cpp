#include "apps/tarn7d/DemoFootage.h"

#include <algorithm>
#include <fstream>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/tarn7d/MediaProbe.h"
#include "apps/tarn7d/SideFile.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using namespace tarn7d;

constexpr DemoClip small[] = {
    {"one.mov", "One \"quoted\" \\ title", "first test", 599, DemoScene::chart, "", 160, 120, "25", 10,
     DemoScan::progressive, "-c:v mpeg4", ""},
    {"two.mov", "二", "second test", 1000, DemoScene::gradient, "hue=h=90", 160, 90, "30000/1001", 15,
     DemoScan::progressive, "-c:v mjpeg -pix_fmt yuvj420p", "sine=f=220"},
};

class DemoFootage : public testing::Test {
protected:
    test::TemporaryFolder folder_;
};

TEST_F(DemoFootage, ClipsAreMadeAsTheTableSaysWithTheirSideFiles) {
    EXPECT_EQ(makeDemoFootage(folder_.path(), {}, small), DemoResult::complete);
    auto const one = probeMedia(folder_.path() / "one.mov");
    auto const two = probeMedia(folder_.path() / "two.mov");
    ASSERT_TRUE(one && two);
    EXPECT_EQ(one->duration_ms, 400);
    EXPECT_EQ(one->sound, "no snd");
    EXPECT_EQ(two->rate, (Rate{30000, 1001}));
    EXPECT_NE(two->sound, "no snd");
    ClipDescription const description = describeClip(folder_.path(), "one.mov", 120);
    EXPECT_EQ(description.title, "One \"quoted\" \\ title");
    EXPECT_EQ(description.keywords, "first test");
    EXPECT_EQ(description.price_cents, 599);
}

TEST_F(DemoFootage, WhatIsThereStaysUntouchedAndWhatIsMissingIsMade) {
    std::ofstream(folder_.path() / "one.mov") << "mine";
    EXPECT_EQ(makeDemoFootage(folder_.path(), {}, small), DemoResult::complete);
    EXPECT_EQ(fs::file_size(folder_.path() / "one.mov"), 4U);
    EXPECT_TRUE(probeMedia(folder_.path() / "two.mov"));
}

TEST_F(DemoFootage, AStoppedCallLeavesNoHalfClip) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(makeDemoFootage(folder_.path(), stop.get_token(), small), DemoResult::stopped);
    EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST_F(DemoFootage, AClipThatCannotBeMadeIsToldAndLeavesNothing) {
    DemoClip broken = small[0];
    broken.encoding = "-c:v no-such-codec";
    EXPECT_EQ(makeDemoFootage(folder_.path(), {}, std::span(&broken, 1)), DemoResult::failed);
    EXPECT_TRUE(fs::is_empty(folder_.path()));
}

TEST(DemoTable, TheLibraryIsVaried) {
    auto const clips = demoClips();
    auto const count = [clips](auto const& condition) {
        return std::count_if(clips.begin(), clips.end(), condition);
    };
    EXPECT_GE(clips.size(), 30U);
    std::set<std::string_view> files;
    std::set<std::string_view> rates;
    for (DemoClip const& clip : clips) {
        EXPECT_TRUE(files.insert(clip.file).second) << clip.file;
        rates.insert(clip.rate);
    }
    EXPECT_THAT(rates, testing::IsSupersetOf(
                           {"24000/1001", "24", "25", "30000/1001", "30", "50", "60000/1001", "60"}));
    EXPECT_GE(
        count([](DemoClip const& clip) { return clip.keywords.find("sunset") != std::string_view::npos; }),
        5);
    for (int const price : {500, 1000, 2000, 5000, 10000}) {
        EXPECT_GT(count([price](DemoClip const& clip) { return clip.price_cents <= price; }), 0);
        EXPECT_GT(count([price](DemoClip const& clip) { return clip.price_cents > price; }), 0);
    }
    for (int const height : {486, 576, 720, 1080, 2160}) {
        EXPECT_GT(count([height](DemoClip const& clip) { return clip.height == height; }), 0) << height;
    }
}

} // namespace
