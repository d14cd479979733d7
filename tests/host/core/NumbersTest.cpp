#include "host/text/Numbers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

#include "tests/host/core/PrintText.h"

namespace {

constexpr auto least32 = std::numeric_limits<std::int32_t>::min();
constexpr auto most32 = std::numeric_limits<std::int32_t>::max();
constexpr auto least64 = std::numeric_limits<std::int64_t>::min();
constexpr auto most64 = std::numeric_limits<std::int64_t>::max();

TEST(Numbers, IntegersAreWrittenAsDecimals) {
    EXPECT_EQ(Zq::WStringFromInteger(0), L"0");
    EXPECT_EQ(Zq::WStringFromInteger(42), L"42");
    EXPECT_EQ(Zq::WStringFromInteger(-42), L"-42");
    EXPECT_EQ(Zq::WStringFromInteger(most64), L"9223372036854775807");
    EXPECT_EQ(Zq::WStringFromInteger(least64), L"-9223372036854775808");
}

TEST(Numbers, A32BitTextIsReadUpToItsLimits) {
    EXPECT_EQ(Zq::IntFromWString(L"2147483647", 7), most32);
    EXPECT_EQ(Zq::IntFromWString(L"-2147483648", 7), least32);
    EXPECT_EQ(Zq::IntFromWString(L"2147483648", 7), 7);
    EXPECT_EQ(Zq::IntFromWString(L"-2147483649", 7), 7);
    EXPECT_EQ(Zq::IntFromWString(L"4294967296", 7), 7);
}

TEST(Numbers, A64BitTextIsReadUpToItsLimits) {
    EXPECT_EQ(Zq::Int64FromWString(L"9223372036854775807", 7), most64);
    EXPECT_EQ(Zq::Int64FromWString(L"-9223372036854775808", 7), least64);
    EXPECT_EQ(Zq::Int64FromWString(L"9223372036854775808", 7), 7);
    EXPECT_EQ(Zq::Int64FromWString(L"-9223372036854775809", 7), 7);
    EXPECT_EQ(Zq::Int64FromWString(L"18446744073709551616", 7), 7);
    EXPECT_EQ(Zq::Int64FromWString(WideString(400, L'9'), 7), 7);
}

TEST(Numbers, SignsAndLeadingZerosAreRead) {
    EXPECT_EQ(Zq::IntFromWString(L"+5", 7), 5);
    EXPECT_EQ(Zq::IntFromWString(L"-0", 7), 0);
    EXPECT_EQ(Zq::IntFromWString(L"000000123", 7), 123);
    EXPECT_EQ(Zq::IntFromWString(L"-00012", 7), -12);
    EXPECT_EQ(Zq::Int64FromWString(WideString(100, L'0') + L"9223372036854775807", 7), most64);
}

TEST(Numbers, WhatIsNoNumberGivesTheDefault) {
    wchar_t const* const texts[] = {L"",    L" ",     L"+",      L"-",   L"+-1", L"--1",
                                    L"1 ",  L" 1",    L"1.0",    L"1e3", L"0x1", L"abc",
                                    L"12a", L"1,000", L"\u0661", L"1\n", L"\t1", L"\uff11"};
    for (wchar_t const* const text : texts) {
        EXPECT_EQ(Zq::IntFromWString(text, 7), 7) << toUTF8(WideString(text)).c_str();
        EXPECT_EQ(Zq::Int64FromWString(text, -7), -7) << toUTF8(WideString(text)).c_str();
    }
    EXPECT_EQ(Zq::IntFromWString(WideString(std::wstring_view(L"1\0", 2)), 7), 7);
}

TEST(Numbers, ADecimalIsReadFromTheStartOfTheText) {
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("29.97"), 29.97);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("29.97 fps"), 29.97);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText(" \t\r\n25"), 25);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("+25"), 25);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("-1.5"), -1.5);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText(".5"), 0.5);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("5."), 5);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("1e2"), 100);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("1e"), 1);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("23,976"), 23);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("0x10"), 0);
}

