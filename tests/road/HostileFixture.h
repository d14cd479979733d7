// A service that lies, and a host that believes it as far as it must.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

#include "tests/road/RoadHost.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WebServer.h"

namespace road_tests {

// A list of items with one version each that needs no request for its rate.
struct LyingItem {
    std::string bid; // as it stands in JSON
    std::string ext;
};
[[nodiscard]] std::string ownedAnswer(std::vector<LyingItem> const& items);

class HostileRoad : public testing::Test {
protected:
    // Every command succeeds; the account owns what `owned` says, and every download leads to `file`.
    HostileRoad();

    RoadHost& host() noexcept { return *host_; }
    // The answer to get_downloads_formatted.
    void owns(std::string answer);
    void owns(std::vector<LyingItem> const& items) { owns(ownedAnswer(items)); }
    // The full file of everything, with or without its length announced.
    void sends(std::string bytes, bool tellsLength = true);
    [[nodiscard]] int downloadsAsked() const noexcept { return downloads_; }

    test::TemporaryFolder folder;

private:
    [[nodiscard]] std::string answerTo(std::string const& body);

    std::mutex mutex_; // guards the next three
    std::string owned_;
    std::string file_;
    bool tellsLength_ = true;
    std::atomic<int> downloads_{0};
    std::unique_ptr<test::WebServer> service_;
    std::unique_ptr<RoadHost> host_;
};

} // namespace road_tests
