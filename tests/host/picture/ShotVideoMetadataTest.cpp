#include "host/picture/ShotVideoMetadata.h"

#include <limits>

#include <gtest/gtest.h>

namespace {

using Zq::FrameRate;
using Zq::DigitalVideoFormats::DigitalVideoFormatInfo;
using Zq::Image::AspectRatio;
using Zq::Image::Format;
using Zq::Image::formatFromCode;
using Zq::Image::FormatUID;
using Zq::Image::ScanMode;

constexpr DigitalVideoFormatInfo pal{static_cast<FormatUID>(3), "PAL", 720, 576};

ShotVideoMetadata metadataOf(Format format, std::uint16_t depth, DigitalVideoFormatInfo const& info = pal) {
    return {info, format, FrameRate::f25, AspectRatio::fourByThree, false, ScanMode::interlacedUpperFirst,
            depth};
}

TEST(ShotVideoMetadata, TheDefaultRecordHasNothingSet) {
    ShotVideoMetadata const metadata;
    EXPECT_EQ(metadata.uid, FormatUID::none);
    EXPECT_EQ(metadata.dataFormat, Format::unknown);
    EXPECT_FALSE(metadata.hasScanAndAspect);
    EXPECT_FALSE(metadata.hasFrameRate);
    EXPECT_FALSE(metadata.hasSize);
    EXPECT_FALSE(metadata.hasRowBytes);
    EXPECT_EQ(metadata.frameRate, FrameRate::unknown);
}

TEST(ShotVideoMetadata, TheRecordOfACatalogueFormatHasEveryGroupSet) {
    ShotVideoMetadata const metadata = metadataOf(formatFromCode("dvc "), 8);
    EXPECT_EQ(metadata.uid, pal.uid);
    EXPECT_EQ(metadata.dataFormat, formatFromCode("dvc "));
    EXPECT_FALSE(metadata.anamorphic);
    EXPECT_EQ(metadata.scanMode, ScanMode::interlacedUpperFirst);
    EXPECT_EQ(metadata.aspectRatio, AspectRatio::fourByThree);
    EXPECT_TRUE(metadata.hasScanAndAspect);
    EXPECT_EQ(metadata.frameRate, FrameRate::f25);
    EXPECT_TRUE(metadata.hasFrameRate);
    EXPECT_EQ(metadata.width, 720);
    EXPECT_EQ(metadata.height, 576);
    EXPECT_EQ(metadata.bitDepth, 8);
    EXPECT_TRUE(metadata.hasSize);
    EXPECT_EQ(metadata.rowAlignment, 1);
    EXPECT_TRUE(metadata.hasRowBytes);
}

TEST(ShotVideoMetadata, ACompressedFormatCountsSixteenBitsAPixel) {
    ShotVideoMetadata const metadata = metadataOf(formatFromCode("apch"), 8);
    EXPECT_EQ(metadata.bitsPerPixel, 16);
    EXPECT_EQ(metadata.rowBytes, 1440);
    EXPECT_EQ(metadataOf(Format::unknown, 8).bitsPerPixel, 16);
}

TEST(ShotVideoMetadata, APlainFormatCountsItsOwnBitsAtTheDepth) {
    EXPECT_EQ(metadataOf(formatFromCode("BGRA"), 8).bitsPerPixel, 32);
    EXPECT_EQ(metadataOf(formatFromCode("BGRA"), 8).rowBytes, 2880);
    EXPECT_EQ(metadataOf(formatFromCode("BGRA"), 16).rowBytes, 5760);
    EXPECT_EQ(metadataOf(formatFromCode("v210"), 10).rowBytes, 1980);
}

TEST(ShotVideoMetadata, TheRowSizeIsTruncatedTowardZeroAndWrapsIn32Bits) {
    auto const rowBytes = [](Format format, std::int32_t width) {
        return metadataOf(format, 8, {FormatUID::none, "", width, 1}).rowBytes;
    };
    EXPECT_EQ(rowBytes(formatFromCode("NV12"), 3), 4);   // 36 bits
    EXPECT_EQ(rowBytes(formatFromCode("NV12"), -1), -1); // -12 bits
    EXPECT_EQ(rowBytes(Format::unknown, -1), -2);
    EXPECT_EQ(rowBytes(Format::unknown, 0x08000000), std::numeric_limits<std::int32_t>::min() / 8);
    EXPECT_EQ(rowBytes(Format::unknown, 0x10000001), 2);
}

TEST(ShotVideoMetadata, TheDataFormatCanBeSetByItself) {
    ShotVideoMetadata metadata;
    metadata.setDataFormat(formatFromCode("H264"));
    EXPECT_EQ(metadata.dataFormat, formatFromCode("H264"));
    EXPECT_FALSE(metadata.hasSize);
}

TEST(ShotVideoMetadata, PixelsThatAreNotSquareAreRecorded) {
    ShotVideoMetadata const metadata(pal, formatFromCode("dvc "), FrameRate::f25, AspectRatio::sixteenByNine,
                                     true, ScanMode::progressive, 8);
    EXPECT_TRUE(metadata.anamorphic);
    EXPECT_EQ(metadata.aspectRatio, AspectRatio::sixteenByNine);
    EXPECT_EQ(metadata.scanMode, ScanMode::progressive);
}

} // namespace
