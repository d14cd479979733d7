#include "apps/zq/UsageReport.h"

#include <algorithm>

#include "apps/zq/Csv.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/RichText.h"
#include "apps/zq/Text.h"
#include "apps/zq/commands/SequenceListing.h"

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

// A use with the repository that it is of.
struct Row {
    RepositoryUsage const* part;
    ClipUse const* use;
};

std::vector<Row> rowsOf(SequenceUsage const& usage) {
    std::vector<Row> rows;
    for (RepositoryUsage const& part : usage.parts) {
        for (ClipUse const& use : part.report.uses) {
            rows.push_back({&part, &use});
        }
    }
    std::ranges::stable_sort(rows, {}, [](Row const& row) { return row.use->piece.placement.start; });
    return rows;
}

// Of all repositories.
struct Sums {
    std::optional<Price> total = Price(); // nothing where currencies differ
    std::size_t clipsToBuy = 0;
    std::size_t clipsWithoutPrice = 0;
    bool ownershipKnown = true;
    std::optional<std::int64_t> credits; // those of several accounts make no sum

    // Empty where no price is in it.
    [[nodiscard]] std::string totalText() const {
        return total && clipsToBuy > clipsWithoutPrice ? priceText(*total) : std::string();
    }
};

void add(std::optional<Price>& sum, std::optional<Price> const& more) {
    bool const differ =
        !sum || !more || (sum->cents != 0 && more->cents != 0 && sum->currency != more->currency);
    if (differ) {
        sum.reset();
    } else if (more->cents != 0) {
        sum->currency = more->currency;
        sum->cents += more->cents;
    }
}

Sums sumsOf(SequenceUsage const& usage) {
    Sums sums;
    for (RepositoryUsage const& part : usage.parts) {
        add(sums.total, part.report.total);
        sums.clipsToBuy += part.report.clipsToBuy;
        sums.clipsWithoutPrice += part.report.clipsWithoutPrice;
        sums.ownershipKnown = sums.ownershipKnown && part.report.ownershipKnown;
    }
    if (usage.parts.size() == 1) {
        sums.credits = usage.parts.front().report.credits;
    }
    return sums;
}

void addCount(JSON::Builder& json, char const* key, std::optional<std::int64_t> const& count) {
    json.add(key, wide(count ? std::to_string(*count) : "null"), false);
}

std::vector<std::string> cells(SequencePiece const& piece) {
    return {piece.clipId,    utf8(piece.edit.name()), piece.sourceIn,
            piece.sourceOut, piece.recordIn,          piece.recordOut};
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

RepositoryUsage describeLicensor(Session& session) {
    RepositoryUsage part;
    RepositoryDescription const description = session.repository().getDescription();
    part.shortName = utf8(session.shortName());
    part.name = utf8(session.repository().getName());
    part.user = session.user();
    part.legalNotice = plainFromRich(utf8(description.legalNotice));
    return part;
}

SequenceUsage usageOf(Session& session, std::string const& sequence) {
    SequenceUsage usage;
    usage.sequence = sequence;
    for (SequencePiece& piece : viewSequence(session, sequence).pieces) {
        if (piece.clipId.empty()) {
            usage.others.push_back(std::move(piece));
        }
    }
    RepositoryUsage part = describeLicensor(session);
    part.report = reportUsage(session, sequence);
    usage.parts.push_back(std::move(part));
    return usage;
}

void addUsageMembers(JSON::Builder& json, SequenceUsage const& usage) {
    addText(json, "sequence", usage.sequence);
    json.startArray("uses");
    for (Row const& row : rowsOf(usage)) {
        json.startChild(nullptr);
        addText(json, "repository", row.part->shortName);
        addPieceMembers(json, row.use->piece);
        addText(json, "owned", wordFor(row.use->ownership));
        addText(json, "priceText", row.use->priceText);
        json.add("price", wide(row.use->price ? amountText(row.use->price->cents) : "null"), false);
        json.endChild();
    }
    json.endArray();
    json.startArray("others");
    for (SequencePiece const& piece : usage.others) {
        json.startChild(nullptr);
        addPieceMembers(json, piece);
        json.endChild();
    }
    json.endArray();
    json.startArray("repositories");
    for (RepositoryUsage const& part : usage.parts) {
        json.startChild(nullptr);
        addText(json, "shortName", part.shortName);
        addText(json, "name", part.name);
        addText(json, "user", part.user);
        addText(json, "legalNotice", part.legalNotice);
        addCount(json, "credits", part.report.credits);
        json.endChild();
    }
    json.endArray();
    Sums const sums = sumsOf(usage);
    addNumber(json, "clipsToBuy", sums.clipsToBuy);
    addNumber(json, "clipsWithoutPrice", sums.clipsWithoutPrice);
    json.add("total", wide(sums.total ? amountText(sums.total->cents) : "null"), false);
    addText(json, "totalText", sums.totalText());
    json.add("ownershipKnown", sums.ownershipKnown);
    addCount(json, "credits", sums.credits);
}

std::string usageCsv(SequenceUsage const& usage) {
    std::vector<std::string> const header{"repository", "clip",      "name",       "source in",
                                          "source out", "record in", "record out", "owned",
                                          "price",      "licensor",  "account",    "legal notice"};
    std::string text = csvRecord(header);
    for (Row const& row : rowsOf(usage)) {
        std::vector<std::string> record = cells(row.use->piece);
        record.insert(record.begin(), row.part->shortName);
        record.insert(record.end(), {wordFor(row.use->ownership), row.use->priceText, row.part->name,
                                     row.part->user, row.part->legalNotice});
        text += csvRecord(record);
    }
    for (SequencePiece const& piece : usage.others) {
        std::vector<std::string> record = cells(piece);
        record.insert(record.begin(), std::string());
        record.insert(record.end(), {wordFor(Ownership::unknown), "", "", "", ""});
        text += csvRecord(record);
    }
    return text;
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
