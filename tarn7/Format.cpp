// The picture format of a clip, from the handful of fields that the service tells of it.

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

#include "host/json/NumberMembers.h"
#include "host/text/Unicode.h"
#include "tarn7/ItemTexts.h"
#include "tarn7/Tarn7Resource.h"

namespace {

using Zq::Image::Format;
using Zq::Image::ScanMode;

enum class Match { exact, prefix };

struct CodecName {
    Match match; // exact: the whole text, in any letter case; prefix: its beginning, as written
    std::string_view text;
    char code[5];
};

// The first row that fits counts. Bare names stand for one variant on purpose: "prores" for apch, "DV" for
// dv50.
constexpr CodecName codecNames[] = {
    {Match::exact, "dvc", "dvc "},
    {Match::exact, "MotionJPEG A", "mjpa"},
    {Match::exact, "MotionJPEG B", "mjpb"},
    {Match::exact, "mjpegb", "mjpb"},
    {Match::exact, "PhotoJPEG", "jpeg"},
    {Match::exact, "Photo JPEG", "jpeg"},
    {Match::exact, "H.264", "H264"},
    {Match::exact, "H.264 (high, avc1)", "avc1"},
    {Match::exact, "H.264 (main, avc1)", "avc1"},
    {Match::exact, "H.264 (high, hdmv)", "K264"},
    {Match::exact, "h264 (high) (hdpr)", "K264"},
    {Match::exact, "H.264 (constrained baseline)", "I264"},
    {Match::exact, "Apple ProRes 422 (hq)", "apch"},
    {Match::exact, "Apple ProRes 422", "apch"},
    {Match::exact, "prores", "apch"},
    {Match::exact, "Apple ProRes (apcn)", "apcn"},
    {Match::exact, "Apple ProRes (apcs)", "apcs"},
    {Match::prefix, "Apple ProRes 444", "ap4h"},
    {Match::prefix, "ProRes 444", "ap4h"},
    {Match::prefix, "Apple ProRes 422", "apch"},
    {Match::prefix, "ProRes 422", "apch"},
    {Match::exact, "png", "png "},
    {Match::exact, "MPEG2", "MPG2"},
    {Match::exact, "mpeg2video (main)", "MPG2"},
    {Match::exact, "mpeg4", "mpg4"},
    {Match::exact, "DV", "dv50"},
    {Match::exact, "Avid DNxHD", "AVdn"},
};

char lower(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

bool fits(CodecName const& name, std::string_view text) {
    return name.match == Match::prefix ? text.starts_with(name.text)
                                       : std::ranges::equal(text, name.text, {}, lower, lower);
}

// Signed characters, as the service's own tools read a code: one beyond ASCII fills the bits above it.
Format codeItself(std::string_view text) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        auto const character = static_cast<std::int32_t>(static_cast<signed char>(text[i]));
        value |= static_cast<std::uint32_t>(character) << (8 * i);
    }
    return static_cast<Format>(value);
}

// How a row of the standards' table describes itself.
enum class Describe { bySize, plainly, withAspect };

struct VideoStandard {
    std::int16_t number;
    char const* text;
    Describe describe;
    ScanMode scan;
};

constexpr VideoStandard videoStandards[] = {
    {1, "486i", Describe::withAspect, ScanMode::interlacedLowerFirst},
    {2, "486i", Describe::withAspect, ScanMode::interlacedLowerFirst},
    {3, "576i", Describe::withAspect, ScanMode::interlacedUpperFirst},
    {4, "1080p", Describe::plainly, ScanMode::progressive},
    {5, "720p", Describe::plainly, ScanMode::progressive},
    {8, "1080i", Describe::plainly, ScanMode::interlacedUpperFirst},
    {9, "720p", Describe::plainly, ScanMode::progressive},
};

constexpr VideoStandard otherStandard{-1, "", Describe::bySize, ScanMode::progressive};

VideoStandard const& videoStandard(JSON::Element const& item) {
    auto const number = static_cast<std::int16_t>(JSON::getInt32(item, "vs"));
    auto const* const found = std::ranges::find(videoStandards, number, &VideoStandard::number);
    return found != std::end(videoStandards) ? *found : otherStandard;
}

