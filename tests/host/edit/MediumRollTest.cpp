#include "host/edit/MediumRoll.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

using Zq::FrameRate;
using Zq::Image::ScanMode;
using enum MediumRollMedium;

constexpr FrameRate knownRates[] = {
    FrameRate::f23_976, FrameRate::f24,     FrameRate::f25,  FrameRate::f29_97,
    FrameRate::f30,     FrameRate::f47_952, FrameRate::f48,  FrameRate::f50,
    FrameRate::f59_94,  FrameRate::f60,     FrameRate::f12,  FrameRate::f15,
    FrameRate::f72,     FrameRate::f119_88, FrameRate::f120, FrameRate::f100,
};

double toEdit(double position_s, FrameRate rate) {
    return mPosn_Xlate(position_s, getRepresentativeSourceMediumfromFrameRate(rate), edit,
                       MPosn_Xlate_Params(rate, rate));
}

TEST(MediumRoll, TheEditsOwnTimeIsNumberTwelve) {
    EXPECT_EQ(static_cast<int>(edit), 12);
}

TEST(MediumRoll, EveryRateHasAMedium) {
    for (FrameRate const rate : knownRates) {
        EXPECT_NE(getRepresentativeSourceMediumfromFrameRate(rate), unknown) << static_cast<int>(rate);
        EXPECT_NE(getRepresentativeSourceMediumfromFrameRate(rate), edit) << static_cast<int>(rate);
    }
}

TEST(MediumRoll, AnUnknownRateHasNone) {
    for (ScanMode const scan : {ScanMode::progressive, ScanMode::interlacedUpperFirst}) {
        EXPECT_EQ(getMediumRollfromInputDetails(scan, FrameRate::unknown), unknown);
        EXPECT_EQ(getMediumRollfromInputDetails(scan, static_cast<FrameRate>(99)), unknown);
    }
    EXPECT_EQ(getRepresentativeSourceMediumfromFrameRate(FrameRate::unknown), unknown);
}

TEST(MediumRoll, TheRepresentativeMediumIsTheProgressiveOne) {
    for (FrameRate const rate : knownRates) {
        EXPECT_EQ(getRepresentativeSourceMediumfromFrameRate(rate),
                  getMediumRollfromInputDetails(ScanMode::progressive, rate))
            << static_cast<int>(rate);
    }
}

TEST(MediumRoll, TheScanModeTellsTwoMediumsOfOneRateApart) {
    struct {
        FrameRate rate;
        MediumRollMedium progressive;
        MediumRollMedium interlaced;
    } const expected[] = {
        {FrameRate::f25, progressive25, interlaced25},    {FrameRate::f50, progressive50, interlaced25},
        {FrameRate::f29_97, progressive30, interlaced30}, {FrameRate::f30, progressive30, interlaced30},
        {FrameRate::f59_94, progressive60, interlaced30}, {FrameRate::f60, progressive60, interlaced30},
    };
    for (auto const& [rate, progressive, interlaced] : expected) {
        SCOPED_TRACE(static_cast<int>(rate));
        EXPECT_EQ(getMediumRollfromInputDetails(ScanMode::progressive, rate), progressive);
        EXPECT_EQ(getMediumRollfromInputDetails(ScanMode::interlacedUpperFirst, rate), interlaced);
        EXPECT_EQ(getMediumRollfromInputDetails(ScanMode::interlacedLowerFirst, rate), interlaced);
    }
}

TEST(MediumRoll, FilmAndFastCamerasHaveNoFields) {
    for (FrameRate const rate : {FrameRate::f23_976, FrameRate::f24, FrameRate::f48, FrameRate::f72,
                                 FrameRate::f100, FrameRate::f119_88, FrameRate::f120, FrameRate::f12}) {
        EXPECT_EQ(getMediumRollfromInputDetails(ScanMode::interlacedUpperFirst, rate),
                  getMediumRollfromInputDetails(ScanMode::progressive, rate))
            << static_cast<int>(rate);
    }
}

