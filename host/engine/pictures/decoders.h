// One function a picture format. Null for bytes that are damaged, cut short or too large. Thread: any.
#pragma once

#include <string_view>

#include "host/picture/iHostImage.h"

namespace engine {

[[nodiscard]] Zq::Ptr<iHostImage> decodeJPEG(std::string_view bytes);
[[nodiscard]] Zq::Ptr<iHostImage> decodePNG(std::string_view bytes);

} // namespace engine
