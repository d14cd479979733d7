// The catalogue of the picture sizes that video is made in: SD, HD, 2K, UHD and 4K, in that order.
#pragma once

#include <vector>

#include "host/picture/ImageFormat.h"

namespace Zq::DigitalVideoFormats {

struct DigitalVideoFormatInfo {
    Image::FormatUID uid = Image::FormatUID::none;
    char const* name = "";
    std::int32_t width = 0;  // in pixels
    std::int32_t height = 0; // in lines, both fields together
};

// Adds the formats of that size to the list, in catalogue order. `sizeOnly` takes every format of the size;
// without it, only those that are in use for delivery. Thread: any.
ZQ_API void getMatchingFormats(std::int32_t width, std::int32_t height, bool sizeOnly,
                               std::vector<DigitalVideoFormatInfo>& formats);
// The catalogue's own record; one with uid none for an unknown identity. Lives as long as the program.
[[nodiscard]] ZQ_API DigitalVideoFormatInfo const& findByUID(Image::FormatUID uid) noexcept;

} // namespace Zq::DigitalVideoFormats
