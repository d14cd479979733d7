// Placing a piece of an edit in a sequence.

#include "host/engine/project/ProjectState.h"
#include "host/engine/project/frameCounts.h"
#include "host/engine/project/placingRules.h"

namespace engine {

Result<Placement> ProjectState::place(std::string const& sequence, Cookie const& edit,
                                      std::optional<double> in_s, std::optional<double> out_s) {
    if (std::string problem = problemOfSequenceName(sequence); !problem.empty()) {
        return Failure{std::move(problem)};
    }
    std::lock_guard const lock(mutex_);
    std::optional<EditRecord> record = recordOf(edit);
    if (!record) {
        return Failure{"the project has no edit " + cookieText(edit)};
    }
    Result<Piece> const piece = pieceBetween(*record, in_s, out_s);
    if (!piece) {
        return Failure{piece.error()};
    }
    record->temporary = false;
    Result<Placement> placed = writing([&] {
        std::int64_t const number = store(*record);
        SequenceTable::Head const head = tables_->sequences.findOrMake(sequence, record->rate);
        if (Zq::getFramesPerSecond(head.rate) <= 0) {
            throw Failure{"the frame rate of the sequence is unknown"};
        }
        Placement placement;
        placement.edit = edit;
        placement.in = piece->in;
        placement.out = piece->out;
        placement.length = framesAt(head.rate, piece->out - piece->in, record->rate);
        tables_->sequences.append(head, number, placement);
        Step step;
        step.kind = Step::Kind::placing;
        step.words = "placed " + plainName(*record) + " in " + sequence;
        step.edit = edit;
        step.placement = placement.number;
        tables_->steps.add(step, number);
        return placement;
    });
    if (placed) {
        settle(edit);
    }
    return placed;
}

} // namespace engine
