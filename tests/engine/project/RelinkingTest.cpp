#include <filesystem>

#include <sys/stat.h>

#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using engine::RelinkReport;
using testing::ElementsAre;
using testing::IsEmpty;
using enum Zq::FrameRate;

class Relinking : public ProjectTest {
protected:
    // A clip that promises ten seconds of 1920x1080 at 25 frames a second with two channels.
    Cookie makePromise(std::uint8_t number = 1) {
        Cookie const cookie = makeClip(number, L"waves");
        EditPtr const edit(project().open(cookie));
        ShotVideoMetadata video;
        video.width = 1920;
        video.height = 1080;
        video.hasSize = true;
        edit->setVideoMetadata(video, false);
        edit->setPreviewLocation(L"Virtual:T7 https://host/p.mov");
        return cookie;
    }
    std::vector<std::string> differencesFrom(engine::MediaFacts const& media) {
        Cookie const clip = makePromise(next_);
        WideString const path = makeMedia(("file" + std::to_string(next_++) + ".mov").c_str(), media);
        auto const report = project().relink(clip, path);
        EXPECT_TRUE(report) << report.error();
        EXPECT_EQ(inWords(project().edit(clip).value().differences), inWords(report->differences));
        return inWords(report->differences);
    }

private:
    std::uint8_t next_ = 1;
};

TEST_F(Relinking, HasTheEditPlayTheFileAndKeepsIt) {
    Cookie const clip = makePromise();
    WideString const path = makeMedia("full.mov", facts(f25, 250));

    auto const report = project().relink(clip, path);

    ASSERT_TRUE(report) << report.error();
    EXPECT_THAT(report->differences, IsEmpty());
    EXPECT_THAT(report->cutShort, IsEmpty());
    EXPECT_EQ(report->facts.videoCodec, "prores");
    reopen();
    engine::EditRecord const record = project().edit(clip).value();
    EXPECT_EQ(record.mediaLocation, path);
    EXPECT_EQ(record.bitRate, 50'000'000);
    EXPECT_EQ(record.previewLocation, L"Virtual:T7 https://host/p.mov");
    EXPECT_FALSE(record.temporary);
    EXPECT_EQ(log.count("waves plays"), 1);
}

TEST_F(Relinking, NeverTouchesAPlacement) {
    Cookie const clip = makePromise();
    ASSERT_TRUE(project().place("S", clip, 2.0, 9.0));
    engine::Placement const before = project().sequence("S").value().placements[0];

    ASSERT_TRUE(project().relink(clip, makeMedia("other.mov", facts(f50, 100))));

    engine::Sequence const after = project().sequence("S").value();
    ASSERT_EQ(after.placements.size(), 1U);
    EXPECT_EQ(after.rate, f25);
    EXPECT_EQ(after.placements[0].number, before.number);
    EXPECT_EQ(after.placements[0].in, before.in);
    EXPECT_EQ(after.placements[0].out, before.out);
    EXPECT_EQ(after.placements[0].start, before.start);
    EXPECT_EQ(after.placements[0].length, before.length);
}

TEST_F(Relinking, TellsEveryDifferenceAndKeepsItWithTheEdit) {
    Cookie const clip = makePromise();
    engine::MediaFacts media = facts(f29_97, 360, 0);
    media.width = 1280;
    media.height = 720;
    auto const report = project().relink(clip, makeMedia("other.mov", media));

    ASSERT_TRUE(report);
    std::vector<std::string> const expected{"rate: 25 -> 29.97", "length: 10.00 s -> 12.01 s",
                                            "size: 1920x1080 -> 1280x720", "sound: 2 channels -> no sound"};
    EXPECT_EQ(inWords(report->differences), expected);
    reopen();
    EXPECT_EQ(inWords(project().edit(clip).value().differences), expected);
    EXPECT_EQ(log.count("waves: the rate of the file is 29.97, promised was 25"), 1);
    EXPECT_EQ(log.count("waves: the length of the file is 12.01 s, promised was 10.00 s"), 1);
    EXPECT_EQ(log.count("waves: the size of the file is 1280x720, promised was 1920x1080"), 1);
    EXPECT_EQ(log.count("waves: the sound of the file is no sound, promised was 2 channels"), 1);
    EXPECT_EQ(log.lines().size(), 5U);
}

TEST_F(Relinking, ALengthMayDifferByOneFrame) {
    EXPECT_THAT(differencesFrom(facts(f25, 249)), IsEmpty());
    EXPECT_THAT(differencesFrom(facts(f25, 251)), IsEmpty());
    EXPECT_THAT(differencesFrom(facts(f25, 248)), ElementsAre("length: 10.00 s -> 9.92 s"));
    EXPECT_THAT(differencesFrom(facts(f25, 252)), ElementsAre("length: 10.00 s -> 10.08 s"));
}

