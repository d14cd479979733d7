// How a picture is carried, as far as its record tells. Thread: any.
#pragma once

#include "host/picture/ShotVideoMetadata.h"

namespace Zq::Image::Video::Interface {

// True when a frame is one picture, not two fields of different moments.
[[nodiscard]] inline bool isProgressive(ShotVideoMetadata const& metadata) noexcept {
    return metadata.scanMode == ScanMode::progressive;
}

} // namespace Zq::Image::Video::Interface
