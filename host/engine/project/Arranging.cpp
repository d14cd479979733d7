// Changing how pieces stand in their sequences.

#include "host/engine/project/ProjectState.h"
#include "host/engine/project/frameCounts.h"
#include "host/engine/project/placingRules.h"

namespace engine {

namespace {

// Thrown where a change would leave all as it is: nothing is written then.
struct Unchanged {
    Project::Use use;
};

} // namespace

std::optional<PlacedPiece> ProjectState::exchange(std::int64_t placement,
                                                  std::optional<PlacedPiece> const& piece) {
    std::optional<PlacedPiece> before = tables_->sequences.piece(placement);
    tables_->sequences.takeOut(placement);
    if (piece) {
        (void)tables_->sequences.putIn(placement, *piece);
    }
    tables_->sequences.removeEmpty();
    return before;
}

Result<Project::Use> ProjectState::changePlacement(std::int64_t placement, StepWords const& words,
                                                   ChangePiece const& change) {
    Changing const lock(*this);
    try {
        return writing([&] {
            std::optional<Project::Use> const use = tables_->sequences.use(placement);
            std::optional<PlacedPiece> const before = tables_->sequences.piece(placement);
            if (!use || !before) {
                throw Failure{"no sequence has a piece " + std::to_string(placement)};
            }
            std::optional<PlacedPiece> const after = change(*before, use->placement.edit);
            if (after == before) {
                throw Unchanged{*use};
            }
            Step step;
            step.kind = words.kind;
            step.words = words.before + quotedName(lookUp(use->placement.edit).value_or(EditRecord())) +
                         words.behind + "\"" + use->sequence + "\"";
            step.edit = use->placement.edit;
            step.placement = placement;
            step.piece = exchange(placement, after);
            tables_->steps.add(step, before->edit);
            return tables_->sequences.use(placement).value_or(*use);
        });
    } catch (Unchanged const& unchanged) {
        return unchanged.use;
    }
}

Result<Project::Use> ProjectState::move(std::int64_t placement, std::int64_t index) {
    return changePlacement(
        placement, {Step::Kind::moving, "moving ", " in "}, [this, index](PlacedPiece piece, Cookie const&) {
            std::int64_t const size =
                tables_->sequences.head(piece.sequence).value_or(SequenceTable::Head()).size;
            if (std::string problem = problemOfIndex(index, size); !problem.empty()) {
                throw Failure{std::move(problem)};
            }
            piece.index = index;
            return piece;
        });
}

Result<Project::Use> ProjectState::trim(std::int64_t placement, std::optional<double> in_s,
                                        std::optional<double> out_s) {
    return changePlacement(placement, {Step::Kind::trimming, "trimming ", " in "},
                           [this, in_s, out_s](PlacedPiece piece, Cookie const& edit) {
                               EditRecord const clip = lookUp(edit).value_or(EditRecord());
                               Result<Piece> const left = trimmed({piece.in, piece.out}, clip, in_s, out_s);
                               if (!left) {
                                   throw Failure{left.error()};
                               }
                               piece.in = left->in;
                               piece.out = left->out;
                               piece.length = framesAt(piece.rate, left->out - left->in, clip.rate);
                               return piece;
                           });
}

Result<Project::Use> ProjectState::remove(std::int64_t placement) {
    return changePlacement(placement, {Step::Kind::removing, "removing ", " from "},
                           [](PlacedPiece const&, Cookie const&) { return std::nullopt; });
}

} // namespace engine
