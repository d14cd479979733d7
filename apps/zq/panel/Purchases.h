// The purchases of a run: each is sent once, and one whose end is open is watched until the list of what is
// owned tells it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "apps/zq/buyClips.h"
#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/GivenLinks.h"
#include "apps/zq/panel/RepositoryDesk.h"

namespace zq::panel {

// Ends before the desks that it was given, and after nobody calls it any more. Thread: any, unless said
// otherwise.
class Purchases {
public:
    using Clock = std::chrono::steady_clock;
    using Now = std::function<Clock::time_point()>;
    // Who calls lookAtDue().
    enum class Watching { byItself, byOthers };
    static constexpr std::size_t most = 1'000; // of the settled ones, the oldest go

    // The events and the links outlive it and the desks.
    Purchases(EventHub& events, GivenLinks& links, Now now = Clock::now,
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
    // purchase of that key as it is now, and nothing is sent. Throws ApiError(conflict) where nobody is
    // signed in or a clip is in a purchase that runs or is doubtful, CommandError where no connection can be
    // made.
    [[nodiscard]] std::string buy(RepositoryDesk& desk, Order const& order);
    // Those of the repository as JSON, the latest first.
    [[nodiscard]] std::string list(RepositoryDesk const& desk) const;

    // RepositoryDesk::readOwned, and tells the purchases. Thread: the desk's.
    [[nodiscard]] LightweightVector<RemoteAsset> readOwned(RepositoryDesk& desk, Session& session);
    // Has the desks ask for what is owned where a purchase is due for that; waits for nothing.
    void lookAtDue();

private:
    class Record;
    class Records;

    std::shared_ptr<Records> const records_; // shared with work that waits at a desk
    Now const now_;
    std::jthread thread_;
};

} // namespace zq::panel
