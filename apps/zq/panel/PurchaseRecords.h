// The purchases that this program knows of, and what the list of what is owned says of them.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "apps/zq/OrderBook.h"
#include "apps/zq/PurchaseWatch.h"
#include "apps/zq/panel/Baskets.h"
#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/GivenLinks.h"
#include "apps/zq/panel/RepositoryDesk.h"
#include "apps/zq/sendOrder.h"
#include "host/json/Builder.h"

namespace zq::panel {

struct PurchaseClocks {
    std::function<std::chrono::steady_clock::time_point()> now = std::chrono::steady_clock::now;
    std::function<std::chrono::system_clock::time_point()> date = std::chrono::system_clock::now;
};

struct PurchaseRecord {
    // True while the list of what is owned is to be looked at for it.
    [[nodiscard]] bool isWatched() const {
        return kept.isOpen() || (kept.state == OrderState::done && kept.isAwaited);
    }
    [[nodiscard]] bool isSettled() const { return kept.state != OrderState::running && !isWatched(); }
    [[nodiscard]] bool hasOneOf(std::set<std::string> const& clips) const;
    [[nodiscard]] bool isIn(std::set<std::string> const& owned) const;
    void add(JSON::Builder& json, char const* name) const;
    [[nodiscard]] std::string json() const;

    RepositoryDesk* desk = nullptr;
    KeptOrder kept;
    bool sent = false;                  // or of another run, which may have sent it
    bool shown = false;                 // somebody was given it before it was sent
    bool lookedAt = false;              // since it came from another run
    bool unwritten = false;             // the book has it as running still
    std::optional<PurchaseWatch> watch; // from the order on, or from the first list of its account
    std::string trouble;                // why the last list could not be read
};

// Shared with work at the desks, which may end after the purchases. Thread: any, with the mutex held where a
// function says so, and else without.
class PurchaseRecords {
public:
    using Clock = PurchaseWatch::Clock;
    using Desks = std::vector<std::unique_ptr<RepositoryDesk>>;

    // All outlive it.
    PurchaseRecords(OrderBook& orders, Desks const& allDesks, EventHub& events, GivenLinks& givenLinks,
                    Baskets& itsBaskets, PurchaseClocks itsClocks);

    // These with the mutex held.
    [[nodiscard]] std::shared_ptr<PurchaseRecord> find(RepositoryDesk const& desk, std::string const& key);
    void add(std::shared_ptr<PurchaseRecord> const& record);
    void tell(PurchaseRecord const& record);
    // An order as the book has it; the pages are told where that is new.
    std::shared_ptr<PurchaseRecord> take(RepositoryDesk& desk, KeptOrder order);
    // The desks at which the list is to be looked at now, and no look waits yet.
    [[nodiscard]] std::vector<RepositoryDesk*> due();
    // The moment in the book's time that the account's list was last asked for, of those that came.
    [[nodiscard]] std::int64_t listed(RepositoryDesk const& desk, std::string const& user) const;

    // What other programs, and earlier runs, have written.
    void takeNews();
    // What has come of an order that was sent: written down, then told.
    void end(PurchaseRecord& record, OrderEnd end);
    // The list of what the account owns, read now: it decides what it can. Thread: the desk's.
    [[nodiscard]] LightweightVector<RemoteAsset> readOwned(RepositoryDesk& desk, Session& session);
    // The look that was due. Thread: the desk's.
    void lookIfAwaited(RepositoryDesk& desk, Session& session);

    OrderBook& book;
    GivenLinks& links;
    Baskets& baskets;
    PurchaseClocks const clocks;
    std::mutex mutex;                                // guards what follows, and what is in it
    std::deque<std::shared_ptr<PurchaseRecord>> all; // the latest in front

private:
    void hear(RepositoryDesk& desk, std::string const& user, std::set<std::string> const& owned,
              Clock::time_point asked, std::int64_t newest);
    void hearOwned(PurchaseRecord& record);
    void hearMissing(PurchaseRecord& record, Clock::time_point asked);
    void hearNothing(RepositoryDesk& desk, std::string const& user, std::string const& why);
    void beginWatch(PurchaseRecord& record, Clock::time_point now) const;
    void settle(PurchaseRecord& record, KeptOrder next);
    void writeEnd(PurchaseRecord& record);
    void countUnlisted(RepositoryDesk& desk, std::string const& user);

    Desks const& desks_;
    EventHub& events_;
    std::set<RepositoryDesk const*> asked_; // desks at which a look waits
    std::map<std::pair<RepositoryDesk const*, std::string>, std::int64_t> listed_;
    std::string bookTrouble_;
};

} // namespace zq::panel
