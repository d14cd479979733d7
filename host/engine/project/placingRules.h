// What may be placed, and which frames of a clip a piece of it is. Thread: any.
#pragma once

#include <optional>
#include <string>

#include "host/engine/project/EditRecord.h"
#include "host/engine/settings/Result.h"

namespace engine {

// Frames of the clip; `out` is the first that is not shown.
struct Piece {
    std::int64_t in = 0;
    std::int64_t out = 0;
};

// The piece between the times, in whole frames of the clip: `in` snaps down and `out` up, neither beyond the
// clip. The failure is a text for a person.
[[nodiscard]] Result<Piece> pieceBetween(EditRecord const& clip, std::optional<double> in_s,
                                         std::optional<double> out_s);

// Why a sequence cannot have that name; empty where it can.
[[nodiscard]] std::string problemOfSequenceName(std::string const& name);

} // namespace engine
