#include <cstdint>

#include <png.h>

#include "host/engine/files/WholeFile.h"
#include "host/engine/pictures/HostImage.h"
#include "host/engine/pictures/PictureDecoder.h"
#include "host/engine/pictures/decoders.h"

namespace engine {

namespace {

// libpng's simplified interface, which reports errors by value.
class Image {
public:
    Image() { image.version = PNG_IMAGE_VERSION; }
    ~Image() { png_image_free(&image); }
    Image(Image const&) = delete;
    Image& operator=(Image const&) = delete;

    png_image image{};
};

std::uint32_t bigEndian(std::string_view bytes) {
    std::uint32_t value = 0;
    for (char const byte : bytes.substr(0, 4)) {
        value = (value << 8) | static_cast<unsigned char>(byte);
    }
    return value;
}

// libpng is content with the last row; a file that was cut behind it is a damaged file all the same.
bool hasEnd(std::string_view bytes) {
    static constexpr std::size_t signature = 8;
    static constexpr std::size_t frame = 12; // length, type and checksum of a chunk
    for (std::size_t at = signature; at + frame <= bytes.size();) {
        std::size_t const length = bigEndian(bytes.substr(at));
        if (length > bytes.size() - at - frame) {
            return false;
        }
        if (bytes.substr(at + 4, 4) == "IEND") {
            return true;
        }
        at += frame + length;
    }
    return false;
}

} // namespace

Zq::Ptr<iHostImage> decodePNG(std::string_view bytes) {
    Image reading;
    png_image& image = reading.image;
    if (!hasEnd(bytes) || png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0 ||
        image.width > largestSide_px || image.height > largestSide_px ||
        std::uint64_t{image.width} * image.height > largestPicture_px) {
        return {};
    }
    image.format = PNG_FORMAT_RGBA;
    image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    std::vector<std::uint8_t> pixels(std::size_t{image.width} * image.height * 4);
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) {
        return {};
    }
    return Zq::makeShared<HostImage>(image.width, image.height, std::move(pixels));
}

bool writePNG(iHostImage const& image, std::filesystem::path const& file) {
    Image writing;
    writing.image.width = image.getWidth();
    writing.image.height = image.getHeight();
    writing.image.format = PNG_FORMAT_RGBA;
    png_alloc_size_t size = 0;
    if (png_image_write_to_memory(&writing.image, nullptr, &size, 0, image.getPixels(), 0, nullptr) == 0) {
        return false;
    }
    std::string bytes(size, '\0');
    return png_image_write_to_memory(&writing.image, bytes.data(), &size, 0, image.getPixels(), 0, nullptr) !=
               0 &&
           writeWholeFile(file, std::string_view(bytes).substr(0, size), Durability::synced);
}

} // namespace engine
