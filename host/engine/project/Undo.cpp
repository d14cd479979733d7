// Taking back the last step.

#include "host/engine/project/ProjectState.h"

namespace engine {

Result<std::string> ProjectState::undo() {
    std::lock_guard const lock(mutex_);
    Cookie touched;
    Result<std::string> undone = writing([&] {
        std::optional<Step> step = tables_->steps.last();
        if (!step) {
            throw Failure{"there is nothing to take back"};
        }
        if (step->kind == Step::Kind::placing) {
            tables_->sequences.remove(step->placement);
        } else {
            Held const* const held = find(step->edit);
            std::optional<EditRecord> record =
                held != nullptr && held->record ? held->record : tables_->edits.find(step->edit);
            if (record) {
                record->mediaLocation = step->previousMedia;
                record->bitRate = step->previousBitRate;
                record->differences = std::move(step->previousDifferences);
                store(*record);
                touched = step->edit;
            }
        }
        tables_->steps.remove(step->number);
        return step->words;
    });
    if (undone) {
        settle(touched);
        Log("Taken back: %s", undone->c_str());
    }
    return undone;
}

} // namespace engine
