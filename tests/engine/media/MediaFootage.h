// Small media files, made by the ffmpeg program when a test first asks for one, and what that program says of
// their frames.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct AVFrame;

namespace test {

// A file of the table in MediaFootage.cpp. The same path for every test; nobody writes to it.
[[nodiscard]] std::filesystem::path mediaFootage(std::string const& name);

// A frame as the ffmpeg program decodes it.
struct ReferenceFrame {
    double time_s = 0;  // from the first one
    std::string digest; // MD5 of its samples
};
[[nodiscard]] std::vector<ReferenceFrame> referenceFrames(std::filesystem::path const& file);

// MD5 of the samples, row by row without what stands between the rows.
[[nodiscard]] std::string digestOf(AVFrame const& frame);

// Runs the ffmpeg program with these arguments; throws where it fails.
void runFFmpeg(std::vector<std::string> const& arguments);

} // namespace test
