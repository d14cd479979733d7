// What the clips of a sequence cost: every use of the repositories' clips, and what is still to be bought.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "apps/zq/Money.h"
#include "apps/zq/SequenceView.h"
#include "host/json/Builder.h"

namespace zq {

enum class Ownership { owned, notOwned, unknown };

struct ClipUse {
    SequencePiece piece;
    Ownership ownership = Ownership::unknown;
    std::string priceText; // as the clip had it when its edit was made
    std::optional<Price> price;
};

struct UsageReport {
    std::string sequence;
    std::vector<ClipUse> uses;
    // Of the clips that are not known to be owned, each once however often it is used. Nothing where their
    // currencies differ.
    std::optional<Price> total;
    std::size_t clipsToBuy = 0;
    std::size_t clipsWithoutPrice = 0; // of those: not in the total
    bool ownershipKnown = false;
    std::optional<std::int64_t> credits; // left on the account, where the service has told
};

// `owned` has the numbers of the clips that the account owns; nothing where nobody knows.
[[nodiscard]] UsageReport reportUsage(SequenceView const& view,
                                      std::optional<std::set<std::string>> const& owned);
// The same with what the account of this session owns: asked for where somebody is signed in. Throws
// CommandError where there is no such sequence or the service does not answer.
[[nodiscard]] UsageReport reportUsage(Session& session, std::string const& sequence);

// What a sequence uses of one repository, under whose terms.
struct RepositoryUsage {
    std::string shortName;
    std::string name;
    std::string user;        // who is signed in; empty: nobody
    std::string legalNotice; // plain text, from the service
    UsageReport report;
};

// Of a whole sequence.
struct SequenceUsage {
    std::string sequence;
    std::vector<RepositoryUsage> parts;
    // Pieces that are of none of these: nobody knows here what they cost.
    std::vector<SequencePiece> others;
};

// What the session's repository tells of itself, without a report.
[[nodiscard]] RepositoryUsage describeLicensor(Session& session);
// The sequence as the session's repository alone sees it; as reportUsage(session, sequence).
[[nodiscard]] SequenceUsage usageOf(Session& session, std::string const& sequence);

// The usage as a program and as a spreadsheet get it, from the command line and from the panel alike: members
// without the braces, and a table with a header. Uses stand in the order of the sequence.
void addUsageMembers(JSON::Builder& json, SequenceUsage const& usage);
[[nodiscard]] std::string usageCsv(SequenceUsage const& usage);

// "owned", "not owned", "unknown".
[[nodiscard]] char const* wordFor(Ownership ownership);
// The total in a sentence, without a line end.
[[nodiscard]] std::string totalInWords(UsageReport const& report);

} // namespace zq
