#include "apps/zq/commands/RelinkListing.h"

#include <algorithm>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/EditListing.h"
#include "apps/zq/commands/SequenceListing.h"

namespace zq {

namespace {

void addFacts(JSON::Builder& json, engine::MediaFacts const& facts) {
    json.startChild("file");
    addText(json, "container", facts.container);
    addText(json, "videoCodec", facts.videoCodec);
    addText(json, "audioCodec", facts.audioCodec);
    addNumber(json, "width", facts.width);
    addNumber(json, "height", facts.height);
    addNumber(json, "scanMode", static_cast<std::int32_t>(facts.scanMode));
    addNumber(json, "rateNumerator", facts.rateNumerator);
    addNumber(json, "rateDenominator", facts.rateDenominator);
    addNumber(json, "frames", facts.frames);
    addDecimal(json, "duration_s", facts.duration_s);
    addNumber(json, "audioChannels", facts.audioChannels);
    addNumber(json, "bitRate", facts.bitRate);
    addNumber(json, "size", facts.size_bytes);
    json.endChild();
}

} // namespace

std::vector<SequenceUse> usesOf(Session& session, Cookie const& edit, engine::RelinkReport const& report) {
    engine::Project& project = session.engine().project();
    std::vector<SequenceUse> uses;
    for (engine::Project::Use const& found : project.usesOf(edit)) {
        engine::Sequence const sequence = project.sequence(found.sequence).value_or(engine::Sequence());
        SequenceUse use;
        use.sequence = found.sequence;
        use.piece = viewPiece(session, sequence, found.placement);
        use.isCutShort = std::ranges::find(report.cutShort, found.placement.number) != report.cutShort.end();
        uses.push_back(std::move(use));
    }
    return uses;
}

void addRelinkMembers(JSON::Builder& json, engine::RelinkReport const& report,
                      std::span<SequenceUse const> uses) {
    addFacts(json, report.facts);
    addDifferences(json, "differences", report.differences);
    json.startArray("uses");
    for (SequenceUse const& use : uses) {
        json.startChild(nullptr);
        addText(json, "sequence", use.sequence);
        addPieceMembers(json, use.piece);
        json.add("cutShort", use.isCutShort);
        json.endChild();
    }
    json.endArray();
}

} // namespace zq
