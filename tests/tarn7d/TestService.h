// The parts of a service in one folder, without a network, and a catalogue that is filled by hand.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "apps/tarn7d/Protocol.h"
#include "tests/tarn7d/TestRequests.h"

namespace test {

struct TestClip {
    std::string path = "clip.mov";
    std::int64_t price_cents = 500;
    int width = 720;
    int height = 576;
    std::string title = "A clip";
};

// Adds the clips, whose files need not be there as long as nobody scans; they are numbered from 1 on.
void putClips(std::filesystem::path const& catalogueFile, std::vector<TestClip> const& clips);

// Makes a clip one whose file is gone, or back.
void setPresent(std::filesystem::path const& catalogueFile, std::int64_t clipId, bool present);

class TestService {
public:
    explicit TestService(std::filesystem::path const& folder);

    // A signed-in account with so many credits.
    [[nodiscard]] tarn7d::SessionKey signIn(std::string const& name, std::int64_t credits);
    [[nodiscard]] std::int64_t accountId(std::string const& name);
    [[nodiscard]] std::int64_t credits(std::string const& name);

    // The answer to a list of commands, and the first reply of it.
    [[nodiscard]] Zq::Ptr<JSON::Element> ask(std::string const& commands, tarn7d::SessionKey session = {});
    [[nodiscard]] Zq::Ptr<JSON::Element> askOne(std::string const& command, tarn7d::SessionKey session = {});

    std::int64_t now = 1'800'000'000; // of the wall clock
    std::chrono::steady_clock::time_point steadyNow{};
    std::filesystem::path const footage;
    std::filesystem::path const catalogueFile;
    std::filesystem::path const accountsFile;
    tarn7d::Catalogue catalogue;
    tarn7d::Accounts accounts;
    tarn7d::Sessions sessions;
    tarn7d::SignInThrottle throttle;
    tarn7d::Shop shop;
    tarn7d::Payments payments;
    tarn7d::DownloadAddresses downloads;
    tarn7d::Protocol protocol;
};

} // namespace test
