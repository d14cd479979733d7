#include "host/picture/DigitalVideoFormats.h"

namespace Zq::DigitalVideoFormats {

namespace {

enum class Use { delivery, productionOnly };

struct Entry {
    DigitalVideoFormatInfo info;
    Use use;
};

constexpr Image::FormatUID uid(std::uint32_t number) {
    return static_cast<Image::FormatUID>(number);
}

// Projects keep these identities: a row's number never changes, a new row takes a new one.
constexpr Entry catalogue[] = {
    // SD
    {{uid(1), "NTSC", 720, 486}, Use::delivery},
    {{uid(2), "NTSC DV", 720, 480}, Use::delivery},
    {{uid(3), "PAL", 720, 576}, Use::delivery},
    {{uid(4), "NTSC, square pixels", 640, 480}, Use::delivery},
    {{uid(5), "PAL, square pixels", 768, 576}, Use::delivery},
    {{uid(6), "NTSC wide, square pixels", 854, 480}, Use::delivery},
    {{uid(7), "PAL wide, square pixels", 1024, 576}, Use::delivery},
    {{uid(8), "PAL with vertical interval", 720, 608}, Use::productionOnly},
    {{uid(9), "NTSC with vertical interval", 720, 512}, Use::productionOnly},
    // HD
    {{uid(20), "HD 720", 1280, 720}, Use::delivery},
    {{uid(21), "HD 1080", 1920, 1080}, Use::delivery},
    {{uid(22), "HD 720, narrow recording", 960, 720}, Use::productionOnly},
    {{uid(23), "HD 1080, 1440 samples a line", 1440, 1080}, Use::productionOnly},
    {{uid(24), "HD 1080, 1280 samples a line", 1280, 1080}, Use::productionOnly},
    // 2K
    {{uid(30), "2K", 2048, 1080}, Use::delivery},
    {{uid(31), "2K flat", 1998, 1080}, Use::delivery},
    {{uid(32), "2K scope", 2048, 858}, Use::delivery},
    {{uid(33), "2K full aperture", 2048, 1556}, Use::productionOnly},
    // UHD
    {{uid(40), "UHD", 3840, 2160}, Use::delivery},
    // 4K
    {{uid(50), "4K", 4096, 2160}, Use::delivery},
    {{uid(51), "4K flat", 3996, 2160}, Use::delivery},
    {{uid(52), "4K scope", 4096, 1716}, Use::delivery},
    {{uid(53), "4K full aperture", 4096, 3112}, Use::productionOnly},
};

constexpr DigitalVideoFormatInfo noFormat;

} // namespace

void getMatchingFormats(std::int32_t width, std::int32_t height, bool sizeOnly,
                        std::vector<DigitalVideoFormatInfo>& formats) {
    for (Entry const& entry : catalogue) {
        if (entry.info.width == width && entry.info.height == height &&
            (sizeOnly || entry.use == Use::delivery)) {
            formats.push_back(entry.info);
        }
    }
}

DigitalVideoFormatInfo const& findByUID(Image::FormatUID wanted) noexcept {
    for (Entry const& entry : catalogue) {
        if (entry.info.uid == wanted) {
            return entry.info;
        }
    }
    return noFormat;
}

} // namespace Zq::DigitalVideoFormats
