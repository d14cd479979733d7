// A clip's picture and its compression in one line for a person. A value. Thread: any.
#pragma once

#include "host/picture/CompressionFormat.h"
#include "host/picture/ShotVideoMetadata.h"

class ZQ_API VideoCompressionInfo {
public:
    // Takes over the picture's size and codec; a bit rate that was known before no longer holds.
    void setInputImageFormat(ShotVideoMetadata const& metadata) noexcept;
    [[nodiscard]] CompressionFormat& getCompressionFormat() noexcept { return compression_; }
    [[nodiscard]] CompressionFormat const& getCompressionFormat() const noexcept { return compression_; }

    // "H.264 1920x1080, 8.5 Mbit/s"; what is not known is left out. Style 0 is the only one. UTF-8.
    [[nodiscard]] NarrowString asString(int style) const;

private:
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    CompressionFormat compression_;
};
