#include "host/engine/media/MediaFrame.h"

#include <vector>

#include "host/engine/media/FFmpegHandles.h"
#include "host/engine/pictures/HostImage.h"
#include "host/engine/pictures/PictureDecoder.h"

namespace engine {

namespace {

// What the picture says of its colours; failing that, what pictures of its height have.
int const* coefficients(AVFrame const& picture) noexcept {
    constexpr int firstHighDefinition = 720;
    if (picture.colorspace != AVCOL_SPC_UNSPECIFIED && picture.colorspace != AVCOL_SPC_RESERVED) {
        return sws_getCoefficients(picture.colorspace);
    }
    return sws_getCoefficients(picture.height >= firstHighDefinition ? SWS_CS_ITU709 : SWS_CS_ITU601);
}

ffmpeg::Scaler makeScaler(AVFrame const& from) noexcept {
    ffmpeg::Scaler scaler(sws_getContext(
        from.width, from.height, static_cast<AVPixelFormat>(from.format), from.width, from.height,
        AV_PIX_FMT_RGBA, SWS_BICUBIC | SWS_FULL_CHR_H_INT | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    if (scaler != nullptr) {
        int const fullRange = from.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
        constexpr int unchanged = 1 << 16;
        // Refused for pictures that have no such colours, as those that are RGB already.
        (void)sws_setColorspaceDetails(scaler.get(), coefficients(from), fullRange,
                                       sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, unchanged, unchanged);
    }
    return scaler;
}

ffmpeg::Frame toRGBA(AVFrame const& from) noexcept {
    ffmpeg::Frame rgba(av_frame_alloc());
    ffmpeg::Scaler const scaler = makeScaler(from);
    if (rgba == nullptr || scaler == nullptr) {
        return nullptr;
    }
    rgba->format = AV_PIX_FMT_RGBA;
    rgba->width = from.width;
    rgba->height = from.height;
    if (av_frame_get_buffer(rgba.get(), 0) < 0 ||
        sws_scale(scaler.get(), from.data, from.linesize, 0, from.height, rgba->data, rgba->linesize) !=
            from.height) {
        return nullptr;
    }
    return rgba;
}

} // namespace

MediaFrame::MediaFrame(AVFrame* picture, double position_s) noexcept
    : picture_(picture), position_s_(position_s) {}

void MediaFrame::Release::operator()(AVFrame* picture) const noexcept {
    av_frame_free(&picture);
}

Zq::Ptr<iHostImage> MediaFrame::toImage() const {
    AVFrame const& from = *picture_;
    if (from.width <= 0 || from.height <= 0 ||
        static_cast<std::uint64_t>(from.width) * static_cast<std::uint64_t>(from.height) >
            largestPicture_px) {
        return {};
    }
    ffmpeg::Frame const rgba = toRGBA(from);
    if (rgba == nullptr) {
        return {};
    }
    std::ptrdiff_t const row_bytes = std::ptrdiff_t{from.width} * 4;
    std::vector<std::uint8_t> pixels;
    pixels.reserve(static_cast<std::size_t>(row_bytes) * static_cast<std::size_t>(from.height));
    for (int y = 0; y < from.height; ++y) {
        std::uint8_t const* const row = rgba->data[0] + std::ptrdiff_t{y} * rgba->linesize[0];
        pixels.insert(pixels.end(), row, row + row_bytes);
    }
    return Zq::Ptr<iHostImage>(new HostImage(static_cast<std::uint32_t>(from.width),
                                             static_cast<std::uint32_t>(from.height), std::move(pixels)));
}

} // namespace engine
