// A sequence: clips of the project one behind the other, each with the piece of it that is shown. A value.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/object/Identity.h"
#include "host/picture/FrameRate.h"

namespace engine {

struct Placement {
    std::int64_t number = 0; // its identity in the project
    Cookie edit;
    // The piece that is shown, in frames of the clip's own rate, from its first frame; `out` is the first
    // frame that is not shown.
    std::int64_t in = 0;
    std::int64_t out = 0;
    // Where it stands, in frames of the sequence.
    std::int64_t start = 0;
    std::int64_t length = 0;
};

struct Sequence {
    std::string name;                            // as its user wrote it
    Zq::FrameRate rate = Zq::FrameRate::unknown; // that of the first clip that was placed
    std::vector<Placement> placements;           // in the order in which they are shown, without gaps

    [[nodiscard]] std::int64_t length() const noexcept {
        return placements.empty() ? 0 : placements.back().start + placements.back().length;
    }
};

// Frames as "01:02:03:04"; rates with the 1001 factor of 29.97 and 59.94 count in drop frame and have ";"
// before the last number (SMPTE ST 12-1). The unknown rate counts frames alone.
[[nodiscard]] std::string timecode(std::int64_t frame, Zq::FrameRate rate);

} // namespace engine
