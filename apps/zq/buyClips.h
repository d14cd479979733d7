// Buying clips at the service. Programs go by sendOrder, which tells what is certain of the end.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/zq/Session.h"

namespace zq {

enum class Payment { credits, cash };

struct Purchase {
    // Result codes of the repository.
    static constexpr std::int32_t nothingBought = 0;
    static constexpr std::int32_t done = 2;
    static constexpr std::int32_t refused = 3;

    std::int32_t code = nothingBought;
    std::string words;                   // one line, in any case; not made plain
    std::string page;                    // where to pay, of a payment in cash
    bool browserStarted = false;         // and has been handed the page
    std::optional<std::int64_t> credits; // left on the account, where the service has told
};

// Throws CommandError where the repository sells nothing.
void requireSale(Session const& session);

// Buys the clips of these numbers as one purchase; one that is named twice is bought once. Throws
// CommandError where nobody is signed in, the repository sells nothing, or a number is none.
[[nodiscard]] Purchase buyClips(Session& session, std::vector<std::string> const& ids, Payment payment);

} // namespace zq
