// A picture as coloured characters.
#pragma once

#include <string>

#include "host/picture/iHostImage.h"

namespace zq {

// The picture on lines of at most `columns` upper half blocks, each showing two pixels by 24-bit foreground
// and background colours, with its own aspect ratio. Empty for a picture without pixels.
[[nodiscard]] std::string halfBlockPicture(iHostImage const& image, int columns);

} // namespace zq
