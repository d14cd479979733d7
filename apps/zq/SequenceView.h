// A sequence as a person reads it: each piece with its clip and its timecodes.
#pragma once

#include <string>
#include <vector>

#include "apps/zq/Session.h"
#include "host/engine/project/Project.h"

namespace zq {

struct SequencePiece {
    engine::Placement placement;
    engine::EditRecord edit;
    std::string clipId; // of the chosen repository; empty where the edit is not of it
    // Timecodes: the piece in the clip, at the clip's rate, and in the sequence, at the sequence's.
    std::string sourceIn;
    std::string sourceOut; // the first frame that is not shown
    std::string recordIn;
    std::string recordOut;
};

struct SequenceView {
    engine::Sequence sequence;
    std::vector<SequencePiece> pieces;
};

// Throws CommandError where there is no sequence of that name, with the names that there are.
[[nodiscard]] SequenceView viewSequence(Session& session, std::string const& name);
// The piece for one placement of a sequence, whatever its clip is of.
[[nodiscard]] SequencePiece pieceOf(engine::Sequence const& sequence, engine::Placement const& placement,
                                    engine::EditRecord edit);
// The same with the clip, where it is of the chosen repository.
[[nodiscard]] SequencePiece viewPiece(Session& session, engine::Sequence const& sequence,
                                      engine::Placement const& placement, engine::EditRecord edit);
// The same for a placement that is looked at alone.
[[nodiscard]] SequencePiece viewPiece(Session& session, engine::Sequence const& sequence,
                                      engine::Placement const& placement);

} // namespace zq
