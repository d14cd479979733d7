// Placing a piece of an edit in a sequence.

#include "host/engine/project/ProjectState.h"
#include "host/engine/project/frameCounts.h"
#include "host/engine/project/placingRules.h"

namespace engine {

Result<Placement> ProjectState::place(std::string const& sequence, Cookie const& edit,
                                      std::optional<double> in_s, std::optional<double> out_s,
                                      std::optional<std::int64_t> index) {
    if (std::string problem = problemOfSequenceName(sequence); !problem.empty()) {
        return Failure{std::move(problem)};
    }
    Changing const lock(*this);
    std::optional<EditRecord> record = recordOf(edit);
    if (!record) {
        return Failure{"the project has no edit " + cookieText(edit)};
    }
    Result<Piece> const shown = pieceBetween(*record, in_s, out_s);
    if (!shown) {
        return Failure{shown.error()};
    }
    record->temporary = false;
    Result<Placement> placed = writing([&] {
        SequenceTable::Head const head =
            tables_->sequences.head(sequence).value_or(SequenceTable::Head{record->rate});
        if (Zq::getFramesPerSecond(head.rate) <= 0) {
            throw Failure{"the frame rate of the sequence is unknown"};
        }
        PlacedPiece piece;
        piece.sequence = sequence;
        piece.rate = head.rate;
        piece.index = index.value_or(head.size);
        if (std::string problem = problemOfIndex(piece.index, head.size + 1); !problem.empty()) {
            throw Failure{std::move(problem)};
        }
        piece.edit = store(*record);
        piece.in = shown->in;
        piece.out = shown->out;
        piece.length = framesAt(head.rate, piece.out - piece.in, record->rate);
        Step step;
        step.kind = Step::Kind::placing;
        step.words = "placing " + quotedName(*record) + " in \"" + sequence + "\"";
        step.edit = edit;
        step.placement = tables_->sequences.putIn(0, piece);
        tables_->steps.add(step, piece.edit);
        return tables_->sequences.use(step.placement).value().placement;
    });
    if (placed) {
        settle(edit);
    }
    return placed;
}

} // namespace engine
