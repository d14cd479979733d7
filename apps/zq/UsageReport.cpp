#include "apps/zq/UsageReport.h"

#include "apps/zq/Text.h"

namespace zq {

namespace {

Ownership ownershipOf(std::string const& clip, std::optional<std::set<std::string>> const& owned) {
    if (!owned) {
        return Ownership::unknown;
    }
    return owned->contains(clip) ? Ownership::owned : Ownership::notOwned;
}

// Adds the price of a clip to the total, which a second currency ends.
void addToTotal(UsageReport& report, Price const& price) {
    if (!report.total) {
        return;
    }
    if (report.total->currency.empty() && report.total->cents == 0) {
        report.total->currency = price.currency;
    }
    if (report.total->currency == price.currency) {
        report.total->cents += price.cents;
    } else {
        report.total.reset();
    }
}

} // namespace

UsageReport reportUsage(SequenceView const& view, std::optional<std::set<std::string>> const& owned) {
    UsageReport report;
    report.sequence = view.sequence.name;
    report.ownershipKnown = owned.has_value();
    report.total = Price();
    std::set<std::string> counted;
    for (SequencePiece const& piece : view.pieces) {
        if (piece.clipId.empty()) {
            continue;
        }
        ClipUse use;
        use.piece = piece;
        use.ownership = ownershipOf(piece.clipId, owned);
        use.priceText = std::string(piece.edit.logAttributes.find(LogAttribute(LogAttribute::ePrice)).view());
        use.price = parsePrice(use.priceText);
        if (use.ownership != Ownership::owned && counted.insert(piece.clipId).second) {
            ++report.clipsToBuy;
            if (use.price) {
                addToTotal(report, *use.price);
            } else {
                ++report.clipsWithoutPrice;
            }
        }
        report.uses.push_back(std::move(use));
    }
    return report;
}

UsageReport reportUsage(Session& session, std::string const& sequence) {
    SequenceView const view = viewSequence(session, sequence);
    std::optional<std::set<std::string>> owned;
    if (!session.needsSignIn()) {
        owned.emplace();
        for (SequencePiece const& piece : view.pieces) {
            owned->insert(piece.clipId);
        }
    } else if (!session.user().empty()) {
        owned.emplace();
        for (RemoteAsset const& asset : session.ownedAssets()) {
            owned->insert(utf8(asset.id));
        }
    }
    UsageReport report = reportUsage(view, owned);
    report.credits = session.credits();
    return report;
}

char const* wordFor(Ownership ownership) {
    switch (ownership) {
    case Ownership::owned:
        return "owned";
    case Ownership::notOwned:
        return "not owned";
    case Ownership::unknown:
        break;
    }
    return "unknown";
}

std::string totalInWords(UsageReport const& report) {
    if (report.clipsToBuy == 0) {
        return report.uses.empty() ? "no clip of this repository is used" : "everything is owned";
    }
    std::string const clips =
        report.clipsToBuy == 1 ? "1 clip" : std::to_string(report.clipsToBuy) + " clips";
    std::string text = "to buy: " + clips;
    text += report.total ? ", " + priceText(*report.total) : ", in several currencies";
    if (report.clipsWithoutPrice > 0) {
        text += " and " + std::to_string(report.clipsWithoutPrice) + " of unknown price";
    }
    if (!report.ownershipKnown) {
        text += "; less what is owned, which a sign-in tells";
    }
    return report.credits ? text + "; credits left: " + std::to_string(*report.credits) : text;
}

} // namespace zq
