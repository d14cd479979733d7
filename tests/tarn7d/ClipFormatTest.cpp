#include "apps/tarn7d/ClipFormat.h"

#include <gtest/gtest.h>

namespace {

using namespace tarn7d;

std::uint32_t tag(char const (&code)[5]) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | static_cast<unsigned char>(code[i]);
    }
    return value;
}

TEST(ClipFormat, CodecsBearTheServicesNames) {
    using enum CodecFamily;
    EXPECT_EQ(codecName({dv, {}, tag("dvc "), false, "dvvideo"}), "dvc");
    EXPECT_EQ(codecName({dv, {}, tag("dv5p"), true, "dvvideo"}), "DV");
    EXPECT_EQ(codecName({dv, {}, 0, false, "dvvideo"}), "dvc");
    EXPECT_EQ(codecName({dv, {}, 0, true, "dvvideo"}), "DV");
    EXPECT_EQ(codecName({motionJpeg, {}, tag("mjpa"), false, "mjpeg"}), "MotionJPEG A");
    EXPECT_EQ(codecName({motionJpegB, {}, tag("mjpb"), false, "mjpegb"}), "MotionJPEG B");
    EXPECT_EQ(codecName({motionJpeg, {}, tag("jpeg"), false, "mjpeg"}), "PhotoJPEG");
    EXPECT_EQ(codecName({h264, CodecProfile::high, tag("avc1"), false, "h264"}), "H.264 (high, avc1)");
    EXPECT_EQ(codecName({h264, CodecProfile::main, tag("avc1"), false, "h264"}), "H.264 (main, avc1)");
    EXPECT_EQ(codecName({h264, CodecProfile::constrainedBaseline, tag("avc1"), false, "h264"}),
              "H.264 (constrained baseline)");
    EXPECT_EQ(codecName({h264, CodecProfile::high, tag("HDMV"), false, "h264"}), "H.264 (high, hdmv)");
    EXPECT_EQ(codecName({h264, CodecProfile::high, 0, false, "h264"}), "H.264");
    EXPECT_EQ(codecName({prores, {}, tag("apch"), false, "prores"}), "Apple ProRes 422 (hq)");
    EXPECT_EQ(codecName({prores, {}, tag("apcn"), false, "prores"}), "Apple ProRes (apcn)");
    EXPECT_EQ(codecName({prores, {}, tag("apcs"), false, "prores"}), "Apple ProRes (apcs)");
    EXPECT_EQ(codecName({prores, {}, tag("ap4h"), false, "prores"}), "Apple ProRes 4444");
    EXPECT_EQ(codecName({mpeg2, CodecProfile::main, 0, false, "mpeg2video"}), "mpeg2video (main)");
    EXPECT_EQ(codecName({mpeg2, {}, 0, true, "mpeg2video"}), "MPEG2");
    EXPECT_EQ(codecName({dnxhd, {}, tag("AVdn"), true, "dnxhd"}), "Avid DNxHD");
}

TEST(ClipFormat, ACodecWithoutANameIsToldByItsFourCharacters) {
    EXPECT_EQ(codecName({CodecFamily::prores, {}, tag("apco"), false, "prores"}), "apco");
    EXPECT_EQ(codecName({CodecFamily::dnxhd, CodecProfile::dnxhr, tag("AVdh"), false, "dnxhd"}), "AVdh");
    EXPECT_EQ(codecName({CodecFamily::other, {}, tag("hvc1"), false, "hevc"}), "hvc1");
    EXPECT_EQ(codecName({CodecFamily::other, {}, 0x01020304, false, "hevc"}), "hevc");
}

TEST(ClipFormat, TheStandardFollowsFromSizeScanAndRate) {
    EXPECT_EQ(videoStandard({720, 486, true, {30000, 1001}}), 1);
    EXPECT_EQ(videoStandard({720, 480, true, {30000, 1001}}), 2);
    EXPECT_EQ(videoStandard({720, 576, true, {25, 1}}), 3);
    EXPECT_EQ(videoStandard({720, 576, false, {25, 1}}), 6);
    EXPECT_EQ(videoStandard({1920, 1080, false, {24, 1}}), 4);
    EXPECT_EQ(videoStandard({1920, 1080, true, {25, 1}}), 8);
    EXPECT_EQ(videoStandard({1280, 720, false, {30, 1}}), 5);
    EXPECT_EQ(videoStandard({1280, 720, false, {50, 1}}), 9);
    EXPECT_EQ(videoStandard({3840, 2160, false, {25, 1}}), 7);
    EXPECT_EQ(videoStandard({640, 360, false, {25, 1}}), 6);
}

TEST(ClipFormat, OnlyFourToThreeIsCalledFourToThree) {
    EXPECT_EQ(aspectText(720, 576, {16, 15}), "4:3");
    EXPECT_EQ(aspectText(720, 486, {}), "4:3");
    EXPECT_EQ(aspectText(720, 480, {8, 9}), "4:3");
    EXPECT_EQ(aspectText(720, 576, {64, 45}), "16:9");
    EXPECT_EQ(aspectText(1920, 1080, {1, 1}), "16:9");
    EXPECT_EQ(aspectText(4096, 2160, {}), "1.90:1");
    EXPECT_EQ(aspectText(0, 0, {}), "");
}

TEST(ClipFormat, RatesAreDecimalTexts) {
    EXPECT_EQ(exactRateText({24000, 1001}), "23.97602");
    EXPECT_EQ(exactRateText({25, 1}), "25");
    EXPECT_EQ(exactRateText({25, 2}), "12.5");
    EXPECT_EQ(exactRateText({}), "");
    EXPECT_EQ(displayRateText({24000, 1001}), "23.976");
    EXPECT_EQ(displayRateText({30000, 1001}), "29.97");
    EXPECT_EQ(displayRateText({}), "");
    EXPECT_EQ(coarseRateText({30000, 1001}), "29");
    EXPECT_EQ(coarseRateText({50, 1}), "50");
    EXPECT_EQ(coarseRateText({}), "");
}

TEST(ClipFormat, SoundAndPriceAreReadable) {
    EXPECT_EQ(soundText(0, 0, ""), "no snd");
    EXPECT_EQ(soundText(2, 48000, "aac"), "48 kHz stereo aac");
    EXPECT_EQ(soundText(1, 44100, "pcm_s16le"), "44.1 kHz mono pcm_s16le");
    EXPECT_EQ(soundText(6, 48000, ""), "48 kHz 6 channels");
    EXPECT_EQ(priceText(500), "5");
    EXPECT_EQ(priceText(1999), "19.99");
    EXPECT_EQ(priceText(1005), "10.05");
    EXPECT_EQ(priceText(0), "0");
}

} // namespace
