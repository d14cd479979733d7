// The road from a search to a relinked edit over the real parts: the service in this process, the host, the
// client. Two small clips, and the account "ada" with credits.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "apps/tarn7d/FaultDesk.h"
#include "apps/tarn7d/Server.h"
#include "tests/road/RoadHost.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestFootage.h"

namespace road_tests {

class Road : public testing::Test {
protected:
    static constexpr std::int64_t credits = 100;

    // "car.mov": 25 frames a second; "tape.mov": 30000/1001, so that its rate has to be asked for.
    Road();

    // Connected and signed in.
    RoadHost& host() noexcept { return *host_; }
    [[nodiscard]] tarn7d::FaultDesk& desk() { return service_->faults(); }

    // The host as after a restart, connected and signed in again.
    void startAnew();
    // Adds footage under that name, for the service to have at once.
    void addFootage(test::Footage footage, std::string const& file);

    // What a search finds by the word; fails the test where that is nothing.
    [[nodiscard]] RemoteAsset clip(std::string_view word);
    // Buys it with credits and gives it as it is owned.
    [[nodiscard]] RemoteAsset bought(std::string_view word);
    [[nodiscard]] static LightweightVector<RemoteAsset> listOf(RemoteAsset const& asset);
    // Credits of the account, as the service tells; -1 when it does not.
    [[nodiscard]] std::int64_t creditsLeft();
    [[nodiscard]] std::size_t countOwned() { return host().client().getPurchasedAssets().size(); }

    // The footage behind the clip, and what the service sends under an address on its public name.
    [[nodiscard]] std::string footageBytes(std::string const& file) const;
    [[nodiscard]] std::string sentBytes(std::string const& path) const;

    // Waits until the desk's first rule has met a request.
    void waitForFault();
    // Runs the work as a task, cancels it once the desk's rule has met a request, and gives the time from
    // there to the end of the task.
    [[nodiscard]] std::chrono::milliseconds cancelledAtFault(std::function<void()> work);

    test::TemporaryFolder folder;

private:
    std::unique_ptr<tarn7d::Server> service_;
    int port_ = 0;
    std::unique_ptr<RoadHost> host_;
};

} // namespace road_tests
