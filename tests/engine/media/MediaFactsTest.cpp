#include "host/engine/media/MediaFacts.h"

#include <gmock/gmock.h>

#include "tests/engine/media/MediaFixture.h"

namespace {

using testing::HasSubstr;
using Zq::FrameRate;
using Zq::Image::ScanMode;

class MediaFacts : public test::MediaFixture {
protected:
    static engine::MediaFacts inspect(std::string const& name) {
        engine::Result<engine::MediaFacts> const facts = engine::inspectMedia(footage(name));
        EXPECT_TRUE(facts) << name << ": " << facts.error();
        return facts ? *facts : engine::MediaFacts{};
    }
};

TEST_F(MediaFacts, AnMp4TellsAllOfItsFacts) {
    engine::MediaFacts const facts = inspect("front.mp4");
    EXPECT_EQ(facts.container, "mp4");
    EXPECT_EQ(facts.videoCodec, "h264");
    EXPECT_EQ(facts.audioCodec, "aac");
    EXPECT_EQ(facts.width, 320);
    EXPECT_EQ(facts.height, 240);
    EXPECT_EQ(facts.scanMode, ScanMode::progressive);
    EXPECT_EQ(facts.rate, FrameRate::f25);
    EXPECT_EQ(facts.rateNumerator, 25);
    EXPECT_EQ(facts.rateDenominator, 1);
    EXPECT_EQ(facts.frames, 50);
    EXPECT_NEAR(facts.duration_s, 2, 0.05);
    EXPECT_EQ(facts.audioChannels, 2);
    EXPECT_EQ(facts.size_bytes, std::filesystem::file_size(test::mediaFootage("front.mp4")));
    EXPECT_NEAR(static_cast<double>(facts.bitRate),
                static_cast<double>(facts.size_bytes) * 8 / facts.duration_s, 1);
}

TEST_F(MediaFacts, AnIndexAtTheEndAndNoSoundMakeNoDifference) {
    engine::MediaFacts const facts = inspect("end.mov");
    EXPECT_EQ(facts.container, "mov");
    EXPECT_EQ(facts.audioCodec, "");
    EXPECT_EQ(facts.audioChannels, 0);
    EXPECT_EQ(facts.rate, FrameRate::f29_97);
    EXPECT_EQ(facts.rateNumerator, 30000);
    EXPECT_EQ(facts.rateDenominator, 1001);
    EXPECT_EQ(facts.frames, 60);
}

struct Expected {
    char const* file;
    char const* container;
    char const* codec;
    FrameRate rate;
    std::int64_t frames;
    ScanMode scanMode;
};

TEST_F(MediaFacts, EachKindOfFileTellsItsCodecRateFramesAndFields) {
    Expected const table[] = {
        {"jpeg.mov", "mov", "mjpeg", FrameRate::f25, 50, ScanMode::progressive},
        {"prores.mov", "mov", "prores", FrameRate::f23_976, 24, ScanMode::progressive},
        {"prores_fields.mov", "mov", "prores", FrameRate::f29_97, 15, ScanMode::interlacedLowerFirst},
        {"h264_fields.mp4", "mp4", "h264", FrameRate::f25, 25, ScanMode::interlacedUpperFirst},
        {"dv.mov", "mov", "dvvideo", FrameRate::f29_97, 15, ScanMode::interlacedLowerFirst},
        {"coarse_times.mkv", "matroska", "h264", FrameRate::f23_976, 48, ScanMode::progressive},
        {"late_start.ts", "mpegts", "h264", FrameRate::f25, 50, ScanMode::progressive},
        {"fragments.mp4", "mp4", "h264", FrameRate::f25, 50, ScanMode::progressive},
        {"jpeg.avi", "avi", "mjpeg", FrameRate::f25, 50, ScanMode::progressive},
        {"fast.mp4", "mp4", "h264", FrameRate::f59_94, 60, ScanMode::progressive},
        {"one_frame.mov", "mov", "mjpeg", FrameRate::f25, 1, ScanMode::progressive},
    };
    for (Expected const& expected : table) {
        engine::MediaFacts const facts = inspect(expected.file);
        EXPECT_EQ(facts.container, expected.container) << expected.file;
        EXPECT_EQ(facts.videoCodec, expected.codec) << expected.file;
        EXPECT_EQ(facts.rate, expected.rate) << expected.file;
        EXPECT_EQ(facts.frames, expected.frames) << expected.file;
        EXPECT_EQ(facts.scanMode, expected.scanMode) << expected.file;
    }
}

TEST_F(MediaFacts, ADecodedPictureKnowsItsFieldsBetterThanTheHeader) {
    EXPECT_EQ(inspect("fields_against_header.mp4").scanMode, ScanMode::interlacedLowerFirst);
}

TEST_F(MediaFacts, ARateThatTheHostHasNoNumberForKeepsItsFraction) {
    engine::MediaFacts const facts = inspect("rate29.mp4");
    EXPECT_EQ(facts.rate, FrameRate::unknown);
    EXPECT_EQ(facts.rateNumerator, 29);
    EXPECT_EQ(facts.rateDenominator, 1);
}

TEST_F(MediaFacts, ChannelsOfAllSoundsCount) {
    engine::MediaFacts const facts = inspect("two_sounds.mov");
    EXPECT_EQ(facts.audioChannels, 3);
    EXPECT_EQ(facts.audioCodec, "pcm_s16le");
}

TEST_F(MediaFacts, FramesThatAnEditListHidesDoNotCount) {
    auto const shown = test::referenceFrames(test::mediaFootage("trimmed.mp4"));
    EXPECT_EQ(inspect("trimmed.mp4").frames, static_cast<std::int64_t>(shown.size()));
    ASSERT_LT(shown.size(), 50U);
}

TEST_F(MediaFacts, SoundAloneIsMediaWithoutAPicture) {
    engine::MediaFacts const facts = inspect("sound.mp4");
    EXPECT_EQ(facts.videoCodec, "");
    EXPECT_EQ(facts.audioCodec, "aac");
    EXPECT_EQ(facts.audioChannels, 2);
    EXPECT_EQ(facts.frames, 0);
    EXPECT_EQ(facts.width, 0);
    EXPECT_NEAR(facts.duration_s, 2, 0.05);
}

TEST_F(MediaFacts, AFileThatIsNotThereCannotBeOpened) {
    EXPECT_EQ(engine::inspectMedia(engine::wideText(folder.path() / "none.mov")).error(),
              "the file cannot be opened");
}

TEST_F(MediaFacts, AnEmptyFileIsNoMedia) {
    EXPECT_EQ(engine::inspectMedia(write("empty.mov", "")).error(), "the file is empty");
}

TEST_F(MediaFacts, ATextIsNoMedia) {
    std::string text;
    while (text.size() < 100'000) {
        text += "Not a single frame in this line.\n";
    }
    EXPECT_THAT(engine::inspectMedia(write("text.mov", text)).error(), HasSubstr("no media file"));
    EXPECT_THAT(engine::inspectMedia(write("short.mp4", "x")).error(), HasSubstr("no media file"));
}

TEST_F(MediaFacts, AFileCutShortBeforeItsIndexIsNoMedia) {
    std::string bytes = bytesOf(test::mediaFootage("end.mov"));
    bytes.resize(bytes.size() / 2);
    EXPECT_THAT(engine::inspectMedia(write("cut.mov", bytes)).error(), HasSubstr("cut short"));
}

TEST_F(MediaFacts, AFileCutShortBehindItsIndexHasTheFramesThatAreThere) {
    std::string bytes = bytesOf(test::mediaFootage("front.mp4"));
    bytes.resize(bytes.size() * 3 / 4);
    WideString const path = write("cut.mp4", bytes);
    engine::Result<engine::MediaFacts> const facts = engine::inspectMedia(path);
    ASSERT_TRUE(facts) << facts.error();
    EXPECT_GT(facts->frames, 10);
    EXPECT_LT(facts->frames, 50);

    auto opened = engine::MediaReader::open(path);
    ASSERT_TRUE(opened) << opened.error();
    std::int64_t decoded = 0;
    for (;;) {
        engine::Result<std::optional<engine::MediaFrame>> const frame = (*opened)->next();
        ASSERT_TRUE(frame) << frame.error();
        if (!*frame) {
            break;
        }
        ++decoded;
    }
    EXPECT_EQ(decoded, facts->frames);
    engine::Result<engine::MediaFrame> const last = (*opened)->last();
    ASSERT_TRUE(last) << last.error();
    EXPECT_GT(last->position_s(), 0.3);
}

TEST_F(MediaFacts, AFileOfWhichNoFrameCanBeDecodedIsNoMedia) {
    std::string bytes = bytesOf(test::mediaFootage("front.mp4"));
    std::size_t const data = bytes.rfind("mdat");
    ASSERT_NE(data, std::string::npos);
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(data) + 4, bytes.end(), '\xa5');
    engine::Result<engine::MediaFacts> const facts = engine::inspectMedia(write("noise.mp4", bytes));
    ASSERT_FALSE(facts);
    EXPECT_NE(facts.error(), "");
    EXPECT_EQ(facts.error().find('\n'), std::string::npos);
}

} // namespace