TEST_F(Relinking, TheLengthIsThatOfThePictureNotOfALongerSound) {
    engine::MediaFacts media = facts(f25, 250);
    media.duration_s = 14;
    EXPECT_THAT(differencesFrom(media), IsEmpty());
    media.frames = 0;
    EXPECT_THAT(differencesFrom(media), ElementsAre("length: 10.00 s -> 14.00 s"));
}

TEST_F(Relinking, TheNumberOfChannelsCounts) {
    EXPECT_THAT(differencesFrom(facts(f25, 250, 1)), ElementsAre("sound: 2 channels -> 1 channel"));
    EXPECT_THAT(differencesFrom(facts(f25, 250, 8)), ElementsAre("sound: 2 channels -> 8 channels"));
}

TEST_F(Relinking, ARateThatTheHostHasNoNumberForIsTold) {
    engine::MediaFacts media = facts(f25, 250);
    media.rate = unknown;
    media.rateNumerator = 25;
    media.rateDenominator = 2;
    media.frames = 125;
    EXPECT_THAT(differencesFrom(media), ElementsAre("rate: 25 -> 12.5"));
    media.rateNumerator = 0;
    media.duration_s = 10;
    EXPECT_THAT(differencesFrom(media), ElementsAre("rate: 25 -> unknown"));
}

TEST_F(Relinking, AFileOfSoundAloneHasNoPictureForAClipThatPromisesOne) {
    engine::MediaFacts sound;
    sound.audioCodec = "pcm_s16le";
    sound.audioChannels = 2;
    sound.duration_s = 10;
    EXPECT_THAT(differencesFrom(sound), ElementsAre("size: 1920x1080 -> no picture"));

    EditPtr const clip(project().makeNewClip(0, 2, 10, f25, cookieOf(99)));
    auto const report = project().relink(cookieOf(99), makeMedia("sound.wav", sound));
    ASSERT_TRUE(report);
    EXPECT_THAT(report->differences, IsEmpty());
}

TEST_F(Relinking, WhatNobodyPromisedIsNoDifference) {
    Cookie const clip = makeClip(1, L"bare", unknown, 0);
    auto const report = project().relink(clip, makeMedia("full.mov", facts(f24, 240)));
    ASSERT_TRUE(report);
    EXPECT_THAT(report->differences, IsEmpty());
}

TEST_F(Relinking, APieceBeyondTheEndOfTheFileIsCutShort) {
    Cookie const clip = makePromise();
    ASSERT_TRUE(project().place("A", clip, 0.0, 5.0));
    std::int64_t const late = project().place("A", clip, 6.0, 8.04)->number;
    std::int64_t const whole = project().place("B", clip, {}, {})->number;
    ASSERT_TRUE(project().place("B", clip, 7.0, 8.0));

    auto const report = project().relink(clip, makeMedia("short.mov", facts(f25, 200)));
    ASSERT_TRUE(report);
    EXPECT_THAT(report->cutShort, ElementsAre(late, whole));

    auto const other = project().checkRelink(clip, makeMedia("short50.mov", facts(f50, 400)));
    ASSERT_TRUE(other);
    EXPECT_THAT(other->cutShort, ElementsAre(late, whole));
}

TEST_F(Relinking, AFileThatNoDecoderOpensIsRefusedAndChangesNothing) {
    Cookie const clip = makePromise();
    WideString const good = makeMedia("good.mov", facts(f25, 250));
    ASSERT_TRUE(project().relink(clip, good));
    WideString const bad = makeFile("bad.mov");

    auto const report = project().relink(clip, bad);

    ASSERT_FALSE(report);
    EXPECT_EQ(report.error(), engine::localPath(bad).native() + ": no decoder opens it");
    EXPECT_EQ(project().checkRelink(clip, bad).error(), report.error());
    EXPECT_EQ(mediaOf(clip), good);
    EXPECT_TRUE(std::filesystem::exists(engine::localPath(bad)));
    EXPECT_EQ(*project().undo(), "relinking \"waves\"");
    EXPECT_FALSE(project().undo());
}

TEST_F(Relinking, ATemporaryEditStaysSoWhenItsFileIsRefused) {
    Cookie const clip = makePromise();
    ASSERT_FALSE(project().relink(clip, makeFile("bad.mov")));
    EXPECT_TRUE(project().edit(clip).value().temporary);
    EXPECT_THAT(project().edits(), IsEmpty());
}

TEST_F(Relinking, NoEditAndNoPathAreRefused) {
    EXPECT_EQ(project().relink(cookieOf(9), L"/x").error(),
              "the project has no edit " + engine::cookieText(cookieOf(9)));
    EXPECT_EQ(shelf.looks(), 0);
    EXPECT_EQ(project().relink(makePromise(), L"").error(), "no media file is named");
    EXPECT_FALSE(project().checkRelink(cookieOf(9), makeMedia("a.mov", facts(f25, 1))));
}

