// A clip that libav opens and plays by itself, over its own HTTP or from the disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "host/engine/media/FFmpegHandles.h"

namespace bench {

// With the patience and the threads that libav has by itself. Every failure is a std::runtime_error.
class LibavClip {
public:
    // A path, or an http or https address; for the latter the authorities in the PEM file are trusted.
    LibavClip(std::string const& address, std::filesystem::path const& authorities);

    void nextFrame();
    // Decodes up to the picture that shows at this time.
    void seek(double position_s);

private:
    [[nodiscard]] double timeOfNext();

    engine::ffmpeg::Format container_;
    AVStream* stream_ = nullptr;
    engine::ffmpeg::Codec codec_;
    engine::ffmpeg::Packet packet_;
    engine::ffmpeg::Frame frame_;
};

// Reads an address from its beginning to its end, in such steps; gives the number of bytes.
[[nodiscard]] std::uint64_t readAllByLibav(std::string const& address,
                                           std::filesystem::path const& authorities, int step_bytes);

} // namespace bench
