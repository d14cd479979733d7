// What becomes of an order: what its answer says, and what the account's list of what it owns says. The same
// for every program that writes into the book of orders.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "apps/zq/OrderBook.h"
#include "apps/zq/Reason.h"
#include "apps/zq/Session.h"
#include "apps/zq/buyClips.h"

namespace zq {

// What is certain of an order that was sent.
struct OrderEnd {
    OrderState state = OrderState::doubtful;
    bool wasEnded = false;             // as KeptOrder::wasEnded
    std::optional<std::int32_t> known; // the repository's code; nothing where it gave none
    Purchase purchase;                 // its words say what has come of it
};

// Sends the order, which is in the book as running. What is certain of its end decides, and nothing that only
// seems so. Throws nothing: a failure is in doubt, or refused where nothing was sent. Thread: the session's.
[[nodiscard]] OrderEnd sendOrder(Session& session, std::vector<std::string> const& clips, Payment payment);
// Of one whose sending was not followed to its end.
[[nodiscard]] OrderEnd orderOfUnknownEnd(std::string const& why);

// The order with that end.
[[nodiscard]] KeptOrder ended(KeptOrder order, OrderEnd end);
// The order, when the list of what its account owns has all of its clips.
[[nodiscard]] KeptOrder asListed(KeptOrder order);
// The order, when a list that was asked for at the end of its watch has not.
[[nodiscard]] KeptOrder asNeverListed(KeptOrder order);
// How long after an order's end the first list decides that does not have its clips.
[[nodiscard]] std::chrono::seconds watchLength(KeptOrder const& order);

// Why an order is not begun: another one has one of its clips.
struct InTheWay {
    Reason reason;
    char const* text;
};
[[nodiscard]] InTheWay inTheWayAs(KeptOrder const& other);

} // namespace zq
