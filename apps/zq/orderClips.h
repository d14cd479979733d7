// Orders of a program that sends one and ends: in the same book as the panel's, and on disk before they are
// sent.
#pragma once

#include <string>
#include <vector>

#include "apps/zq/sendOrder.h"

namespace zq {

// What came of an order, and in which words for a person at a terminal.
struct ClipOrder {
    OrderState state = OrderState::doubtful;
    Purchase purchase;
    std::string unwritten; // why the outcome is not in the book; empty: it is

    [[nodiscard]] bool isPlaced() const { return state == OrderState::done || state == OrderState::waiting; }
};

// Buys the clips of these numbers as one order; one that is named twice is bought once. Throws CommandError
// only where nothing was sent: nobody is signed in, the repository sells nothing, a number is none, the order
// cannot be written down, or another one of the account that runs, is in doubt, or is done without being in
// the account's list, has one of the clips. Thread: the session's.
[[nodiscard]] ClipOrder orderClips(Session& session, std::vector<std::string> const& ids, Payment payment);

// What a list of what is owned has told of the account's orders.
struct OrdersAtList {
    std::vector<KeptOrder> told; // that were in doubt or waited, and are decided now, or are in doubt still
    std::string trouble;         // why not all that it tells was written down; empty: it was
};

// Writes down what the list, which was read just now, tells of the orders of the account that is signed in.
// Thread: the session's.
[[nodiscard]] OrdersAtList settleOrders(Session& session, LightweightVector<RemoteAsset> const& owned);

} // namespace zq
