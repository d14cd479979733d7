#include "host/picture/FrameRate.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace {

using Zq::FrameRate;
using Zq::getEquivalentZqFrameRate;

struct Expected {
    std::uint32_t number;
    double framesPerSecond;
    wchar_t const* text;
    bool has1001Factor;
};

constexpr Expected all[] = {
    {1, 24000.0 / 1001, L"23.976", true},
    {2, 24, L"24", false},
    {3, 25, L"25", false},
    {4, 30000.0 / 1001, L"29.97", true},
    {5, 30, L"30", false},
    {6, 48000.0 / 1001, L"47.952", true},
    {7, 48, L"48", false},
    {8, 50, L"50", false},
    {9, 60000.0 / 1001, L"59.94", true},
    {10, 60, L"60", false},
    {11, 12, L"12", false},
    {12, 15, L"15", false},
    {40, 72, L"72", false},
    {41, 120000.0 / 1001, L"119.88", true},
    {42, 120, L"120", false},
    {43, 100, L"100", false},
};

std::string labelOf(Expected const& expected) {
    return "rate number " + std::to_string(expected.number);
}

TEST(FrameRate, EveryRateHasItsNumberItsFigureAndItsText) {
    for (Expected const& expected : all) {
        SCOPED_TRACE(labelOf(expected));
        auto const rate = static_cast<FrameRate>(expected.number);
        EXPECT_DOUBLE_EQ(Zq::getFramesPerSecond(rate), expected.framesPerSecond);
        EXPECT_TRUE(Zq::getDisplayString(rate) == expected.text);
        EXPECT_EQ(Zq::has1001Factor(rate), expected.has1001Factor);
    }
}

TEST(FrameRate, TheExactFigureOfARateMeansThatRate) {
    for (Expected const& expected : all) {
        SCOPED_TRACE(labelOf(expected));
        EXPECT_EQ(getEquivalentZqFrameRate(expected.framesPerSecond),
                  static_cast<FrameRate>(expected.number));
    }
}

TEST(FrameRate, TheDisplayedFigureOfARateMeansThatRate) {
    for (Expected const& expected : all) {
        SCOPED_TRACE(labelOf(expected));
        EXPECT_EQ(getEquivalentZqFrameRate(std::stod(std::wstring(expected.text))),
                  static_cast<FrameRate>(expected.number));
    }
}

TEST(FrameRate, AFigureWithinATenthOfAPercentMeansTheRate) {
    EXPECT_EQ(getEquivalentZqFrameRate(25.02), FrameRate::f25);
    EXPECT_EQ(getEquivalentZqFrameRate(24.98), FrameRate::f25);
    EXPECT_EQ(getEquivalentZqFrameRate(25.025), FrameRate::f25);
    EXPECT_EQ(getEquivalentZqFrameRate(24.975), FrameRate::f25);
    EXPECT_EQ(getEquivalentZqFrameRate(59.9), FrameRate::f59_94);
    EXPECT_EQ(getEquivalentZqFrameRate(100.1), FrameRate::f100);
}

TEST(FrameRate, AFigureFurtherAwayIsUnknown) {
    EXPECT_EQ(getEquivalentZqFrameRate(25.026), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(24.974), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(100.11), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(1), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(49), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(1000), FrameRate::unknown);
}

TEST(FrameRate, BetweenTwoRatesTheNearestIsMeant) {
    EXPECT_EQ(getEquivalentZqFrameRate(23.98), FrameRate::f23_976);
    EXPECT_EQ(getEquivalentZqFrameRate(23.987), FrameRate::f23_976);
    EXPECT_EQ(getEquivalentZqFrameRate(23.989), FrameRate::f24);
    EXPECT_EQ(getEquivalentZqFrameRate(29.98), FrameRate::f29_97);
    EXPECT_EQ(getEquivalentZqFrameRate(29.99), FrameRate::f30);
    EXPECT_EQ(getEquivalentZqFrameRate(47.95), FrameRate::f47_952);
    EXPECT_EQ(getEquivalentZqFrameRate(59.97), FrameRate::f59_94);
    EXPECT_EQ(getEquivalentZqFrameRate(59.98), FrameRate::f60);
}

TEST(FrameRate, AWholeNumberThatIsA1001RateCutShortMeansThatRate) {
    EXPECT_EQ(getEquivalentZqFrameRate(23), FrameRate::f23_976);
    EXPECT_EQ(getEquivalentZqFrameRate(29), FrameRate::f29_97);
    EXPECT_EQ(getEquivalentZqFrameRate(47), FrameRate::f47_952);
    EXPECT_EQ(getEquivalentZqFrameRate(59), FrameRate::f59_94);
    EXPECT_EQ(getEquivalentZqFrameRate(119), FrameRate::f119_88);
}

TEST(FrameRate, AFigureNearACutShortRateIsNotThatRate) {
    EXPECT_EQ(getEquivalentZqFrameRate(29.5), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(29.001), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(22.999), FrameRate::unknown);
}

TEST(FrameRate, WhatIsNoFigureIsUnknown) {
    EXPECT_EQ(getEquivalentZqFrameRate(0), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(-0.0), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(-1), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(-25), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(std::nan("")), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(std::numeric_limits<double>::infinity()), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(-std::numeric_limits<double>::infinity()), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(std::numeric_limits<double>::max()), FrameRate::unknown);
    EXPECT_EQ(getEquivalentZqFrameRate(std::numeric_limits<double>::denorm_min()), FrameRate::unknown);
}

TEST(FrameRate, AnUnknownRateHasNoTextNoFigureAndNoFactor) {
    for (std::uint32_t const number : {0U, 13U, 39U, 44U, 0xffffffffU}) {
        auto const rate = static_cast<FrameRate>(number);
        EXPECT_TRUE(Zq::getDisplayString(rate).isEmpty()) << number;
        EXPECT_EQ(Zq::getFramesPerSecond(rate), 0) << number;
        EXPECT_FALSE(Zq::has1001Factor(rate)) << number;
    }
}

} // namespace