bool isFourByThree(JSON::Element const& item) {
    return item.getStringView("ar") == "4:3";
}

void appendSize(NarrowString& text, std::int32_t width, std::int32_t height) {
    if (height == 2160 && (width == 4096 || width == 3840)) {
        text += "4k";
        return;
    }
    Zq::appendInteger(text, width);
    text += 'x';
    Zq::appendInteger(text, height);
}

ShotVideoMetadata fillByHand(std::int32_t width, std::int32_t height, Format format, ScanMode scan,
                             Zq::Image::AspectRatio aspect, Zq::FrameRate rate) {
    ShotVideoMetadata metadata;
    metadata.width = width;
    metadata.height = height;
    metadata.setDataFormat(format);
    metadata.bitDepth = 8;
    metadata.bitsPerPixel =
        Zq::Image::isCompressedFormat(format) ? 16 : Zq::Image::getBitsPerPixel(format, 8);
    metadata.scanMode = scan;
    metadata.aspectRatio = aspect;
    metadata.frameRate = rate;
    metadata.rowAlignment = 1;
    // In 32 bits that wrap, whatever the service says of the width.
    auto const bits = static_cast<std::int32_t>(static_cast<std::uint32_t>(metadata.bitsPerPixel) *
                                                static_cast<std::uint32_t>(width));
    metadata.rowBytes = bits / 8;
    metadata.hasScanAndAspect = true;
    metadata.hasFrameRate = true;
    metadata.hasSize = true;
    metadata.hasRowBytes = true;
    return metadata;
}

} // namespace

Format Tarn7Resource::getImageFormat(Item const& item) {
    std::string_view const codec = item.getStringView("codg");
    auto const* const found =
        std::ranges::find_if(codecNames, [codec](CodecName const& name) { return fits(name, codec); });
    if (found != std::end(codecNames)) {
        return Zq::Image::formatFromCode(found->code);
    }
    return codec.size() == 4 ? codeItself(codec) : Format::unknown;
}

NarrowString tarn7::formatText(JSON::Element const& item) {
    VideoStandard const& standard = videoStandard(item);
    std::string_view const codec = item.getStringView("codg");
    NarrowString text;
    text.reserve(16 + static_cast<std::uint32_t>(codec.size()));
    if (standard.describe == Describe::bySize) {
        appendSize(text, JSON::getInt32(item, "ox"), JSON::getInt32(item, "oy"));
    } else {
        text += standard.text;
    }
    if (standard.describe == Describe::withAspect) {
        text += isFourByThree(item) ? " 4:3" : " 16:9";
    }
    if (!codec.empty()) {
        text += ", ";
        text.append(codec);
    }
    return text;
}

WideString Tarn7Resource::getFormatDescription(Item const& item) {
    return fromUTF8(tarn7::formatText(item));
}

ShotVideoMetadata Tarn7Resource::getVideoMetadata(RemoteAsset const& asset) {
    Item const& item = JSON::orEmpty(Zq::dynamicCast<Item>(asset.payload));
    std::int32_t const height = JSON::getInt32(item, "oy");
    std::int32_t const width = JSON::getInt32(item, "ox");
    Format const format = getImageFormat(item);
    auto const aspect =
        isFourByThree(item) ? Zq::Image::AspectRatio::fourByThree : Zq::Image::AspectRatio::sixteenByNine;
    ScanMode const scan = videoStandard(item).scan;

    std::vector<Zq::DigitalVideoFormats::DigitalVideoFormatInfo> matching;
    Zq::DigitalVideoFormats::getMatchingFormats(width, height, true, matching);
    if (matching.empty()) {
        return fillByHand(width, height, format, scan, aspect, asset.frameRate);
    }
    // The catalogue's order decides between formats of one size.
    auto const& info = Zq::DigitalVideoFormats::findByUID(matching.front().uid);
    return ShotVideoMetadata(info, format, asset.frameRate, aspect, false, scan, 8);
}
