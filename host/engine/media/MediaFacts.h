// What a media file holds, as a decoder sees it.
#pragma once

#include <cstdint>
#include <string>

#include "host/engine/settings/Result.h"
#include "host/picture/FrameRate.h"
#include "host/picture/ImageFormat.h"
#include "host/text/LightweightString.h"

namespace engine {

struct MediaFacts {
    std::string container;  // "mov", "mp4", ...
    std::string videoCodec; // as the decoder's library names it: "h264", "prores"; empty without a picture
    std::string audioCodec; // of the first sound; empty without one
    std::int32_t width = 0; // in pixels
    std::int32_t height = 0;
    Zq::Image::ScanMode scanMode = Zq::Image::ScanMode::progressive;
    Zq::FrameRate rate = Zq::FrameRate::unknown;
    std::int32_t rateNumerator = 0; // frames per second, exactly, also where the host has no number for it
    std::int32_t rateDenominator = 1;
    std::int64_t frames = 0;        // of the picture
    double duration_s = 0;          // of the longest part
    std::int32_t audioChannels = 0; // of all sounds together
    std::int64_t bitRate = 0;       // bits per second of the file as a whole
    std::uint64_t size_bytes = 0;
};

// Looks at the file through the host's file layer, so a virtual path streams. Decodes the first frame: a file
// of which no frame can be had is no media. The failure is one line for a person. Ends soon when the calling
// task is cancelled. Thread: any.
[[nodiscard]] Result<MediaFacts> inspectMedia(WideString const& path);

} // namespace engine
