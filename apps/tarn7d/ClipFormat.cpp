#include "apps/tarn7d/ClipFormat.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace tarn7d {

namespace {

constexpr std::uint32_t fourCC(char const (&code)[5]) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | static_cast<unsigned char>(code[i]);
    }
    return value;
}

// A row holds for its family when its tag and its profile, where it has them, are the codec's. The first row
// that holds names the codec.
struct CodecRow {
    CodecFamily family;
    std::uint32_t tag;    // 0: any
    CodecProfile profile; // other: any
    std::string_view name;
};

constexpr CodecRow codecRows[] = {
    {CodecFamily::dv, fourCC("dv5p"), CodecProfile::other, "DV"},
    {CodecFamily::dv, fourCC("dv5n"), CodecProfile::other, "DV"},
    {CodecFamily::dv, fourCC("dv50"), CodecProfile::other, "DV"},
    {CodecFamily::dv, fourCC("dvc "), CodecProfile::other, "dvc"},
    {CodecFamily::dv, fourCC("dvcp"), CodecProfile::other, "dvc"},
    {CodecFamily::dv, fourCC("dvpp"), CodecProfile::other, "dvc"},
    {CodecFamily::dv, fourCC("dvsd"), CodecProfile::other, "dvc"},
    {CodecFamily::motionJpegB, 0, CodecProfile::other, "MotionJPEG B"},
    {CodecFamily::motionJpeg, fourCC("mjpa"), CodecProfile::other, "MotionJPEG A"},
    {CodecFamily::motionJpeg, fourCC("mjpb"), CodecProfile::other, "MotionJPEG B"},
    {CodecFamily::motionJpeg, 0, CodecProfile::other, "PhotoJPEG"},
    {CodecFamily::h264, fourCC("HDMV"), CodecProfile::high, "H.264 (high, hdmv)"},
    {CodecFamily::h264, fourCC("avc1"), CodecProfile::high, "H.264 (high, avc1)"},
    {CodecFamily::h264, fourCC("avc1"), CodecProfile::main, "H.264 (main, avc1)"},
    {CodecFamily::h264, 0, CodecProfile::constrainedBaseline, "H.264 (constrained baseline)"},
    {CodecFamily::h264, 0, CodecProfile::other, "H.264"},
    {CodecFamily::prores, fourCC("apch"), CodecProfile::other, "Apple ProRes 422 (hq)"},
    {CodecFamily::prores, fourCC("apcn"), CodecProfile::other, "Apple ProRes (apcn)"},
    {CodecFamily::prores, fourCC("apcs"), CodecProfile::other, "Apple ProRes (apcs)"},
    // The proxy flavour has no name of its own on the wire; its code says exactly what it is.
    {CodecFamily::prores, fourCC("apco"), CodecProfile::other, "apco"},
    {CodecFamily::prores, fourCC("ap4h"), CodecProfile::other, "Apple ProRes 4444"},
    {CodecFamily::prores, fourCC("ap4x"), CodecProfile::other, "Apple ProRes 4444 XQ"},
    {CodecFamily::prores, 0, CodecProfile::other, "prores"},
    {CodecFamily::png, 0, CodecProfile::other, "png"},
    {CodecFamily::mpeg2, 0, CodecProfile::main, "mpeg2video (main)"},
    {CodecFamily::mpeg2, 0, CodecProfile::other, "MPEG2"},
    {CodecFamily::mpeg4, 0, CodecProfile::other, "mpeg4"},
    {CodecFamily::dnxhd, 0, CodecProfile::dnxhr, "AVdh"},
    {CodecFamily::dnxhd, 0, CodecProfile::other, "Avid DNxHD"},
};

bool holds(CodecRow const& row, CodecTraits const& codec) {
    return row.family == codec.family && (row.tag == 0 || row.tag == codec.tag) &&
           (row.profile == CodecProfile::other || row.profile == codec.profile);
}

