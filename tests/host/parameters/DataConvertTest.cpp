#include "host/parameters/DataConvert.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

template <class T>
bool reads(wchar_t const* text, T expected) {
    T value{};
    return DataConvert::convert(WideString(text), value) && value == expected;
}

template <class T>
bool refuses(wchar_t const* text, T before) {
    T value = before;
    return !DataConvert::convert(WideString(text), value) && value == before;
}

TEST(DataConvert, ABooleanIsTheWordTrueOrFalse) {
    EXPECT_TRUE(DataConvert::convert(true) == L"true");
    EXPECT_TRUE(DataConvert::convert(false) == L"false");
    EXPECT_TRUE(reads<bool>(L"true", true));
    EXPECT_TRUE(reads<bool>(L"false", false));
}

TEST(DataConvert, ABooleanIsReadFromOneAndZeroToo) {
    EXPECT_TRUE(reads<bool>(L"1", true));
    EXPECT_TRUE(reads<bool>(L"0", false));
}

TEST(DataConvert, ATextThatIsNoBooleanLeavesTheValueAlone) {
    for (wchar_t const* text : {L"", L"TRUE", L"yes", L"2", L"-1", L" true", L"true "}) {
        EXPECT_TRUE(refuses<bool>(text, true));
        EXPECT_TRUE(refuses<bool>(text, false));
    }
}

TEST(DataConvert, ANumberIsDecimalDigits) {
    EXPECT_TRUE(DataConvert::convert(std::int32_t{-1}) == L"-1");
    EXPECT_TRUE(DataConvert::convert(std::uint32_t{4294967295}) == L"4294967295");
    EXPECT_TRUE(reads<std::int32_t>(L"-1", -1));
    EXPECT_TRUE(reads<std::int32_t>(L"0", 0));
    EXPECT_TRUE(reads<std::int32_t>(L"-2147483648", std::numeric_limits<std::int32_t>::min()));
    EXPECT_TRUE(reads<std::int32_t>(L"2147483647", std::numeric_limits<std::int32_t>::max()));
    EXPECT_TRUE(reads<std::uint32_t>(L"4294967295", std::numeric_limits<std::uint32_t>::max()));
}

TEST(DataConvert, ATextThatIsNoNumberLeavesTheValueAlone) {
    for (wchar_t const* text : {L"", L"x", L"1x", L" 1", L"1.5", L"-", L"4294967296", L"9223372036854775807",
                                L"99999999999999999999999"}) {
        EXPECT_TRUE(refuses<std::int32_t>(text, 7));
        EXPECT_TRUE(refuses<std::uint32_t>(text, 7));
    }
    EXPECT_TRUE(refuses<std::int32_t>(L"2147483648", 7));
    EXPECT_TRUE(refuses<std::uint32_t>(L"-1", 7));
}

} // namespace
