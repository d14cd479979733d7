#include "apps/zq/panel/UsageJson.h"

#include <map>
#include <optional>
#include <set>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Purchases.h"
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

} // namespace

SequenceUsage usageOf(Panel const& panel, std::string const& sequence) {
    std::optional<engine::Sequence> const found = panel.engine.project().sequence(sequence);
    if (!found) {
        throw ApiError(ErrorCode::notFound, "there is no sequence \"" + sequence + "\"", Reason::noSequence);
    }
    std::map<Cookie, engine::EditRecord> edits = panel.engine.project().editsOf(*found);
    SequenceUsage usage;
    usage.sequence = found->name;
    std::set<std::int64_t> known; // placements that a repository has claimed
    for (auto const& desk : panel.desks) {
        RepositoryUsage part = desk->ask([&](Session& session) {
            SequenceView view;
            view.sequence = *found;
            for (engine::Placement const& placement : found->placements) {
                SequencePiece piece = viewPiece(session, *found, placement, edits[placement.edit]);
                if (!piece.clipId.empty()) {
                    view.pieces.push_back(std::move(piece));
                }
            }
            if (view.pieces.empty()) {
                return RepositoryUsage();
            }
            RepositoryUsage described = describeLicensor(session);
            described.report = reportUsage(view, ownedOf(panel, *desk, session, view));
            described.report.credits = session.credits();
            return described;
        });
        for (ClipUse const& use : part.report.uses) {
            known.insert(use.piece.placement.number);
        }
        if (!part.report.uses.empty()) {
            usage.parts.push_back(std::move(part));
        }
    }
    for (engine::Placement const& placement : found->placements) {
        if (!known.contains(placement.number)) {
            usage.others.push_back(pieceOf(*found, placement, edits[placement.edit]));
        }
    }
    return usage;
}

std::string usageJson(SequenceUsage const& usage) {
    JSON::Builder json;
    json.startChild(nullptr);
    addUsageMembers(json, usage);
    json.endChild();
    return utf8(json.getOutput());
}

} // namespace zq::panel