std::string tagText(std::uint32_t tag) {
    std::string text;
    for (int i = 0; i < 4; ++i, tag >>= 8) {
        auto const c = static_cast<char>(tag & 0xff);
        if (c < ' ' || c > '~') {
            return {};
        }
        text += c;
    }
    return text;
}

std::string trimmedDecimal(double value, int decimals) {
    std::array<char, 64> text{};
    int const length = std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    std::string result(text.data(), static_cast<std::size_t>(length));
    if (result.find('.') != std::string::npos) {
        result.erase(result.find_last_not_of('0') + 1);
        if (result.back() == '.') {
            result.pop_back();
        }
    }
    return result;
}

double perSecond(Rate rate) {
    return static_cast<double>(rate.numerator) / rate.denominator;
}

bool isKnown(Rate rate) {
    return rate.numerator > 0 && rate.denominator > 0;
}

} // namespace

std::string codecName(CodecTraits const& codec) {
    // DV streams outside QuickTime bear no tag: their colour sampling tells 50 Mbit/s from 25.
    if (codec.family == CodecFamily::dv && codec.tag == 0) {
        return codec.fourTwoTwo ? "DV" : "dvc";
    }
    for (CodecRow const& row : codecRows) {
        if (holds(row, codec)) {
            return std::string(row.name);
        }
    }
    std::string const tag = tagText(codec.tag);
    return tag.empty() ? codec.name : tag;
}

int videoStandard(PictureTraits const& picture) {
    auto const is = [&picture](int width, int height) {
        return picture.width == width && picture.height == height;
    };
    if (picture.interlaced) {
        if (is(720, 486)) {
            return 1;
        }
        if (is(720, 480)) {
            return 2;
        }
        if (is(720, 576)) {
            return 3;
        }
        if (is(1920, 1080) || is(1440, 1080)) {
            return 8;
        }
    } else {
        if (is(1920, 1080)) {
            return 4;
        }
        if (is(1280, 720)) {
            constexpr double fastest = 30.5;
            return isKnown(picture.rate) && perSecond(picture.rate) > fastest ? 9 : 5;
        }
    }
    return picture.width > 1920 || picture.height > 1080 ? 7 : 6;
}

std::string aspectText(int width, int height, Rate pixelAspect) {
    if (width <= 0 || height <= 0) {
        return {};
    }
    double const pixel = isKnown(pixelAspect) ? perSecond(pixelAspect) : 1.0;
    double const shape = pixel * width / height;
    // Standard definition stores pixels that are not square and often does not say so: 720x480, 720x486 and
    // 720x576 lie between 1.25 and 1.5 when taken as they are.
    if (shape >= 1.24 && shape <= 1.505) {
        return "4:3";
    }
    constexpr double wide = 16.0 / 9.0;
    if (std::abs(shape / wide - 1.0) < 0.03) {
        return "16:9";
    }
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.2f:1", shape);
    return text.data();
}

std::string exactRateText(Rate rate) {
    return isKnown(rate) ? trimmedDecimal(perSecond(rate), 5) : "";
}

std::string displayRateText(Rate rate) {
    return isKnown(rate) ? trimmedDecimal(perSecond(rate), 3) : "";
}

std::string coarseRateText(Rate rate) {
    return isKnown(rate) ? std::to_string(rate.numerator / rate.denominator) : "";
}

std::string soundText(int channels, int sampleRate, std::string_view codec) {
    if (channels <= 0) {
        return "no snd";
    }
    std::string text = trimmedDecimal(sampleRate / 1000.0, 2) + " kHz ";
    text += channels == 1 ? "mono" : channels == 2 ? "stereo" : std::to_string(channels) + " channels";
    if (!codec.empty()) {
        text += ' ';
        text += codec;
    }
    return text;
}

std::string priceText(std::int64_t cents) {
    std::int64_t const value = cents < 0 ? 0 : cents;
    std::string text = std::to_string(value / 100);
    if (value % 100 != 0) {
        std::int64_t const rest = value % 100;
        text += rest < 10 ? ".0" : ".";
        text += std::to_string(rest);
    }
    return text;
}

} // namespace tarn7d
