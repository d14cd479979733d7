// The columns of an edit's row that hold what is known of its picture.
#pragma once

#include <array>
#include <string_view>

#include "host/engine/project/Row.h"
#include "host/picture/ShotVideoMetadata.h"

namespace engine {

inline constexpr std::array<std::string_view, 16> pictureColumns{
    "picture_format",        "picture_data_format",   "picture_anamorphic",
    "picture_scan",          "picture_aspect",        "picture_has_scan_and_aspect",
    "picture_rate",          "picture_has_rate",      "picture_width",
    "picture_height",        "picture_depth",         "picture_bits_per_pixel",
    "picture_has_size",      "picture_row_alignment", "picture_row_bytes",
    "picture_has_row_bytes",
};

// In the order of the columns.
RowWriter& operator<<(RowWriter& row, ShotVideoMetadata const& picture);
RowReader& operator>>(RowReader& row, ShotVideoMetadata& picture);

} // namespace engine
