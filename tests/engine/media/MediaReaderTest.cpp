#include "host/engine/media/MediaReader.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/engine/media/MediaFixture.h"

namespace {

constexpr double closeEnough_s = 0.0006; // containers round to a thousandth

class MediaReader : public test::MediaFixture {};

class MediaReaderOf : public test::MediaFixture, public testing::WithParamInterface<char const*> {
protected:
    std::vector<test::ReferenceFrame> const reference = test::referenceFrames(test::mediaFootage(GetParam()));
    std::unique_ptr<engine::MediaReader> const reader_ = reader(GetParam());

    void expectFrame(engine::Result<engine::MediaFrame> const& frame, std::size_t number) const {
        ASSERT_TRUE(frame) << frame.error();
        EXPECT_EQ(test::digestOf(frame->picture()), reference[number].digest) << "frame " << number;
        EXPECT_NEAR(frame->position_s(), reference[number].time_s, closeEnough_s) << "frame " << number;
    }
};

TEST_P(MediaReaderOf, FramesComeOneAfterTheOtherAsFFmpegDecodesThem) {
    for (std::size_t i = 0; i < reference.size(); ++i) {
        engine::Result<std::optional<engine::MediaFrame>> const frame = reader_->next();
        ASSERT_TRUE(frame) << frame.error();
        ASSERT_TRUE(*frame) << "frame " << i;
        EXPECT_EQ(test::digestOf((*frame)->picture()), reference[i].digest) << "frame " << i;
        EXPECT_NEAR((*frame)->position_s(), reference[i].time_s, closeEnough_s) << "frame " << i;
    }
    engine::Result<std::optional<engine::MediaFrame>> const behind = reader_->next();
    ASSERT_TRUE(behind) << behind.error();
    EXPECT_FALSE(*behind);
}

TEST_P(MediaReaderOf, EveryTimeGivesTheFrameThatShowsThen) {
    std::size_t const count = reference.size();
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const number = i * 31 % count; // forwards and backwards, near and far
        expectFrame(reader_->seek(reference[number].time_s), number);
        double const until_s = number + 1 < count ? reference[number + 1].time_s : reference[number].time_s;
        expectFrame(reader_->seek((reference[number].time_s + until_s) / 2), number);
    }
}

TEST_P(MediaReaderOf, TheNextFrameBehindASoughtOneFollowsIt) {
    for (std::size_t const number : {reference.size() / 2, std::size_t{0}, reference.size() - 1}) {
        expectFrame(reader_->seek(reference[number].time_s), number);
        engine::Result<std::optional<engine::MediaFrame>> frame = reader_->next();
        ASSERT_TRUE(frame) << frame.error();
        if (number + 1 == reference.size()) {
            EXPECT_FALSE(*frame);
        } else {
            ASSERT_TRUE(*frame);
            expectFrame(std::move(**frame), number + 1);
        }
    }
}

TEST_P(MediaReaderOf, TheLastFrameIsFoundAlsoFromTimesBehindTheEnd) {
    std::size_t const last = reference.size() - 1;
    expectFrame(reader_->last(), last);
    expectFrame(reader_->seek(1e9), last);
    expectFrame(reader_->seek(std::numeric_limits<double>::infinity()), last);
    expectFrame(reader_->seek(reference[last].time_s + 0.01), last);
}

