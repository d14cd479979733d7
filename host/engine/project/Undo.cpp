// Going back and forth through the steps.

#include "host/engine/project/ProjectState.h"
#include "host/text/Unicode.h"
#include "host/text/oneLine.h"

namespace engine {

Cookie ProjectState::goThrough(Step& step) {
    if (step.kind != Step::Kind::relinking) {
        step.piece = exchange(step.placement, step.piece);
        return {};
    }
    std::optional<EditRecord> record = lookUp(step.edit);
    if (!record) {
        return {};
    }
    std::swap(record->mediaLocation, step.media);
    std::swap(record->bitRate, step.bitRate);
    std::swap(record->differences, step.differences);
    (void)store(*record);
    return step.edit;
}

Result<std::string> ProjectState::go(Way way) {
    Changing const lock(*this);
    Cookie touched;
    Result<std::string> gone = writing([&] {
        std::optional<Step> step = way == Way::back ? tables_->steps.lastDone() : tables_->steps.nextUndone();
        if (!step) {
            throw Failure{way == Way::back ? "there is nothing to take back"
                                           : "there is nothing to do again"};
        }
        touched = goThrough(*step);
        tables_->steps.save(*step, way == Way::back);
        return step->words;
    });
    if (gone) {
        settle(touched);
        Log("%s: %s", way == Way::back ? "Taken back" : "Done again", gone->c_str());
    }
    return gone;
}

Result<std::string> ProjectState::undo() {
    return go(Way::back);
}

Result<std::string> ProjectState::redo() {
    return go(Way::forth);
}

std::optional<Project::StepFacts> ProjectState::factsOf(std::optional<Step> const& step) {
    if (!step) {
        return std::nullopt;
    }
    Project::StepFacts facts;
    facts.kind = step->kind;
    facts.clip = toUTF8(Zq::onOneLine(lookUp(step->edit).value_or(EditRecord()).name())).view();
    if (step->kind != Step::Kind::relinking) {
        // It stands in its sequence on one side of the step at least.
        std::optional<PlacedPiece> const piece =
            step->piece ? step->piece : tables_->sequences.piece(step->placement);
        facts.sequence = piece ? piece->sequence : std::string();
    }
    return facts;
}

Project::History ProjectState::history() {
    std::lock_guard const lock(mutex_);
    return reading(Project::History(), [this] {
        return Project::History{tables_->revision(), tables_->steps.wordsOfLastDone(),
                                tables_->steps.wordsOfNextUndone(), factsOf(tables_->steps.lastDone()),
                                factsOf(tables_->steps.nextUndone())};
    });
}

std::int64_t ProjectState::revision() {
    std::lock_guard const lock(mutex_);
    return reading(std::int64_t{0}, [this] { return tables_->revision(); });
}

} // namespace engine
