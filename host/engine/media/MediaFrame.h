// One decoded picture of a media file.
#pragma once

#include <cstdint>
#include <memory>

#include "host/picture/iHostImage.h"

struct AVFrame;

namespace engine {

// Owns its picture. Thread: one at a time; a frame may outlive its reader.
class MediaFrame {
public:
    // Takes the picture. `position_s` is the time at which it begins to show.
    MediaFrame(AVFrame* picture, double position_s) noexcept;

    // In seconds from the beginning of the file's first picture.
    [[nodiscard]] double position_s() const noexcept { return position_s_; }
    // The samples as the codec stores them. Lives as long as the frame.
    [[nodiscard]] AVFrame const& picture() const noexcept { return *picture_; }
    // The picture as stored, pixel for pixel: not stretched where its pixels are not square. Null where there
    // is no memory for it, or its form is none that can be converted.
    [[nodiscard]] Zq::Ptr<iHostImage> toImage() const;

private:
    struct Release {
        void operator()(AVFrame* picture) const noexcept;
    };

    std::unique_ptr<AVFrame, Release> picture_;
    double position_s_;
};

} // namespace engine