TEST_P(MediaReaderOf, TimesBeforeTheBeginningGiveTheFirstFrame) {
    expectFrame(reader_->seek(-3), 0);
    expectFrame(reader_->seek(std::numeric_limits<double>::quiet_NaN()), 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, MediaReaderOf,
                         testing::Values("front.mp4", "end.mov", "end_sound.mp4", "open_groups.mp4",
                                         "jpeg.mov", "prores.mov", "prores_fields.mov", "h264_fields.mp4",
                                         "dv.mov", "coarse_times.mkv", "late_start.ts", "fragments.mp4",
                                         "jpeg.avi", "fast.mp4", "varying.mp4", "trimmed.mp4",
                                         "one_frame.mov"),
                         [](testing::TestParamInfo<char const*> const& kind) {
                             std::string name = kind.param;
                             std::ranges::replace(name, '.', '_');
                             return name;
                         });

TEST_F(MediaReader, TheFactsTakeNoFrameAway) {
    auto const file = reader("front.mp4");
    ASSERT_TRUE(file->facts());
    engine::Result<std::optional<engine::MediaFrame>> const first = file->next();
    ASSERT_TRUE(first && *first);
    EXPECT_EQ((*first)->position_s(), 0);
    engine::Result<engine::MediaFacts> const facts = file->facts();
    ASSERT_TRUE(facts) << facts.error();
    EXPECT_EQ(facts->frames, 50);
    engine::Result<std::optional<engine::MediaFrame>> const second = file->next();
    ASSERT_TRUE(second && *second);
    EXPECT_NEAR((*second)->position_s(), 0.04, 1e-9);
}

TEST_F(MediaReader, CountingReadsOnFromTheFirstFrame) {
    auto const file = reader("fragments.mp4");
    engine::Result<engine::MediaFacts> const facts = file->facts();
    ASSERT_TRUE(facts) << facts.error();
    EXPECT_EQ(facts->frames, 0);
    engine::Result<std::int64_t> const frames = file->countFrames();
    ASSERT_TRUE(frames) << frames.error();
    EXPECT_EQ(*frames, 50);
    engine::Result<std::optional<engine::MediaFrame>> const first = file->next();
    ASSERT_TRUE(first && *first);
    EXPECT_EQ((*first)->position_s(), 0);
}

TEST_F(MediaReader, AFrameOutlivesItsReader) {
    auto file = reader("front.mp4");
    engine::Result<engine::MediaFrame> const frame = file->seek(1);
    ASSERT_TRUE(frame) << frame.error();
    file.reset();
    EXPECT_EQ(test::digestOf(frame->picture()),
              test::referenceFrames(test::mediaFootage("front.mp4"))[25].digest);
}

// Mean difference of all samples of the picture from those that the ffmpeg program converts.
double differenceFromFFmpeg(test::TemporaryFolder const& folder, std::string const& name,
                            std::string const& matrix, iHostImage const& image) {
    std::filesystem::path const raw = folder.path() / "frame.rgba";
    test::runFFmpeg({"-i", test::mediaFootage(name).string(), "-frames:v", "1", "-vf",
                     "scale=flags=bicubic+accurate_rnd+full_chroma_int:in_color_matrix=" + matrix, "-pix_fmt",
                     "rgba", "-f", "rawvideo", raw.string()});
    std::ifstream in(raw, std::ios::binary);
    std::string const expected{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::size_t const size = std::size_t{image.getWidth()} * image.getHeight() * 4;
    if (expected.size() != size) {
        return 255;
    }
    double sum = 0;
    for (std::size_t i = 0; i < size; ++i) {
        sum += std::abs(image.getPixels()[i] - static_cast<int>(static_cast<unsigned char>(expected[i])));
    }
    return sum / static_cast<double>(size);
}

TEST_F(MediaReader, AFrameBecomesAPictureInItsOwnColours) {
    struct {
        char const* name;
        char const* matrix;
    } const cases[] = {
        {"front.mp4", "bt601"}, {"larger.mp4", "bt709"}, {"jpeg.mov", "bt601"}, {"dv.mov", "bt601"}};
    for (auto const& each : cases) {
        engine::Result<engine::MediaFrame> const frame = reader(each.name)->seek(0);
        ASSERT_TRUE(frame) << frame.error();
        Zq::Ptr<iHostImage> const image = frame->toImage();
        ASSERT_TRUE(image) << each.name;
        EXPECT_EQ(image->getPixels()[3], 255);
        EXPECT_LT(differenceFromFFmpeg(folder, each.name, each.matrix, *image), 0.5) << each.name;
    }
}

TEST_F(MediaReader, SoundAloneHasNoMovingPicture) {
    EXPECT_EQ(engine::MediaReader::open(footage("sound.mp4")).error(), "the file holds no moving picture");
}

TEST_F(MediaReader, AnErrorOfTheFileIsNoEnd) {
    Zq::Ptr<test::WatchedFile> const file(new test::WatchedFile(files.openForRead(footage("larger.mp4"))));
    auto opened = engine::MediaReader::open(Zq::Ptr<iFile>(file));
    ASSERT_TRUE(opened) << opened.error();
    auto const first = (*opened)->next();
    ASSERT_TRUE(first && *first);
    file->failing = true;
    for (int i = 0; i < 200; ++i) {
        auto const frame = (*opened)->next();
        if (!frame) {
            EXPECT_EQ(frame.error(), "the file cannot be read");
            break;
        }
        ASSERT_TRUE(*frame) << "the end was told after " << i << " frames";
    }
    EXPECT_EQ((*opened)->seek(6).error(), "the file cannot be read");
    // The file is well again: so is its reader.
    file->failing = false;
    auto const sought = (*opened)->seek(6);
    ASSERT_TRUE(sought) << sought.error();
    EXPECT_NEAR(sought->position_s(), 6, 1e-6);
}

TEST_F(MediaReader, AnErrorOfTheFileWhileOpeningIsTold) {
    Zq::Ptr<test::WatchedFile> const file(new test::WatchedFile(files.openForRead(footage("end.mov"))));
    file->beforeRead = [&] { file->failing = file->reads > 1; };
    EXPECT_EQ(engine::MediaReader::open(Zq::Ptr<iFile>(file)).error(), "the file cannot be read");
}

TEST_F(MediaReader, ASeekReadsNoMoreThanItsGroupOfFrames) {
    Zq::Ptr<test::WatchedFile> const file(
        new test::WatchedFile(files.openForRead(footage("larger_front.mp4"))));
    auto opened = engine::MediaReader::open(Zq::Ptr<iFile>(file));
    ASSERT_TRUE(opened) << opened.error();
    std::uint64_t const before = file->bytesRead;
    ASSERT_TRUE((*opened)->seek(6));
    // Two groups and the buffers of a few jumps, of a file of more than a hundred.
    EXPECT_LT(file->bytesRead - before, file->getSize() / 5);
}

TEST_F(MediaReader, ACancelledTaskEndsOpening) {
    Zq::Ptr<test::WatchedFile> const file(new test::WatchedFile(files.openForRead(footage("larger.mp4"))));
    file->beforeRead = [&] {
        if (file->reads == 2) {
            task.cancel();
        }
    };
    EXPECT_EQ(engine::MediaReader::open(Zq::Ptr<iFile>(file)).error(), "cancelled");
    EXPECT_LE(file->reads, 3);
}

// The decoder's library passes over a packet that it could not read to its end.
TEST_F(MediaReader, AReadThatFailsOnceIsAFailureAndNeverAnotherPicture) {
    std::vector<test::ReferenceFrame> const reference =
        test::referenceFrames(test::mediaFootage("larger.mp4"));
    Zq::Ptr<test::WatchedFile> const whole(new test::WatchedFile(files.openForRead(footage("larger.mp4"))));
    auto const counted = engine::MediaReader::open(Zq::Ptr<iFile>(whole));
    ASSERT_TRUE(counted) << counted.error();
    int const opening = whole->reads;
    while (*(*counted)->next()) {
    }
    int const step = std::max(1, (whole->reads - opening) / 6);
    for (int failing = opening + 1; failing <= whole->reads; failing += step) {
        Zq::Ptr<test::WatchedFile> const file(
            new test::WatchedFile(files.openForRead(footage("larger.mp4"))));
        file->beforeRead = [&, one = file.get()] { one->failing = one->reads == failing; };
        auto const reader = engine::MediaReader::open(Zq::Ptr<iFile>(file));
        ASSERT_TRUE(reader) << reader.error();
        for (test::ReferenceFrame const& expected : reference) {
            auto const frame = (*reader)->next();
            if (!frame) {
                break;
            }
            ASSERT_TRUE(*frame) << "read " << failing;
            ASSERT_EQ(test::digestOf((*frame)->picture()), expected.digest) << "read " << failing;
        }
        EXPECT_GE(file->reads, failing);
    }
}

TEST_F(MediaReader, ACancelledTaskEndsReading) {
    Zq::Ptr<test::WatchedFile> const file(new test::WatchedFile(files.openForRead(footage("larger.mp4"))));
    auto opened = engine::MediaReader::open(Zq::Ptr<iFile>(file));
    ASSERT_TRUE(opened) << opened.error();
    int const before = file->reads;
    file->beforeRead = [&] {
        if (file->reads == before + 3) {
            task.cancel();
        }
    };
    EXPECT_EQ((*opened)->countFrames().error(), "cancelled");
    EXPECT_LE(file->reads, before + 4);
    EXPECT_EQ((*opened)->last().error(), "cancelled");
    EXPECT_EQ(engine::inspectMedia(footage("larger.mp4")).error(), "cancelled");
}

} // namespace
