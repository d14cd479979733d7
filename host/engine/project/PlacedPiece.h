// A placement with all that a change of it needs to know, so that it can be made again where it was. A value.
#pragma once

#include <cstdint>
#include <string>

#include "host/picture/FrameRate.h"

namespace engine {

struct PlacedPiece {
    std::string sequence;
    Zq::FrameRate rate = Zq::FrameRate::unknown; // of the sequence
    std::int64_t edit = 0;                       // its number in the file
    std::int64_t index = 0;                      // in the sequence, from 0
    // The piece that is shown, in frames of the clip; `out` is the first that is not shown.
    std::int64_t in = 0;
    std::int64_t out = 0;
    std::int64_t length = 0; // in frames of the sequence

    friend bool operator==(PlacedPiece const&, PlacedPiece const&) = default;
};

} // namespace engine
