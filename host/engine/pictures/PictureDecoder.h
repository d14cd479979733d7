// Pictures from JPEG and PNG files, and back to PNG.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>

#include "host/picture/iHostImage.h"

namespace engine {

// What is larger is not decoded: a small file can announce a picture that fills the memory.
inline constexpr std::uint32_t largestSide_px = 16384;
inline constexpr std::uint64_t largestPicture_px = std::uint64_t{64} << 20;
inline constexpr std::size_t largestPictureFile_bytes = std::size_t{32} << 20;

// Takes the format from the content, never from the name. Thread: any.
class PictureDecoder final : public iImageDecoder {
public:
    Zq::Ptr<iHostImage> decodeFile(WideString const& path) override;
    // The same from the bytes of a file.
    [[nodiscard]] Zq::Ptr<iHostImage> decode(std::string_view bytes) const;
};

// Writes the picture as a PNG file, whole or not at all; false when it could not be written. Thread: any.
[[nodiscard]] bool writePNG(iHostImage const& image, std::filesystem::path const& file);

} // namespace engine
