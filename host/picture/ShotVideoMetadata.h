// What is known of a clip's picture. A value. Thread: any.
#pragma once

#include "host/picture/DigitalVideoFormats.h"
#include "host/picture/FrameRate.h"
#include "host/picture/ImageFormat.h"

// A plain record. Each group of values is followed by a mark that says whether the group has been set.
struct ZQ_API ShotVideoMetadata {
    ShotVideoMetadata() = default;
    // The record of a catalogue format: its size, and bits a pixel and row size by the rule of bitsPerPixel.
    // `anamorphic` says that the pixels are not square beyond what the aspect ratio tells.
    ShotVideoMetadata(Zq::DigitalVideoFormats::DigitalVideoFormatInfo const& info, Zq::Image::Format format,
                      Zq::FrameRate rate, Zq::Image::AspectRatio ratio, bool anamorphic,
                      Zq::Image::ScanMode scan, std::uint16_t depth);

    void setDataFormat(Zq::Image::Format format) noexcept { dataFormat = format; }

    Zq::Image::FormatUID uid = Zq::Image::FormatUID::none;
    Zq::Image::Format dataFormat = Zq::Image::Format::unknown;
    bool anamorphic = false;

    Zq::Image::ScanMode scanMode = Zq::Image::ScanMode::progressive;
    Zq::Image::AspectRatio aspectRatio = Zq::Image::AspectRatio::sixteenByNine;
    bool hasScanAndAspect = false;

    Zq::FrameRate frameRate = Zq::FrameRate::unknown;
    bool hasFrameRate = false;

    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint16_t bitDepth = 0;
    std::int32_t bitsPerPixel = 0; // 16 for compressed formats
    bool hasSize = false;

    std::int32_t rowAlignment = 0; // in bytes
    std::int32_t rowBytes = 0;
    bool hasRowBytes = false;
};
