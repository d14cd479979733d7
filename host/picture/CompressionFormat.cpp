#include "host/picture/CompressionFormat.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "host/text/Numbers.h"

namespace {

using Zq::Image::Format;
using Zq::Image::formatFromCode;

struct Codec {
    Format format;
    char const* name;
};

// Variants of one codec that only its decoder tells apart share a name.
constexpr Codec codecs[] = {
    {formatFromCode("H264"), "H.264"},
    {formatFromCode("avc1"), "H.264"},
    {formatFromCode("K264"), "H.264"},
    {formatFromCode("I264"), "H.264"},
    {formatFromCode("hvc1"), "H.265"},
    {formatFromCode("hev1"), "H.265"},
    {formatFromCode("av01"), "AV1"},
    {formatFromCode("vp09"), "VP9"},
    {formatFromCode("apco"), "ProRes 422 Proxy"},
    {formatFromCode("apcs"), "ProRes 422 LT"},
    {formatFromCode("apcn"), "ProRes 422"},
    {formatFromCode("apch"), "ProRes 422 HQ"},
    {formatFromCode("ap4h"), "ProRes 4444"},
    {formatFromCode("ap4x"), "ProRes 4444 XQ"},
    {formatFromCode("AVdn"), "DNxHD"},
    {formatFromCode("AVdh"), "DNxHR"},
    {formatFromCode("jpeg"), "Photo JPEG"},
    {formatFromCode("mjpa"), "Motion JPEG A"},
    {formatFromCode("mjpb"), "Motion JPEG B"},
    {formatFromCode("png "), "PNG"},
    {formatFromCode("dvc "), "DV"},
    {formatFromCode("dv50"), "DV 50"},
    {formatFromCode("MPG2"), "MPEG-2"},
    {formatFromCode("mpg4"), "MPEG-4"},
    {formatFromCode("mp4v"), "MPEG-4"},
};

NarrowString fourCharacters(Format format) {
    auto const value = static_cast<std::uint32_t>(format);
    char text[4];
    for (unsigned i = 0; i < 4; ++i) {
        text[i] = static_cast<char>((value >> (8 * i)) & 0xff);
    }
    std::string_view readable(text, 4);
    if (std::ranges::all_of(readable, [](char c) { return c >= ' ' && c <= '~'; }) && readable[0] != ' ') {
        return NarrowString(readable.substr(0, readable.find_last_not_of(' ') + 1));
    }
    NarrowString number("0x");
    for (int shift = 28; shift >= 0; shift -= 4) {
        number += "0123456789abcdef"[(value >> shift) & 0xf];
    }
    return number;
}

// The quotient to the nearest whole number, without a sum that could leave 64 bits.
std::int64_t divideToNearest(std::int64_t value, std::int64_t by) {
    return value / by + (value % by >= by / 2 ? 1 : 0);
}

} // namespace

CompressionFormat::CompressionFormat(Format format, double bitsPerSecond) noexcept : format_(format) {
    setBitRate(Zq::truncatedTo64Bits(bitsPerSecond));
}

void CompressionFormat::setBitRate(std::int64_t bitsPerSecond) noexcept {
    bitsPerSecond_ = std::max<std::int64_t>(bitsPerSecond, 0);
}

NarrowString CompressionFormat::codecName() const {
    if (format_ == Format::unknown || format_ == Format{}) {
        return {};
    }
    auto const* const found = std::ranges::find(codecs, format_, &Codec::format);
    return found != std::end(codecs) ? NarrowString(found->name) : fourCharacters(format_);
}

NarrowString CompressionFormat::bitRateText() const {
    NarrowString text;
    if (bitsPerSecond_ == 0) {
        return text;
    }
    // Each limit lies where rounding would reach the next unit.
    if (bitsPerSecond_ < 1'000) {
        Zq::appendInteger(text, bitsPerSecond_);
        text += " bit/s";
    } else if (bitsPerSecond_ < 999'500) {
        Zq::appendInteger(text, divideToNearest(bitsPerSecond_, 1'000));
        text += " kbit/s";
    } else {
        std::int64_t const tenths = divideToNearest(bitsPerSecond_, 100'000);
        Zq::appendInteger(text, tenths / 10);
        if (tenths % 10 != 0) {
            text += '.';
            Zq::appendInteger(text, tenths % 10);
        }
        text += " Mbit/s";
    }
    return text;
}
