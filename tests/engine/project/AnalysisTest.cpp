#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using testing::IsEmpty;
using enum Zq::FrameRate;

class Analysis : public ProjectTest {
protected:
    bool analyse(Cookie const& clip) {
        EditPtr const edit(project().open(clip));
        return project().analyse(*edit);
    }
    // A small preview of ten seconds.
    void givePreview(Cookie const& clip, Zq::FrameRate rate = f25) {
        engine::MediaFacts preview = facts(rate, 250);
        preview.width = 480;
        preview.height = 270;
        preview.bitRate = 800'000;
        shelf.put(L"Virtual:T7 https://host/p.mov", preview);
        EditPtr(project().open(clip))->setPreviewLocation(L"Virtual:T7 https://host/p.mov");
    }
    void promiseSize(Cookie const& clip) {
        ShotVideoMetadata video;
        video.width = 1920;
        video.height = 1080;
        video.hasSize = true;
        EditPtr(project().open(clip))->setVideoMetadata(video, false);
    }
};

TEST_F(Analysis, OfTheMediaRecordsWhatIsMeasured) {
    Cookie const clip = makeClip(1, L"x");
    promiseSize(clip);
    engine::MediaFacts media = facts(f25, 250);
    media.width = 1280;
    media.height = 720;
    ASSERT_TRUE(project().relink(clip, makeMedia("a.mov", media)));

    ASSERT_TRUE(analyse(clip));

    reopen();
    engine::EditRecord const record = project().edit(clip).value();
    EXPECT_EQ(record.bitRate, 50'000'000);
    EXPECT_EQ(record.video.width, 1280);
    EXPECT_EQ(record.video.height, 720);
    EXPECT_TRUE(record.video.hasSize);
    EXPECT_EQ(record.video.frameRate, f25);
    EXPECT_TRUE(record.video.hasFrameRate);
    EXPECT_TRUE(record.videoMeasured);
}

TEST_F(Analysis, OfAPreviewRecordsItsBitRateAndLeavesThePromiseOfTheFullSize) {
    Cookie const clip = makeClip(1, L"x");
    promiseSize(clip);
    givePreview(clip);

    ASSERT_TRUE(analyse(clip));

    engine::EditRecord const record = project().edit(clip).value();
    EXPECT_EQ(record.bitRate, 800'000);
    EXPECT_EQ(record.video.width, 1920);
    EXPECT_FALSE(record.videoMeasured);
    EXPECT_TRUE(record.temporary) << "looking at an edit does not keep it";
}

TEST_F(Analysis, OfAPreviewFillsInWhatNobodyPromised) {
    Cookie const clip = makeClip(1, L"x", unknown, 0);
    givePreview(clip);
    EXPECT_FALSE(project().place("S", clip, {}, {}));

    ASSERT_TRUE(analyse(clip));

    engine::EditRecord const record = project().edit(clip).value();
    EXPECT_EQ(record.rate, f25);
    EXPECT_EQ(record.durationInFrames(), 250);
    EXPECT_EQ(record.video.width, 480);
    EXPECT_TRUE(record.videoMeasured);
    EXPECT_TRUE(project().place("S", clip, {}, {}));
}

TEST_F(Analysis, OfAClipThatNobodyDescribedTellsAllOfItsSource) {
    Cookie const clip = makeClip(1, L"x", unknown, 0);
    EditPtr(project().open(clip))
        ->addLabel(editLabFrom(0, Zq::Image::ScanMode::progressive, unknown, false), true);
    engine::MediaFacts file = facts(f29_97, 300, 6);
    file.scanMode = Zq::Image::ScanMode::interlacedUpperFirst;
    EditPtr(project().open(clip))->setPreviewLocation(makeMedia("own.mov", file));

    ASSERT_TRUE(analyse(clip));

    engine::EditRecord const record = project().edit(clip).value();
    EXPECT_EQ(record.audioChannels, 6);
    EXPECT_DOUBLE_EQ(record.sourceDuration_s, 10.01);
    EXPECT_EQ(record.sourceMedium, MediumRollMedium::interlaced30);
    EXPECT_FALSE(record.frameBased);
    ASSERT_EQ(record.labels.size(), 1U);
    EXPECT_EQ(record.labels[0].frameRate, f29_97);
    EXPECT_TRUE(record.labels[0].countsIn1001);
    EXPECT_THAT(project().relink(clip, record.previewLocation)->differences, IsEmpty());
}

TEST_F(Analysis, LeavesTheSoundThatSomebodyHasPromised) {
    Cookie const clip = makeClip(1, L"x");
    givePreview(clip);
    engine::MediaFacts silent = facts(f25, 250, 0);
    shelf.put(L"Virtual:T7 https://host/p.mov", silent);
    ASSERT_TRUE(analyse(clip));
    EXPECT_EQ(project().edit(clip).value().audioChannels, 2);
}

TEST_F(Analysis, TheSizeOfAPreviewIsNoPromiseOfThatOfTheMedia) {
    Cookie const clip = makeClip(1, L"x");
    givePreview(clip);
    ASSERT_TRUE(analyse(clip));
    WideString const full = makeMedia("full.mov", facts(f25, 250));

    auto const report = project().relink(clip, full);

    ASSERT_TRUE(report);
    EXPECT_THAT(report->differences, IsEmpty());
    EXPECT_EQ(project().edit(clip).value().video.width, 1920);
    engine::MediaFacts small = facts(f25, 250);
    small.width = 640;
    small.height = 360;
    auto const next = project().relink(clip, makeMedia("small.mov", small));
    EXPECT_EQ(inWords(next->differences), std::vector<std::string>{"size: 1920x1080 -> 640x360"});
}

TEST_F(Analysis, OfWhatNothingOpensChangesNothingAndSaysWhy) {
    Cookie const clip = makeClip(1, L"waves");
    EXPECT_FALSE(analyse(clip));
    EditPtr(project().open(clip))->setPreviewLocation(L"/gone.mov");
    EXPECT_FALSE(analyse(clip));
    EXPECT_EQ(project().edit(clip).value().bitRate, 0);
    EXPECT_EQ(log.count("waves: what it plays cannot be looked at: no media file is named"), 1);
    EXPECT_EQ(log.count("waves: what it plays cannot be looked at: /gone.mov: no decoder opens it"), 1);
}

} // namespace
} // namespace test
