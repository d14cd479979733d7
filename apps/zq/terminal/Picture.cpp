#include "apps/zq/terminal/Picture.h"

#include <algorithm>
#include <cstdint>

namespace zq {

namespace {

struct Colour {
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;
};

// The mean of one cell of the picture, on black where it is not opaque.
Colour meanOf(iHostImage const& image, std::uint32_t left, std::uint32_t right, std::uint32_t top,
              std::uint32_t bottom) {
    std::uint64_t red = 0;
    std::uint64_t green = 0;
    std::uint64_t blue = 0;
    for (std::uint32_t y = top; y < bottom; ++y) {
        for (std::uint32_t x = left; x < right; ++x) {
            std::uint8_t const* const pixel = image.getPixels() + (std::size_t{y} * image.getWidth() + x) * 4;
            std::uint64_t const opacity = pixel[3];
            red += pixel[0] * opacity;
            green += pixel[1] * opacity;
            blue += pixel[2] * opacity;
        }
    }
    std::uint64_t const weight = std::uint64_t{right - left} * (bottom - top) * 255;
    return {static_cast<std::uint32_t>(red / weight), static_cast<std::uint32_t>(green / weight),
            static_cast<std::uint32_t>(blue / weight)};
}

std::string escape(char const* kind, Colour const& colour) {
    return std::string("\033[") + kind + ";2;" + std::to_string(colour.red) + ";" +
           std::to_string(colour.green) + ";" + std::to_string(colour.blue) + "m";
}

} // namespace

std::string halfBlockPicture(iHostImage const& image, int columns) {
    std::uint32_t const width = image.getWidth();
    std::uint32_t const height = image.getHeight();
    if (width == 0 || height == 0 || columns < 1) {
        return {};
    }
    std::uint32_t const across = std::min(width, static_cast<std::uint32_t>(columns));
    // A half block is about as wide as it is high.
    std::uint32_t const down = std::clamp<std::uint32_t>(
        static_cast<std::uint32_t>(std::uint64_t{height} * across / width), 1, std::min(height, across * 4));
    auto const cell = [&](std::uint32_t x, std::uint32_t y) {
        auto const edge = [](std::uint32_t index, std::uint32_t size, std::uint32_t cells) {
            return static_cast<std::uint32_t>(std::uint64_t{index} * size / cells);
        };
        return meanOf(image, edge(x, width, across), edge(x + 1, width, across), edge(y, height, down),
                      edge(y + 1, height, down));
    };
    std::string text;
    for (std::uint32_t y = 0; y < down; y += 2) {
        for (std::uint32_t x = 0; x < across; ++x) {
            text += escape("38", cell(x, y));
            text += y + 1 < down ? escape("48", cell(x, y + 1)) : "\033[49m";
            text += "▀";
        }
        text += "\033[0m\n";
    }
    return text;
}

} // namespace zq
