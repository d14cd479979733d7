// What a footage file is: its picture, its sound and its length, read with FFmpeg's libraries.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "apps/tarn7d/ClipFormat.h"
#include "host/engine/media/mediaContainers.h"

namespace tarn7d {

struct MediaInfo {
    std::string codec; // the service's name, see codecName
    int width = 0;
    int height = 0;
    int standard = 6; // see videoStandard
    std::string aspect;
    Rate rate;
    std::int64_t duration_ms = 0;
    std::string sound; // see soundText
};

// Reads the headers of the file. Empty for a file that is no moving picture: unknown container, no video, a
// still picture, no size. Only container formats of single files are tried, and nothing but the file itself
// is ever opened: a playlist cannot make the service read elsewhere. Any thread; does not throw.
[[nodiscard]] std::optional<MediaInfo> probeMedia(std::filesystem::path const& file) noexcept;

// A JPEG of a picture from the first third of the file, scaled to fit the width and shown in the right shape.
// Empty when no picture could be decoded. Any thread; does not throw.
[[nodiscard]] std::vector<unsigned char> makeThumbnail(std::filesystem::path const& file, int width) noexcept;

// Formats that are opened, as FFmpeg's list of names; also for the ffmpeg program.
inline constexpr char const* allowedFormats = engine::mediaContainers;

} // namespace tarn7d
