#include "host/picture/DigitalVideoFormats.h"

#include <limits>
#include <set>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using Zq::DigitalVideoFormats::DigitalVideoFormatInfo;
using Zq::DigitalVideoFormats::findByUID;
using Zq::DigitalVideoFormats::getMatchingFormats;
using Zq::Image::FormatUID;

std::vector<DigitalVideoFormatInfo> matching(std::int32_t width, std::int32_t height, bool sizeOnly = true) {
    std::vector<DigitalVideoFormatInfo> formats;
    getMatchingFormats(width, height, sizeOnly, formats);
    return formats;
}

TEST(DigitalVideoFormats, TheUsualSizesAreInTheCatalogue) {
    constexpr std::pair<std::int32_t, std::int32_t> sizes[] = {
        {720, 486},   {720, 480},   {720, 576},   {1280, 720},  {1920, 1080},
        {1440, 1080}, {2048, 1080}, {2048, 1556}, {3840, 2160}, {4096, 2160},
    };
    for (auto const& [width, height] : sizes) {
        auto const formats = matching(width, height);
        ASSERT_EQ(formats.size(), 1U) << width << "x" << height;
        EXPECT_EQ(formats[0].width, width);
        EXPECT_EQ(formats[0].height, height);
        EXPECT_NE(formats[0].uid, FormatUID::none);
        EXPECT_STRNE(formats[0].name, "");
    }
}

TEST(DigitalVideoFormats, AFormatIsFoundAgainByItsIdentity) {
    auto const formats = matching(1920, 1080);
    ASSERT_FALSE(formats.empty());
    DigitalVideoFormatInfo const& found = findByUID(formats[0].uid);
    EXPECT_EQ(found.uid, formats[0].uid);
    EXPECT_EQ(found.width, 1920);
    EXPECT_EQ(found.height, 1080);
    EXPECT_STREQ(found.name, formats[0].name);
    EXPECT_EQ(&found, &findByUID(formats[0].uid));
}

TEST(DigitalVideoFormats, NoTwoFormatsShareAnIdentityANameOrASize) {
    std::set<std::string> names;
    std::set<std::pair<std::int32_t, std::int32_t>> sizes;
    std::size_t count = 0;
    for (std::uint32_t number = 1; number < 1000; ++number) {
        DigitalVideoFormatInfo const& info = findByUID(static_cast<FormatUID>(number));
        if (info.uid == FormatUID::none) {
            continue;
        }
        EXPECT_EQ(static_cast<std::uint32_t>(info.uid), number);
        ++count;
        names.insert(info.name);
        sizes.emplace(info.width, info.height);
        auto const formats = matching(info.width, info.height);
        ASSERT_EQ(formats.size(), 1U) << info.name;
        EXPECT_EQ(formats[0].uid, info.uid);
    }
    EXPECT_GE(count, 10U);
    EXPECT_EQ(names.size(), count);
    EXPECT_EQ(sizes.size(), count);
}

TEST(DigitalVideoFormats, WithoutTheFlagOnlySizesForDeliveryMatch) {
    EXPECT_EQ(matching(1440, 1080, true).size(), 1U);
    EXPECT_TRUE(matching(1440, 1080, false).empty());
    EXPECT_EQ(matching(1920, 1080, false).size(), 1U);
    EXPECT_EQ(matching(720, 486, false).size(), 1U);
}

TEST(DigitalVideoFormats, MatchesAreAddedBehindWhatTheListHolds) {
    std::vector<DigitalVideoFormatInfo> formats;
    getMatchingFormats(720, 576, true, formats);
    getMatchingFormats(3840, 2160, true, formats);
    ASSERT_EQ(formats.size(), 2U);
    EXPECT_EQ(formats[0].height, 576);
    EXPECT_EQ(formats[1].height, 2160);
}

TEST(DigitalVideoFormats, AnOddSizeMatchesNothing) {
    EXPECT_TRUE(matching(-1, -1).empty());
    EXPECT_TRUE(matching(-1920, 1080).empty());
    EXPECT_TRUE(matching(1920, -1).empty());
    EXPECT_TRUE(matching(0, 0).empty());
    EXPECT_TRUE(matching(1080, 1920).empty());
    EXPECT_TRUE(matching(1921, 1080).empty());
    constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
    EXPECT_TRUE(matching(largest, largest).empty());
}

TEST(DigitalVideoFormats, AnUnknownIdentityGivesTheRecordOfNone) {
    for (std::uint32_t const number : {0U, 999U, 0xffffffffU}) {
        DigitalVideoFormatInfo const& info = findByUID(static_cast<FormatUID>(number));
        EXPECT_EQ(info.uid, FormatUID::none);
        EXPECT_EQ(info.width, 0);
        EXPECT_EQ(info.height, 0);
        EXPECT_STREQ(info.name, "");
    }
}

} // namespace
