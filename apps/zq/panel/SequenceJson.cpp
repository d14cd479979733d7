#include "apps/zq/panel/SequenceJson.h"

#include <map>

#include "apps/zq/EditLookup.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/EditListing.h"
#include "apps/zq/panel/EditJson.h"
#include "apps/zq/panel/Fetches.h"
#include "host/engine/project/Project.h"

namespace zq::panel {

namespace {

// Which repository a clip is of, and how that calls it.
struct Origin {
    std::string repository; // empty: none that is loaded
    std::string clip;
};

Origin originOf(Panel const& panel, engine::EditRecord const& edit) {
    for (auto const& desk : panel.desks) {
        if (std::string id = clipIdOf(edit, wide(desk->shortName())); !id.empty()) {
            return {desk->shortName(), std::move(id)};
        }
    }
    return {};
}

void addPiece(JSON::Builder& json, Panel const& panel, engine::Sequence const& sequence, std::size_t index,
              engine::EditRecord const& edit) {
    engine::Placement const& placement = sequence.placements[index];
    Origin const origin = originOf(panel, edit);
    std::uint64_t const task = origin.clip.empty() ? 0 : panel.fetches.taskOf(origin.repository, origin.clip);
    json.startChild(nullptr);
    addNumber(json, "piece", placement.number);
    addNumber(json, "index", index);
    addText(json, "edit", engine::cookieText(placement.edit));
    addText(json, "repository", origin.repository);
    addText(json, "clip", origin.clip);
    json.add("name", edit.name(), true);
    addText(json, "state", stateOf(edit, task));
    addNumber(json, "task", task);
    addDecimal(json, "in", timeOf(placement.in, edit.rate));
    addDecimal(json, "out", timeOf(placement.out, edit.rate));
    addDecimal(json, "start", timeOf(placement.start, sequence.rate));
    addDecimal(json, "clipDuration", timeOf(edit.durationInFrames(), edit.rate));
    addRateFraction(json, "rate", edit.rate);
    addText(json, "sourceIn", engine::timecode(placement.in, edit.rate));
    addText(json, "sourceOut", engine::timecode(placement.out, edit.rate));
    addText(json, "recordIn", engine::timecode(placement.start, sequence.rate));
    addText(json, "recordOut", engine::timecode(placement.start + placement.length, sequence.rate));
    addDifferences(json, "differences", edit.differences);
    json.endChild();
}

} // namespace

double timeOf(std::int64_t frame, Zq::FrameRate rate) {
    Zq::ExactRate const exact = Zq::getExactRate(rate);
    return exact.numerator == 0 ? 0.0
                                : static_cast<double>(frame) * static_cast<double>(exact.denominator) /
                                      static_cast<double>(exact.numerator);
}

std::string sequenceJson(Panel const& panel, std::string const& name) {
    engine::Sequence sequence = panel.engine.project().sequence(name).value_or(engine::Sequence());
    if (sequence.placements.empty()) {
        sequence.name = name;
    }
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "name", sequence.name);
    addRateFraction(json, "rate", sequence.rate);
    addDecimal(json, "duration", timeOf(sequence.length(), sequence.rate));
    json.startArray("pieces");
    std::map<Cookie, engine::EditRecord> edits = panel.engine.project().editsOf(sequence);
    for (std::size_t i = 0; i < sequence.placements.size(); ++i) {
        addPiece(json, panel, sequence, i, edits[sequence.placements[i].edit]);
    }
    json.endArray();
    json.endChild();
    return utf8(json.getOutput());
}

} // namespace zq::panel