TEST(PositionOnTheEdit, EveryWholeFrameOfEveryRateStaysWhereItIs) {
    for (FrameRate const rate : knownRates) {
        double const perSecond = Zq::getFramesPerSecond(rate);
        // A day, in steps that meet every second digit.
        for (std::int64_t frame = 0; static_cast<double>(frame) / perSecond < 86'400;
             frame = frame * 3 / 2 + 1) {
            double const position = static_cast<double>(frame) / perSecond;
            ASSERT_DOUBLE_EQ(toEdit(position, rate), position) << static_cast<int>(rate) << " " << frame;
        }
    }
}

TEST(PositionOnTheEdit, WhatLiesBetweenTwoFramesOfARateSnapsDown) {
    for (FrameRate const rate : knownRates) {
        double const perSecond = Zq::getFramesPerSecond(rate);
        for (std::int64_t const frame : {0, 1, 7, 1000, 107'892}) {
            double const whole = static_cast<double>(frame) / perSecond;
            for (double const part : {0.001, 0.25, 0.5, 0.75, 0.999}) {
                ASSERT_DOUBLE_EQ(toEdit((static_cast<double>(frame) + part) / perSecond, rate), whole)
                    << static_cast<int>(rate) << " " << frame << " " << part;
            }
        }
    }
}

TEST(PositionOnTheEdit, SnappingTwiceIsSnappingOnce) {
    for (FrameRate const rate : knownRates) {
        for (double position = 0.01; position < 10'000; position *= 1.37) {
            double const once = toEdit(position, rate);
            ASSERT_EQ(toEdit(once, rate), once) << static_cast<int>(rate) << " " << position;
            ASSERT_LE(once, position + 1e-6);
            ASSERT_GT(once, position - 1.0 / Zq::getFramesPerSecond(rate));
        }
    }
}

TEST(PositionOnTheEdit, APositionWrittenInMillisecondsMeansItsFrame) {
    // 0.04 s and 0.0333... s do not fit a double; a clip of 12.48 s at 25 has 312 frames, not 311.
    EXPECT_DOUBLE_EQ(toEdit(12.48, FrameRate::f25), 312 / 25.0);
    EXPECT_DOUBLE_EQ(toEdit(1.001, FrameRate::f29_97), 30 * 1001 / 30000.0);
    EXPECT_DOUBLE_EQ(toEdit(8.008, FrameRate::f59_94), 480 * 1001 / 60000.0);
}

TEST(PositionOnTheEdit, BeforeTheBeginningSnapsDownToo) {
    EXPECT_DOUBLE_EQ(toEdit(-1.0, FrameRate::f25), -1.0);
    EXPECT_DOUBLE_EQ(toEdit(-0.01, FrameRate::f25), -0.04);
    EXPECT_DOUBLE_EQ(toEdit(-1.0, FrameRate::f29_97), -30 * 1001 / 30000.0);
}

TEST(PositionOnTheEdit, WithAnUnknownRateItStays) {
    for (double const position : {0.0, 0.013, 12.4801, -3.3}) {
        EXPECT_EQ(toEdit(position, FrameRate::unknown), position);
        EXPECT_EQ(toEdit(position, static_cast<FrameRate>(99)), position);
    }
}

TEST(PositionOnTheEdit, TheTargetRateDecides) {
    EXPECT_DOUBLE_EQ(mPosn_Xlate(0.99, progressive25, edit, {FrameRate::f25, FrameRate::f12}), 11 / 12.0);
    EXPECT_EQ(mPosn_Xlate(0.99, progressive25, edit, {FrameRate::f25, FrameRate::unknown}), 0.99);
}

TEST(PositionOnTheEdit, BetweenOtherMediumsItStays) {
    for (int target = 0; target < 12; ++target) {
        EXPECT_EQ(
            mPosn_Xlate(0.013, edit, static_cast<MediumRollMedium>(target), {FrameRate::f25, FrameRate::f25}),
            0.013)
            << target;
    }
}

TEST(PositionOnTheEdit, APositionWithoutCountableFramesStays) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double largest = std::numeric_limits<double>::max();
    for (double const position : {infinity, -infinity, largest, -largest}) {
        EXPECT_EQ(toEdit(position, FrameRate::f25), position);
    }
    EXPECT_TRUE(std::isnan(toEdit(std::numeric_limits<double>::quiet_NaN(), FrameRate::f25)));
}

} // namespace
