// Pixel and codec formats, scan modes and aspect ratios, by number. Thread: any.
#pragma once

#include <cstdint>

#include "host/object/Api.h"

namespace Zq::Image {

// A four-character code with the first character in the lowest byte; all bits set is no known format. Codes
// that are not named here are formats too.
enum class Format : std::uint32_t { unknown = 0xffffffff };

[[nodiscard]] constexpr Format formatFromCode(char const (&code)[5]) noexcept {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = (value << 8) | static_cast<unsigned char>(code[i]);
    }
    return static_cast<Format>(value);
}

enum class ScanMode : std::int32_t {
    interlacedUpperFirst = 1,
    interlacedLowerFirst = 2,
    progressive = 3,
};

enum class AspectRatio : std::int32_t {
    fourByThree = 1,
    sixteenByNine = 2,
};

// Identity of a format in the catalogue; 0 is none.
enum class FormatUID : std::uint32_t { none = 0 };

// True unless the format holds plain samples. An unknown format counts as compressed.
[[nodiscard]] ZQ_API bool isCompressedFormat(Format format) noexcept;
// Bits that one pixel of a plain format takes in memory, padding counted and rounded up: its samples at that
// depth, or, where the code itself fixes the width, as for "2vuy" or "v210", that width. 0 for a compressed
// one.
[[nodiscard]] ZQ_API std::int32_t getBitsPerPixel(Format format, std::uint16_t depth) noexcept;

} // namespace Zq::Image
