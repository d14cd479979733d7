#include "host/picture/ImageFormat.h"

namespace Zq::Image {

namespace {

// A format of plain samples. Either its code fixes how many bits a pixel takes in memory, padding counted and
// rounded up, or a pixel is so many samples of whatever depth is asked for.
struct PlainFormat {
    Format format;
    std::int32_t bits;
    std::int32_t samples;
};

constexpr PlainFormat plainFormats[] = {
    // 4:2:2, 8 bits a sample
    {formatFromCode("2vuy"), 16, 0},
    {formatFromCode("2Vuy"), 16, 0},
    {formatFromCode("UYVY"), 16, 0},
    {formatFromCode("HDYC"), 16, 0},
    {formatFromCode("YUY2"), 16, 0},
    {formatFromCode("YUYV"), 16, 0},
    {formatFromCode("YVYU"), 16, 0},
    {formatFromCode("yuvs"), 16, 0},
    {formatFromCode("yuv2"), 16, 0},
    // 4:2:2, 10 and 16 bits a sample; v210 packs six pixels into sixteen bytes
    {formatFromCode("v210"), 22, 0},
    {formatFromCode("v216"), 32, 0},
    // 4:4:4
    {formatFromCode("v308"), 24, 0},
    {formatFromCode("v408"), 32, 0},
    {formatFromCode("v410"), 32, 0},
    // 4:2:0
    {formatFromCode("I420"), 12, 0},
    {formatFromCode("IYUV"), 12, 0},
    {formatFromCode("YV12"), 12, 0},
    {formatFromCode("NV12"), 12, 0},
    {formatFromCode("NV21"), 12, 0},
    // red, green and blue of fixed width
    {formatFromCode("24BG"), 24, 0},
    {formatFromCode("b16g"), 16, 0},
    {formatFromCode("b48r"), 48, 0},
    {formatFromCode("b64a"), 64, 0},
    {formatFromCode("r210"), 32, 0},
    {formatFromCode("R10k"), 32, 0},
    // samples of any depth
    {formatFromCode("raw "), 0, 3},
    {formatFromCode("RGB "), 0, 3},
    {formatFromCode("BGR "), 0, 3},
    {formatFromCode("RGBA"), 0, 4},
    {formatFromCode("BGRA"), 0, 4},
    {formatFromCode("ARGB"), 0, 4},
    {formatFromCode("ABGR"), 0, 4},
    {formatFromCode("GREY"), 0, 1},
    {formatFromCode("Y800"), 0, 1},
};

PlainFormat const* findPlain(Format format) noexcept {
    for (PlainFormat const& plain : plainFormats) {
        if (plain.format == format) {
            return &plain;
        }
    }
    return nullptr;
}

} // namespace

bool isCompressedFormat(Format format) noexcept {
    return findPlain(format) == nullptr;
}

std::int32_t getBitsPerPixel(Format format, std::uint16_t depth) noexcept {
    PlainFormat const* const plain = findPlain(format);
    if (plain == nullptr) {
        return 0;
    }
    return plain->samples != 0 ? plain->samples * depth : plain->bits;
}

} // namespace Zq::Image
