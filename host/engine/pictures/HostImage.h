// A picture in memory that owns its pixels.
#pragma once

#include <vector>

#include "host/picture/iHostImage.h"

namespace engine {

class HostImage final : public iHostImage {
public:
    // `pixels` are width * height * 4 bytes: rows from the top, red, green, blue, opacity.
    HostImage(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> pixels)
        : width_(width), height_(height), pixels_(std::move(pixels)) {}

    std::uint32_t getWidth() const noexcept override { return width_; }
    std::uint32_t getHeight() const noexcept override { return height_; }
    std::uint8_t const* getPixels() const noexcept override { return pixels_.data(); }

private:
    std::uint32_t const width_;
    std::uint32_t const height_;
    std::vector<std::uint8_t> const pixels_;
};

} // namespace engine
