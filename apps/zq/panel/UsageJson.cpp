#include "apps/zq/panel/UsageJson.h"

#include <algorithm>
#include <optional>
#include <set>

#include "apps/zq/Csv.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Purchases.h"
#include "apps/zq/panel/SequenceJson.h"
#include "host/engine/project/Project.h"

namespace zq::panel {

namespace {

std::optional<std::set<std::string>> ownedOf(Panel const& panel, RepositoryDesk& desk, Session& session,
                                             SequenceView const& view) {
    std::set<std::string> owned;
    if (!session.needsSignIn()) {
        for (SequencePiece const& piece : view.pieces) {
            owned.insert(piece.clipId);
        }
        return owned;
    }
    if (session.user().empty()) {
        return std::nullopt;
    }
    try {
        for (RemoteAsset const& asset : panel.purchases.readOwned(desk, session)) {
            owned.insert(utf8(asset.id));
        }
    } catch (CommandError const&) {
        return std::nullopt; // the prices are worth telling without it
    }
    return owned;
}

// Who uses a clip, with the repository that it is of.
struct Row {
    std::string const* repository;
    ClipUse const* use;
};

std::vector<Row> rowsOf(SequenceUsage const& usage) {
    std::vector<Row> rows;
    for (RepositoryUsage const& part : usage.parts) {
        for (ClipUse const& use : part.report.uses) {
            rows.push_back({&part.repository, &use});
        }
    }
    std::ranges::stable_sort(rows, {}, [](Row const& row) { return row.use->piece.placement.start; });
    return rows;
}

// The sum of what is to be bought; nothing where currencies differ.
std::optional<Price> totalOf(SequenceUsage const& usage) {
    Price sum;
    for (RepositoryUsage const& part : usage.parts) {
        std::optional<Price> const& total = part.report.total;
        if (!total || (sum.cents != 0 && total->cents != 0 && sum.currency != total->currency)) {
            return std::nullopt;
        }
        if (total->cents != 0) {
            sum.currency = total->currency;
            sum.cents += total->cents;
        }
    }
    return sum;
}

} // namespace

SequenceUsage usageOf(Panel const& panel, std::string const& sequence) {
    std::optional<engine::Sequence> const found = panel.engine.project().sequence(sequence);
    if (!found) {
        throw ApiError(ErrorCode::notFound, "there is no sequence \"" + sequence + "\"");
    }
    SequenceUsage usage;
    usage.sequence = *found;
    for (auto const& desk : panel.desks) {
        RepositoryUsage part{desk->shortName(), desk->ask([&](Session& session) {
                                 SequenceView view;
                                 view.sequence = *found;
                                 bool isUsed = false;
                                 for (engine::Placement const& placement : found->placements) {
                                     view.pieces.push_back(viewPiece(session, *found, placement));
                                     isUsed = isUsed || !view.pieces.back().clipId.empty();
                                 }
                                 if (!isUsed) {
                                     return UsageReport();
                                 }
                                 UsageReport report = reportUsage(view, ownedOf(panel, *desk, session, view));
                                 report.credits = session.credits();
                                 return report;
                             })};
        if (!part.report.uses.empty()) {
            usage.parts.push_back(std::move(part));
        }
    }
    return usage;
}

std::string usageJson(SequenceUsage const& usage) {
    std::size_t toBuy = 0;
    std::size_t withoutPrice = 0;
    bool ownershipKnown = true;
    for (RepositoryUsage const& part : usage.parts) {
        toBuy += part.report.clipsToBuy;
        withoutPrice += part.report.clipsWithoutPrice;
        ownershipKnown = ownershipKnown && part.report.ownershipKnown;
    }
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "sequence", usage.sequence.name);
    json.startArray("uses");
    for (Row const& row : rowsOf(usage)) {
        engine::Placement const& placement = row.use->piece.placement;
        Zq::FrameRate const rate = row.use->piece.edit.rate;
        json.startChild(nullptr);
        addNumber(json, "piece", placement.number);
        addText(json, "repository", *row.repository);
        addText(json, "clip", row.use->piece.clipId);
        json.add("name", row.use->piece.edit.name(), true);
        addText(json, "ownership", wordFor(row.use->ownership));
        addText(json, "price", row.use->priceText);
        addDecimal(json, "in", timeOf(placement.in, rate));
        addDecimal(json, "out", timeOf(placement.out, rate));
        addDecimal(json, "start", timeOf(placement.start, usage.sequence.rate));
        json.endChild();
    }
    json.endArray();
    std::optional<Price> const total = totalOf(usage);
    bool const tells = total && toBuy > withoutPrice;
    addText(json, "total", tells ? priceText(*total) : std::string());
    addNumber(json, "clipsToBuy", toBuy);
    addNumber(json, "clipsWithoutPrice", withoutPrice);
    json.add("ownershipKnown", ownershipKnown);
    // The credits of several accounts make no sum.
    std::optional<std::int64_t> const credits =
        usage.parts.size() == 1 ? usage.parts.front().report.credits : std::optional<std::int64_t>();
    json.add("credits", wide(credits ? std::to_string(*credits) : "null"), false);
    json.endChild();
    return utf8(json.getOutput());
}

std::string usageCsv(SequenceUsage const& usage) {
    std::vector<std::string> const header{"repository", "clip",       "name",  "source in", "source out",
                                          "record in",  "record out", "owned", "price"};
    std::string text = csvRecord(header);
    for (Row const& row : rowsOf(usage)) {
        SequencePiece const& piece = row.use->piece;
        std::vector<std::string> const cells{
            *row.repository, piece.clipId,    utf8(piece.edit.name()),     piece.sourceIn,    piece.sourceOut,
            piece.recordIn,  piece.recordOut, wordFor(row.use->ownership), row.use->priceText};
        text += csvRecord(cells);
    }
    return text;
}

} // namespace zq::panel
