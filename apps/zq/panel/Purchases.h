// The purchases of the panel: each is sent once, and one whose end is open is watched until the list of what
// is owned tells it, in whichever run of whichever program of this home it was sent.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "apps/zq/OrderBook.h"
#include "apps/zq/panel/Baskets.h"
#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/GivenLinks.h"
#include "apps/zq/panel/PurchaseRecords.h"
#include "apps/zq/panel/RepositoryDesk.h"

namespace zq::panel {

// Ends before the desks that it was given, and after nobody calls it any more. Thread: any, unless said
// otherwise.
class Purchases {
public:
    using Clock = std::chrono::steady_clock;
    using Clocks = PurchaseClocks;
    // Who calls lookAtDue().
    enum class Watching { byItself, byOthers };

    // The book, the events, the links and the baskets outlive it and the desks. What is bought leaves its
    // basket.
    Purchases(OrderBook& book, std::vector<std::unique_ptr<RepositoryDesk>> const& desks, EventHub& events,
              GivenLinks& links, Baskets& baskets, Clocks clocks = {},
              Watching watching = Watching::byItself);
    ~Purchases();
    Purchases(Purchases const&) = delete;
    Purchases& operator=(Purchases const&) = delete;

    struct Order {
        std::string key;
        std::vector<std::string> clips; // each once, at least one
        Payment payment = Payment::credits;
    };
    // Buys, and gives the purchase as JSON with what came of it. With a key that was used before, the
    // purchase of that key as it is now, and nothing is sent. Throws only where nothing was sent:
    // ApiError(conflict) where nobody is signed in, the order cannot be written down, or a clip is in a
    // purchase of this account that runs or is in doubt, or is bought; CommandError where no connection can
    // be made, or another program has bought a clip and the list that would tell cannot be read.
    [[nodiscard]] std::string buy(RepositoryDesk& desk, Order const& order);
    // For a request whose answer was lost: an order of that key is not sent any more where it was not yet.
    // Gives the purchase as JSON. Throws ApiError(conflict) where that cannot be written down.
    [[nodiscard]] std::string withdraw(RepositoryDesk& desk, std::string const& key);
    // Those of the repository as JSON, the latest first: of this run, and of others what was open in it.
    [[nodiscard]] std::string list(RepositoryDesk const& desk) const;
    // The clips of that account's purchases that run or are in doubt.
    [[nodiscard]] std::set<std::string> undecided(RepositoryDesk const& desk, std::string const& user) const;

    // RepositoryDesk::readOwned, and tells the purchases. Thread: the desk's.
    [[nodiscard]] LightweightVector<RemoteAsset> readOwned(RepositoryDesk& desk, Session& session);
    // Has the desk read the list for the account that is signed in now, later.
    void lookLater(RepositoryDesk& desk);
    // Takes over what other programs have written, and has the desks ask for what is owned where a purchase
    // is due for that; waits for no desk.
    void lookAtDue();

private:
    std::shared_ptr<PurchaseRecords> const records_; // shared with work that waits at a desk
    std::jthread thread_;
};

} // namespace zq::panel
