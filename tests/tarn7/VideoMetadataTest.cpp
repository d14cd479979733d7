#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

using Zq::Image::AspectRatio;
using Zq::Image::ScanMode;

class VideoMetadata : public Tarn7Test {
protected:
    static ShotVideoMetadata metadataOf(std::string const& members, Zq::FrameRate rate = Zq::FrameRate::f25) {
        RemoteAsset asset;
        asset.payload = parsed("{" + members + "}");
        asset.frameRate = rate;
        return Tarn7Resource::getVideoMetadata(asset);
    }
    static int scanOf(std::string const& standard) {
        return static_cast<int>(metadataOf(R"("ox":1,"oy":1,"vs":)" + standard).scanMode);
    }
    static void expectEveryMark(ShotVideoMetadata const& metadata) {
        EXPECT_TRUE(metadata.hasScanAndAspect);
        EXPECT_TRUE(metadata.hasFrameRate);
        EXPECT_TRUE(metadata.hasSize);
        EXPECT_TRUE(metadata.hasRowBytes);
    }
};

TEST_F(VideoMetadata, EveryStandardHasItsScanMode) {
    EXPECT_EQ(scanOf("1"), 2);
    EXPECT_EQ(scanOf("2"), 2);
    EXPECT_EQ(scanOf("3"), 1);
    EXPECT_EQ(scanOf("4"), 3);
    EXPECT_EQ(scanOf("5"), 3);
    EXPECT_EQ(scanOf("6"), 3);
    EXPECT_EQ(scanOf("7"), 3);
    EXPECT_EQ(scanOf("8"), 1);
    EXPECT_EQ(scanOf("9"), 3);
    EXPECT_EQ(scanOf("0"), 3);
    EXPECT_EQ(scanOf("65537"), 2);
    EXPECT_EQ(static_cast<int>(metadataOf("").scanMode), 3);
}

TEST_F(VideoMetadata, OnlyTheExactTextIsFourByThree) {
    EXPECT_EQ(static_cast<int>(metadataOf(R"("ar":"4:3")").aspectRatio), 1);
    for (char const* const other : {R"("ar":"4:3 ")", R"("ar":"16:9")", R"("ar":"")", R"("ar":43)", ""}) {
        EXPECT_EQ(static_cast<int>(metadataOf(other).aspectRatio), 2) << other;
    }
}

TEST_F(VideoMetadata, ASizeOfTheCatalogueGivesItsRecord) {
    ShotVideoMetadata const metadata =
        metadataOf(R"("ox":1920,"oy":1080,"vs":8,"ar":"16:9","codg":"H.264")", Zq::FrameRate::f29_97);
    std::vector<Zq::DigitalVideoFormats::DigitalVideoFormatInfo> matching;
    Zq::DigitalVideoFormats::getMatchingFormats(1920, 1080, true, matching);
    ASSERT_FALSE(matching.empty());
    EXPECT_EQ(metadata.uid, matching.front().uid);
    EXPECT_EQ(static_cast<std::uint32_t>(metadata.dataFormat), 0x34363248U);
    EXPECT_EQ(metadata.frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(metadata.aspectRatio, AspectRatio::sixteenByNine);
    EXPECT_EQ(metadata.scanMode, ScanMode::interlacedUpperFirst);
    EXPECT_FALSE(metadata.anamorphic);
    EXPECT_EQ(metadata.bitDepth, 8);
    EXPECT_EQ(metadata.width, 1920);
    EXPECT_EQ(metadata.height, 1080);
    EXPECT_EQ(metadata.bitsPerPixel, 16);
    expectEveryMark(metadata);
}

TEST_F(VideoMetadata, TheCatalogueIsAskedForEveryFormatOfTheSize) {
    // A size that is in the catalogue only where formats out of delivery count too.
    ShotVideoMetadata const metadata = metadataOf(R"("ox":720,"oy":608)");
    EXPECT_NE(metadata.uid, Zq::Image::FormatUID::none);
}

TEST_F(VideoMetadata, ASizeThatTheCatalogueDoesNotKnowIsFilledInByHand) {
    ShotVideoMetadata const metadata =
        metadataOf(R"("ox":1001,"oy":333,"vs":1,"ar":"4:3","codg":"prores")", Zq::FrameRate::f50);
    EXPECT_EQ(metadata.uid, Zq::Image::FormatUID::none);
    EXPECT_EQ(metadata.width, 1001);
    EXPECT_EQ(metadata.height, 333);
    EXPECT_EQ(static_cast<std::uint32_t>(metadata.dataFormat), 0x68637061U);
    EXPECT_EQ(metadata.bitDepth, 8);
    EXPECT_EQ(metadata.bitsPerPixel, 16);
    EXPECT_EQ(metadata.scanMode, ScanMode::interlacedLowerFirst);
    EXPECT_EQ(metadata.aspectRatio, AspectRatio::fourByThree);
    EXPECT_EQ(metadata.frameRate, Zq::FrameRate::f50);
    EXPECT_EQ(metadata.rowAlignment, 1);
    EXPECT_EQ(metadata.rowBytes, 2002);
    EXPECT_FALSE(metadata.anamorphic);
    expectEveryMark(metadata);
}

TEST_F(VideoMetadata, APlainFormatHasItsOwnBitsAndItsRowIsCutToWholeBytes) {
    EXPECT_EQ(metadataOf(R"("ox":101,"oy":33,"codg":"RGBA")").bitsPerPixel, 32);
    ShotVideoMetadata const packed = metadataOf(R"("ox":101,"oy":33,"codg":"v210")");
    EXPECT_EQ(packed.bitsPerPixel, 22);
    EXPECT_EQ(packed.rowBytes, 277); // 2222 bits
}

TEST_F(VideoMetadata, AMissingSizeIsPassedOnAsMinusOne) {
    ShotVideoMetadata const metadata = metadataOf("");
    EXPECT_EQ(metadata.width, -1);
    EXPECT_EQ(metadata.height, -1);
    EXPECT_EQ(static_cast<std::uint32_t>(metadata.dataFormat), 0xffffffffU);
    EXPECT_EQ(metadata.bitsPerPixel, 16);
    EXPECT_EQ(metadata.rowBytes, -2);
    expectEveryMark(metadata);
    EXPECT_EQ(metadataOf(R"("ox":-1,"oy":1,"codg":"v210")").rowBytes, -2); // -22 bits, toward zero
}

TEST_F(VideoMetadata, AnEnormousWidthWrapsAround) {
    ShotVideoMetadata const metadata = metadataOf(R"("ox":2147483647,"oy":1)");
    EXPECT_EQ(metadata.width, 2147483647);
    EXPECT_EQ(metadata.rowBytes, -2); // 16 times that is -16 in 32 bits
}

TEST_F(VideoMetadata, AnUnknownRateIsKeptAsUnknown) {
    ShotVideoMetadata const metadata = metadataOf(R"("ox":1920,"oy":1080)", Zq::FrameRate::unknown);
    EXPECT_EQ(metadata.frameRate, Zq::FrameRate::unknown);
    EXPECT_TRUE(metadata.hasFrameRate);
}

TEST_F(VideoMetadata, AnAssetWithoutAnItemHasTheDefaultsOfAnEmptyOne) {
    RemoteAsset const asset;
    ShotVideoMetadata const metadata = Tarn7Resource::getVideoMetadata(asset);
    EXPECT_EQ(metadata.width, -1);
    EXPECT_EQ(metadata.scanMode, ScanMode::progressive);
    EXPECT_EQ(metadata.aspectRatio, AspectRatio::sixteenByNine);
}

} // namespace
} // namespace tarn7_tests