TEST_F(Relinking, AnExceptionOfTheDecoderIsARefusal) {
    closeProject();
    auto opened = engine::Project::open(file(), [](WideString const&) -> engine::Result<engine::MediaFacts> {
        throw std::runtime_error("out of frames");
    });
    ASSERT_TRUE(opened);
    EditPtr const edit((*opened)->makeNewClip(1, 2, 10, f25, cookieOf(1)));
    EXPECT_EQ((*opened)->relink(cookieOf(1), L"/x.mov").error(), "/x.mov: out of frames");
}

TEST_F(Relinking, ASecondTimeToTheSameFileSucceedsAndIsNoStep) {
    Cookie const clip = makePromise();
    WideString const path = makeMedia("full.mov", facts(f25, 250));
    ASSERT_TRUE(project().relink(clip, path));
    shelf.put(path, facts(f25, 200));

    auto const again = project().relink(clip, path);

    ASSERT_TRUE(again);
    EXPECT_THAT(inWords(project().edit(clip).value().differences), ElementsAre("length: 10.00 s -> 8.00 s"));
    EXPECT_EQ(*project().undo(), "relinking \"waves\"");
    EXPECT_TRUE(mediaOf(clip).isEmpty());
    EXPECT_FALSE(project().undo());
}

TEST_F(Relinking, CheckingTellsTheSameAndChangesNothing) {
    Cookie const clip = makePromise();
    WideString const path = makeMedia("full.mov", facts(f25, 200, 1));

    auto const check = project().checkRelink(clip, path);

    ASSERT_TRUE(check);
    EXPECT_THAT(inWords(check->differences),
                ElementsAre("length: 10.00 s -> 8.00 s", "sound: 2 channels -> 1 channel"));
    EXPECT_TRUE(mediaOf(clip).isEmpty());
    EXPECT_TRUE(project().edit(clip).value().temporary);
    EXPECT_THAT(project().edit(clip).value().differences, IsEmpty());
    EXPECT_FALSE(project().lastRelink(clip));
    EXPECT_FALSE(project().undo());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Relinking, TheLastOutcomeIsKeptAndCheckingLeavesIt) {
    Cookie const clip = makePromise();
    EXPECT_FALSE(project().lastRelink(clip));
    ASSERT_FALSE(project().relink(clip, makeFile("bad.mov")));
    ASSERT_TRUE(project().lastRelink(clip));
    EXPECT_THAT(project().lastRelink(clip)->error(), testing::EndsWith("bad.mov: no decoder opens it"));

    ASSERT_TRUE(project().relink(clip, makeMedia("good.mov", facts(f25, 200))));
    ASSERT_TRUE(*project().lastRelink(clip));
    EXPECT_EQ((*project().lastRelink(clip))->differences.size(), 1U);

    ASSERT_FALSE(project().checkRelink(clip, L"/nothing"));
    EXPECT_TRUE(*project().lastRelink(clip));
}

TEST_F(Relinking, AVirtualPathNeedsNoFileOfTheDisk) {
    Cookie const clip = makePromise();
    WideString const path(L"Virtual:T7 https://host/full.mov");
    shelf.put(path, facts(f25, 250));
    ASSERT_TRUE(project().relink(clip, path));
    EXPECT_EQ(mediaOf(clip), path);
}

TEST_F(Relinking, AFileSystemThatIsNotWrittenHasNothingToPutOnDisk) {
    Cookie const clip = makeClip(1, L"x");
    WideString const path = L"/proc/self/status"; // a regular file that cannot be synced
    shelf.put(path, facts(f25, 250));
    engine::Result<engine::RelinkReport> const report = project().relink(clip, path);
    EXPECT_TRUE(report) << report.error();
    EXPECT_EQ(mediaOf(clip), path);
}

TEST_F(Relinking, AFileThatCannotBeReadIsNotRecorded) {
    if (::geteuid() == 0) {
        // The superuser reads everything: take a file whose way is a loop instead.
        std::filesystem::create_symlink(folder.path() / "loop.mov", folder.path() / "loop.mov");
    } else {
        (void)makeFile("loop.mov");
        ::chmod((folder.path() / "loop.mov").c_str(), 0);
    }
    WideString const path = engine::wideText(folder.path() / "loop.mov");
    shelf.put(path, facts(f25, 250));
    Cookie const clip = makePromise();
    auto const report = project().relink(clip, path);
    ASSERT_FALSE(report);
    EXPECT_THAT(report.error(), testing::StartsWith("the media file is not safely on disk"));
    EXPECT_TRUE(mediaOf(clip).isEmpty());
}

TEST_F(Relinking, ANameWithLineBreaksIsOneLineOfTheLogAndOneOfWords) {
    Cookie const clip = makeClip(1, L"a\nb\x1b[31m");
    ASSERT_TRUE(project().relink(clip, makeMedia("x.mov", facts(f25, 250))));
    for (std::string const& line : log.lines()) {
        EXPECT_EQ(line.find('\n'), std::string::npos);
    }
    EXPECT_EQ(*project().undo(), "relinking \"a b [31m\"");
}

} // namespace
} // namespace test
