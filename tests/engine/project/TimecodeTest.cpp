#include <limits>

#include <gtest/gtest.h>

#include "host/engine/project/Sequence.h"

namespace engine {
namespace {

using enum Zq::FrameRate;

TEST(Timecode, WholeRatesCountEveryFrame) {
    EXPECT_EQ(timecode(0, f25), "00:00:00:00");
    EXPECT_EQ(timecode(24, f25), "00:00:00:24");
    EXPECT_EQ(timecode(25, f25), "00:00:01:00");
    EXPECT_EQ(timecode(93079, f25), "01:02:03:04");
    EXPECT_EQ(timecode(1800, f30), "00:01:00:00");
    EXPECT_EQ(timecode(2073600, f24), "24:00:00:00");
}

TEST(Timecode, FilmSlowedDownCountsInTwentyFourWithoutDropping) {
    EXPECT_EQ(timecode(1440, f23_976), "00:01:00:00");
    EXPECT_EQ(timecode(47, f47_952), "00:00:00:47");
}

TEST(Timecode, DropFrameAt29_97LeavesTwoNumbersOutEachMinuteButTheTenth) {
    EXPECT_EQ(timecode(1799, f29_97), "00:00:59;29");
    EXPECT_EQ(timecode(1800, f29_97), "00:01:00;02");
    EXPECT_EQ(timecode(3597, f29_97), "00:01:59;29");
    EXPECT_EQ(timecode(3598, f29_97), "00:02:00;02");
    EXPECT_EQ(timecode(17981, f29_97), "00:09:59;29");
    EXPECT_EQ(timecode(17982, f29_97), "00:10:00;00");
    EXPECT_EQ(timecode(19782, f29_97), "00:11:00;02");
    EXPECT_EQ(timecode(107892, f29_97), "01:00:00;00");
}

TEST(Timecode, DropFrameAt59_94LeavesFourNumbersOut) {
    EXPECT_EQ(timecode(3599, f59_94), "00:00:59;59");
    EXPECT_EQ(timecode(3600, f59_94), "00:01:00;04");
    EXPECT_EQ(timecode(35963, f59_94), "00:09:59;59");
    EXPECT_EQ(timecode(35964, f59_94), "00:10:00;00");
    EXPECT_EQ(timecode(215784, f59_94), "01:00:00;00");
}

TEST(Timecode, DropFrameNeverWritesANumberTwiceAndNeverALeftOutOne) {
    std::string before;
    for (std::int64_t frame = 0; frame < 35964; ++frame) {
        std::string const text = timecode(frame, f29_97);
        ASSERT_LT(before, text);
        bool const isLeftOut = text.ends_with(":00;00") || text.ends_with(":00;01") ? text[4] != '0' : false;
        ASSERT_FALSE(isLeftOut) << text;
        before = text;
    }
}

TEST(Timecode, FastRatesHaveAsManyDigitsAsTheyNeed) {
    EXPECT_EQ(timecode(99, f100), "00:00:00:99");
    EXPECT_EQ(timecode(119, f120), "00:00:00:119");
    EXPECT_EQ(timecode(121, f119_88), "00:00:01:001");
}

TEST(Timecode, TheUnknownRateCountsFramesAlone) {
    EXPECT_EQ(timecode(1234, unknown), "1234");
    EXPECT_EQ(timecode(12, static_cast<Zq::FrameRate>(77)), "12");
}

TEST(Timecode, FramesBeforeTheStartHaveASign) {
    EXPECT_EQ(timecode(-26, f25), "-00:00:01:01");
    EXPECT_EQ(timecode(std::numeric_limits<std::int64_t>::min(), f25)[0], '-');
}

TEST(Timecode, AnAbsurdFrameStillHasOne) {
    EXPECT_TRUE(timecode(std::numeric_limits<std::int64_t>::max(), f29_97).find(';') != std::string::npos);
}

} // namespace
} // namespace engine
