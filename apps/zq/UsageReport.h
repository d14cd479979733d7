// What the clips of a sequence cost: every use of the repository's clips, and what is still to be bought.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "apps/zq/Money.h"
#include "apps/zq/SequenceView.h"

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

// "owned", "not owned", "unknown".
[[nodiscard]] char const* wordFor(Ownership ownership);
// The total in a sentence, without a line end.
[[nodiscard]] std::string totalInWords(UsageReport const& report);

} // namespace zq
