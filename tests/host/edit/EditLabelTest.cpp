#include "host/edit/EditLabel.h"

#include <gtest/gtest.h>

namespace {

TEST(EditLabel, ItIsMadeOfWhatItIsGivenAndHasNoSourceYet) {
    EditLabel const label =
        editLabFrom(12, Zq::Image::ScanMode::interlacedUpperFirst, Zq::FrameRate::f29_97, true);
    EXPECT_EQ(label.position, 12);
    EXPECT_EQ(static_cast<int>(label.scanMode), 1);
    EXPECT_EQ(label.frameRate, Zq::FrameRate::f29_97);
    EXPECT_TRUE(label.countsIn1001);
    EXPECT_EQ(label.sourceOffset, -1);
}

TEST(EditLabel, TwoAreTheSameOnlyInEveryMember) {
    EditLabel const label = editLabFrom(0, Zq::Image::ScanMode::progressive, Zq::FrameRate::f25, false);
    EXPECT_EQ(label, editLabFrom(0, Zq::Image::ScanMode::progressive, Zq::FrameRate::f25, false));
    EditLabel other = label;
    other.sourceOffset = 0;
    EXPECT_NE(label, other);
    EXPECT_NE(label, editLabFrom(1, Zq::Image::ScanMode::progressive, Zq::FrameRate::f25, false));
    EXPECT_NE(label, editLabFrom(0, Zq::Image::ScanMode::interlacedLowerFirst, Zq::FrameRate::f25, false));
    EXPECT_NE(label, editLabFrom(0, Zq::Image::ScanMode::progressive, Zq::FrameRate::f24, false));
    EXPECT_NE(label, editLabFrom(0, Zq::Image::ScanMode::progressive, Zq::FrameRate::f25, true));
}

} // namespace
