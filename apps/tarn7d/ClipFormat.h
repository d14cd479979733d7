// How a clip's technical data are named on the wire: codec names, the video standard number, rates, sound.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn7d {

struct Rate {
    int numerator = 0; // frames in denominator seconds; 0 is unknown
    int denominator = 1;

    friend bool operator==(Rate const&, Rate const&) = default;
};

// What FFmpeg says of a codec, without FFmpeg's types.
enum class CodecFamily { other, dv, motionJpeg, motionJpegB, h264, prores, png, mpeg2, mpeg4, dnxhd };
enum class CodecProfile { other, high, main, constrainedBaseline, dnxhr };

struct CodecTraits {
    CodecFamily family = CodecFamily::other;
    CodecProfile profile = CodecProfile::other;
    std::uint32_t tag = 0;   // four characters, the first in the lowest byte; 0 is none
    bool fourTwoTwo = false; // 4:2:2 colour sampling
    std::string name;        // FFmpeg's own name, for what no table row names
};

// The "codg" text: the service's name of the codec. A codec that the names do not cover gives its
// four-character code, or, where the file has none, FFmpeg's name.
[[nodiscard]] std::string codecName(CodecTraits const& codec);

struct PictureTraits {
    int width = 0;
    int height = 0;
    bool interlaced = false;
    Rate rate;
};

// The "vs" number:
//   1 720x486 interlaced    2 720x480 interlaced    3 720x576 interlaced
//   4 1920x1080 progressive 5 1280x720 up to 30 frames a second
//   8 1920x1080 interlaced  9 1280x720 above 30 frames a second
//   7 larger than 1920x1080 6 anything else
[[nodiscard]] int videoStandard(PictureTraits const& picture);

// The "ar" text from the shape of the picture as shown: "4:3", "16:9", or the ratio to one as "1.90:1".
[[nodiscard]] std::string aspectText(int width, int height, Rate pixelAspect);

// "fps_real": frames a second with up to five decimals, as "29.97003" or "25"; empty if unknown.
[[nodiscard]] std::string exactRateText(Rate rate);

// "fps": the whole frames a second, cut short, as "29" or "25"; empty if unknown.
[[nodiscard]] std::string coarseRateText(Rate rate);

// The rate for people to read: up to three decimals, as "23.976" or "25"; empty if unknown.
[[nodiscard]] std::string displayRateText(Rate rate);

// "coda": "no snd" for no channels, else as "48 kHz stereo pcm_s16le".
[[nodiscard]] std::string soundText(int channels, int sampleRate, std::string_view codec);

// A price in cents as text without a currency sign: "5" or "19.99".
[[nodiscard]] std::string priceText(std::int64_t cents);

} // namespace tarn7d
