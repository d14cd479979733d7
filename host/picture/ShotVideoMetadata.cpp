#include "host/picture/ShotVideoMetadata.h"

namespace {

constexpr std::int32_t bitsOfCompressed = 16;

// In 32 bits, wrapping: sizes may come from anywhere.
std::int32_t rowBytesOf(std::int32_t bitsPerPixel, std::int32_t width) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(bitsPerPixel) *
                                     static_cast<std::uint32_t>(width)) /
           8;
}

} // namespace

ShotVideoMetadata::ShotVideoMetadata(Zq::DigitalVideoFormats::DigitalVideoFormatInfo const& info,
                                     Zq::Image::Format format, Zq::FrameRate rate,
                                     Zq::Image::AspectRatio ratio, bool notSquare, Zq::Image::ScanMode scan,
                                     std::uint16_t depth)
    : uid(info.uid), dataFormat(format), anamorphic(notSquare), scanMode(scan), aspectRatio(ratio),
      hasScanAndAspect(true), frameRate(rate), hasFrameRate(true), width(info.width), height(info.height),
      bitDepth(depth),
      bitsPerPixel(Zq::Image::isCompressedFormat(format) ? bitsOfCompressed
                                                         : Zq::Image::getBitsPerPixel(format, depth)),
      hasSize(true), rowAlignment(1), rowBytes(rowBytesOf(bitsPerPixel, info.width)), hasRowBytes(true) {}
