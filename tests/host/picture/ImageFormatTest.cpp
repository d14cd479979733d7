#include "host/picture/ImageFormat.h"

#include <gtest/gtest.h>

namespace {

using Zq::Image::Format;
using Zq::Image::formatFromCode;
using Zq::Image::getBitsPerPixel;
using Zq::Image::isCompressedFormat;

TEST(ImageFormat, AFourCharacterCodeHasItsFirstCharacterInTheLowestByte) {
    EXPECT_EQ(static_cast<std::uint32_t>(formatFromCode("dvc ")), 0x20637664U);
    EXPECT_EQ(static_cast<std::uint32_t>(formatFromCode("apch")), 0x68637061U);
    EXPECT_EQ(static_cast<std::uint32_t>(formatFromCode("\xff\xff\xff\xff")),
              static_cast<std::uint32_t>(Format::unknown));
}

TEST(ImageFormat, CodecsAreCompressedAndHaveNoBitsPerPixel) {
    for (Format const format :
         {formatFromCode("dvc "), formatFromCode("mjpa"), formatFromCode("jpeg"), formatFromCode("H264"),
          formatFromCode("avc1"), formatFromCode("apch"), formatFromCode("ap4h"), formatFromCode("png "),
          formatFromCode("MPG2"), formatFromCode("mpg4"), formatFromCode("dv50"), formatFromCode("AVdn")}) {
        EXPECT_TRUE(isCompressedFormat(format)) << static_cast<std::uint32_t>(format);
        EXPECT_EQ(getBitsPerPixel(format, 8), 0) << static_cast<std::uint32_t>(format);
    }
}

TEST(ImageFormat, AnUnknownFormatCountsAsCompressed) {
    EXPECT_TRUE(isCompressedFormat(Format::unknown));
    EXPECT_EQ(getBitsPerPixel(Format::unknown, 8), 0);
    EXPECT_TRUE(isCompressedFormat(formatFromCode("zzzz")));
    EXPECT_TRUE(isCompressedFormat(static_cast<Format>(0)));
}

TEST(ImageFormat, PlainFormatsOfFixedWidthHaveTheirBitsAtAnyDepth) {
    struct {
        Format format;
        std::int32_t bits;
    } const plain[] = {
        {formatFromCode("2vuy"), 16}, {formatFromCode("UYVY"), 16}, {formatFromCode("yuvs"), 16},
        {formatFromCode("v210"), 22}, {formatFromCode("v216"), 32}, {formatFromCode("v408"), 32},
        {formatFromCode("NV12"), 12}, {formatFromCode("24BG"), 24}, {formatFromCode("r210"), 32},
        {formatFromCode("b64a"), 64},
    };
    for (auto const& [format, bits] : plain) {
        EXPECT_FALSE(isCompressedFormat(format)) << static_cast<std::uint32_t>(format);
        EXPECT_EQ(getBitsPerPixel(format, 8), bits) << static_cast<std::uint32_t>(format);
        EXPECT_EQ(getBitsPerPixel(format, 10), bits) << static_cast<std::uint32_t>(format);
    }
}

TEST(ImageFormat, PlainFormatsOfFreeWidthHaveTheirSamplesTimesTheDepth) {
    EXPECT_EQ(getBitsPerPixel(formatFromCode("raw "), 8), 24);
    EXPECT_EQ(getBitsPerPixel(formatFromCode("RGB "), 16), 48);
    EXPECT_EQ(getBitsPerPixel(formatFromCode("BGRA"), 8), 32);
    EXPECT_EQ(getBitsPerPixel(formatFromCode("ARGB"), 16), 64);
    EXPECT_EQ(getBitsPerPixel(formatFromCode("GREY"), 8), 8);
    EXPECT_EQ(getBitsPerPixel(formatFromCode("BGRA"), 0), 0);
    EXPECT_EQ(getBitsPerPixel(formatFromCode("BGRA"), 0xffff), 4 * 0xffff);
}

TEST(ImageFormat, ACodeIsTakenWithItsLetterCase) {
    EXPECT_FALSE(isCompressedFormat(formatFromCode("YUY2")));
    EXPECT_TRUE(isCompressedFormat(formatFromCode("yuy2")));
}

} // namespace
