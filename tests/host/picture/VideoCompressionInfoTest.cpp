#include "host/picture/VideoCompressionInfo.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "host/picture/VideoInterface.h"

namespace {

using Zq::Image::Format;
using Zq::Image::formatFromCode;

ShotVideoMetadata picture(Format format, std::int32_t width, std::int32_t height) {
    ShotVideoMetadata metadata;
    metadata.setDataFormat(format);
    metadata.width = width;
    metadata.height = height;
    return metadata;
}

std::string described(Format format, std::int32_t width, std::int32_t height, std::int64_t bitsPerSecond) {
    VideoCompressionInfo info;
    info.setInputImageFormat(picture(format, width, height));
    info.getCompressionFormat().setBitRate(bitsPerSecond);
    return std::string(info.asString(0).view());
}

std::string nameOf(Format format) {
    return std::string(CompressionFormat(format, 0).codecName().view());
}

std::string rateText(std::int64_t bitsPerSecond) {
    CompressionFormat format;
    format.setBitRate(bitsPerSecond);
    return std::string(format.bitRateText().view());
}

TEST(VideoCompressionInfo, CodecSizeAndRateMakeOneLine) {
    EXPECT_EQ(described(formatFromCode("H264"), 1920, 1080, 8'500'000), "H.264 1920x1080, 8.5 Mbit/s");
    EXPECT_EQ(described(formatFromCode("apch"), 3840, 2160, 700'000'000),
              "ProRes 422 HQ 3840x2160, 700 Mbit/s");
}

TEST(VideoCompressionInfo, WhatIsNotKnownIsLeftOut) {
    Format const avc = formatFromCode("avc1");
    EXPECT_EQ(described(avc, 1920, 1080, 0), "H.264 1920x1080");
    EXPECT_EQ(described(avc, -1, -1, 1'000'000), "H.264, 1 Mbit/s");
    EXPECT_EQ(described(avc, 1920, 0, 0), "H.264");
    EXPECT_EQ(described(Format::unknown, 1920, 1080, 1'000'000), "1920x1080, 1 Mbit/s");
    EXPECT_EQ(described(Format::unknown, 0, 0, 1'000'000), "1 Mbit/s");
    EXPECT_EQ(described(Format::unknown, -1, -1, 0), "");
    EXPECT_EQ(described(static_cast<Format>(0), -1, -1, 0), "");
    EXPECT_TRUE(VideoCompressionInfo().asString(0).isEmpty());
}

TEST(VideoCompressionInfo, AnotherPictureForgetsTheRateOfTheFirst) {
    VideoCompressionInfo info;
    info.setInputImageFormat(picture(formatFromCode("H264"), 640, 480));
    info.getCompressionFormat().setBitRate(5'000'000);
    info.setInputImageFormat(picture(formatFromCode("apcn"), 1280, 720));
    EXPECT_EQ(info.asString(0), "ProRes 422 1280x720");
}

TEST(VideoCompressionInfo, TheCompressionFormatCanBeReplaced) {
    VideoCompressionInfo info;
    info.setInputImageFormat(picture(formatFromCode("H264"), 640, 480));
    info.getCompressionFormat() = CompressionFormat(formatFromCode("jpeg"), 1'500'000.0);
    EXPECT_EQ(info.asString(0), "Photo JPEG 640x480, 1.5 Mbit/s");
    EXPECT_EQ(std::as_const(info).getCompressionFormat().getFormat(), formatFromCode("jpeg"));
}

TEST(CompressionFormat, VariantsOfACodecShareItsName) {
    for (Format const format :
         {formatFromCode("H264"), formatFromCode("avc1"), formatFromCode("K264"), formatFromCode("I264")}) {
        EXPECT_EQ(nameOf(format), "H.264");
    }
    EXPECT_EQ(nameOf(formatFromCode("dvc ")), "DV");
    EXPECT_EQ(nameOf(formatFromCode("png ")), "PNG");
    EXPECT_EQ(nameOf(formatFromCode("MPG2")), "MPEG-2");
    EXPECT_EQ(nameOf(formatFromCode("AVdn")), "DNxHD");
}

TEST(CompressionFormat, ACodeWithoutANameIsReadAsItsCharacters) {
    EXPECT_EQ(nameOf(formatFromCode("v210")), "v210");
    EXPECT_EQ(nameOf(formatFromCode("zz  ")), "zz");
    EXPECT_EQ(nameOf(formatFromCode("h264")), "h264");
    EXPECT_EQ(nameOf(formatFromCode("a b ")), "a b");
}

TEST(CompressionFormat, ACodeThatCannotBeReadIsANumber) {
    EXPECT_EQ(nameOf(static_cast<Format>(0x01020304)), "0x01020304");
    EXPECT_EQ(nameOf(formatFromCode("ab\nc")), "0x630a6261");
    EXPECT_EQ(nameOf(formatFromCode("abc\xe9")), "0xe9636261");
    EXPECT_EQ(nameOf(formatFromCode("    ")), "0x20202020");
    EXPECT_EQ(nameOf(static_cast<Format>(0xfffffffe)), "0xfffffffe");
}

TEST(CompressionFormat, TheUnknownFormatHasNoName) {
    EXPECT_EQ(nameOf(Format::unknown), "");
    EXPECT_EQ(nameOf(static_cast<Format>(0)), "");
    EXPECT_TRUE(CompressionFormat().codecName().isEmpty());
}

TEST(CompressionFormat, ARateIsToldInTheUnitThatFits) {
    EXPECT_EQ(rateText(0), "");
    EXPECT_EQ(rateText(1), "1 bit/s");
    EXPECT_EQ(rateText(999), "999 bit/s");
    EXPECT_EQ(rateText(1'000), "1 kbit/s");
    EXPECT_EQ(rateText(640'499), "640 kbit/s");
    EXPECT_EQ(rateText(640'500), "641 kbit/s");
    EXPECT_EQ(rateText(999'499), "999 kbit/s");
    EXPECT_EQ(rateText(999'500), "1 Mbit/s");
    EXPECT_EQ(rateText(8'449'999), "8.4 Mbit/s");
    EXPECT_EQ(rateText(8'450'000), "8.5 Mbit/s");
    EXPECT_EQ(rateText(9'950'000), "10 Mbit/s");
    EXPECT_EQ(rateText(1'234'567'890), "1234.6 Mbit/s");
    EXPECT_EQ(rateText(std::numeric_limits<std::int64_t>::max()), "9223372036854.8 Mbit/s");
}

TEST(CompressionFormat, ARateBelowNothingIsNotKnown) {
    EXPECT_EQ(rateText(-1), "");
    EXPECT_EQ(rateText(std::numeric_limits<std::int64_t>::min()), "");
    EXPECT_EQ(CompressionFormat(Format::unknown, -5.0).getBitRate(), 0);
    EXPECT_EQ(CompressionFormat(Format::unknown, std::numeric_limits<double>::quiet_NaN()).getBitRate(), 0);
    EXPECT_EQ(CompressionFormat(Format::unknown, 1e300).getBitRate(),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(CompressionFormat(Format::unknown, 2500.9).getBitRate(), 2500);
}

TEST(VideoInterface, OnlyTheProgressiveScanModeIsProgressive) {
    ShotVideoMetadata metadata;
    EXPECT_TRUE(Zq::Image::Video::Interface::isProgressive(metadata));
    metadata.scanMode = Zq::Image::ScanMode::interlacedUpperFirst;
    EXPECT_FALSE(Zq::Image::Video::Interface::isProgressive(metadata));
    metadata.scanMode = Zq::Image::ScanMode::interlacedLowerFirst;
    EXPECT_FALSE(Zq::Image::Video::Interface::isProgressive(metadata));
    metadata.scanMode = Zq::Image::ScanMode::progressive;
    EXPECT_TRUE(Zq::Image::Video::Interface::isProgressive(metadata));
}

} // namespace
