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

// The piece that is left of one after trimming it with such times; nothing stands for the end that it has.
// The failure is a text for a person, also where neither is given.
[[nodiscard]] Result<Piece> trimmed(Piece const& piece, EditRecord const& clip, std::optional<double> in_s,
                                    std::optional<double> out_s);

// Why no piece can stand at the index, from 0, in a sequence that has `size` pieces then; empty where one
// can. People count positions from 1.
[[nodiscard]] std::string problemOfIndex(std::int64_t index, std::int64_t size);

// Why a sequence cannot have that name; empty where it can.
[[nodiscard]] std::string problemOfSequenceName(std::string const& name);

} // namespace engine