TEST(Numbers, WhatBeginsWithNoDecimalIsZero) {
    for (char const* const text : {"", " ", "fps", "+", "-", "+-5", "++5", ".", "e5", "nan", "NAN", "inf",
                                   "-inf", "infinity", "1e400", "-1e400", "1e-400"}) {
        EXPECT_EQ(Zq::decimalFromText(text), 0) << text;
    }
}

// Puts a comma for the point and groups for thousands into the locale that C++ streams take.
class CommaPunctuation final : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class Locale : public testing::Test {
protected:
    Locale() {
        // The C library's locale as well, where this system has one with a comma.
        for (char const* const name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"}) {
            if (std::setlocale(LC_ALL, name) != nullptr) {
                break;
            }
        }
    }
    ~Locale() override {
        std::locale::global(before_);
        std::setlocale(LC_ALL, "C");
    }

private:
    std::locale before_ = std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation));
};

TEST_F(Locale, DoesNotChangeHowNumbersAreReadAndWritten) {
    ASSERT_EQ((std::ostringstream() << 1234.5).str(), "1.234,5") << "the locale is in force";
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("29.97"), 29.97);
    EXPECT_DOUBLE_EQ(Zq::decimalFromText("29,97"), 29);
    EXPECT_EQ(Zq::WStringFromInteger(1234567), L"1234567");
    EXPECT_EQ(Zq::IntFromWString(L"1.234", 7), 7);
}

TEST(Numbers, FractionsAreCutTowardZero) {
    EXPECT_EQ(Zq::truncatedTo32Bits(12.9), 12);
    EXPECT_EQ(Zq::truncatedTo32Bits(-12.9), -12);
    EXPECT_EQ(Zq::truncatedTo32Bits(0.999), 0);
    EXPECT_EQ(Zq::truncatedTo32Bits(-0.999), 0);
    EXPECT_EQ(Zq::truncatedTo64Bits(-2.5), -2);
}

TEST(Numbers, ThirtyTwoBitsAreTheLowOnesOfSixtyFour) {
    EXPECT_EQ(Zq::truncatedTo32Bits(2147483647.0), most32);
    EXPECT_EQ(Zq::truncatedTo32Bits(2147483648.0), least32);
    EXPECT_EQ(Zq::truncatedTo32Bits(-2147483648.0), least32);
    EXPECT_EQ(Zq::truncatedTo32Bits(-2147483649.0), most32);
    EXPECT_EQ(Zq::truncatedTo32Bits(4294967295.0), -1);
    EXPECT_EQ(Zq::truncatedTo32Bits(4294967296.0), 0);
    EXPECT_EQ(Zq::truncatedTo32Bits(4294967301.0), 5);
}

TEST(Numbers, WhatDoesNotFitSixtyFourBitsIsClampedFirst) {
    EXPECT_EQ(Zq::truncatedTo32Bits(1e30), -1);
    EXPECT_EQ(Zq::truncatedTo32Bits(-1e30), 0);
    EXPECT_EQ(Zq::truncatedTo64Bits(9223372036854775808.0), most64);
    EXPECT_EQ(Zq::truncatedTo64Bits(9223372036854774784.0), 9223372036854774784);
    EXPECT_EQ(Zq::truncatedTo64Bits(-9223372036854775808.0), least64);
    EXPECT_EQ(Zq::truncatedTo64Bits(-1e19), least64);
    EXPECT_EQ(Zq::truncatedTo64Bits(std::numeric_limits<double>::infinity()), most64);
    EXPECT_EQ(Zq::truncatedTo64Bits(-std::numeric_limits<double>::infinity()), least64);
    EXPECT_EQ(Zq::truncatedTo64Bits(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(Zq::truncatedTo32Bits(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(Numbers, ADoubleBeyondAFloatsRangeIsTheLargestFloat) {
    constexpr float largest = std::numeric_limits<float>::max();
    EXPECT_EQ(Zq::nearestFloat(1e300), largest);
    EXPECT_EQ(Zq::nearestFloat(-1e300), -largest);
    EXPECT_EQ(Zq::nearestFloat(0.5), 0.5F);
    EXPECT_EQ(Zq::nearestFloat(1e-300), 0.0F);
    EXPECT_TRUE(std::isnan(Zq::nearestFloat(std::numeric_limits<double>::quiet_NaN())));
}

} // namespace
