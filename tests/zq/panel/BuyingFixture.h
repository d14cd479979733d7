// Buying at one repository whose account, answers and failures are the test's.
#pragma once

#include "tests/zq/panel/PanelFixture.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "apps/zq/Text.h"
#include "apps/zq/panel/Purchases.h"

namespace panel_tests {

class Buying : public testing::Test {
protected:
    Buying() {
        prepare(*repository_);
        handlers_ = begin(*repository_);
    }
    // The account is signed in, and what is bought there is bought here.
    void prepare(ShelfRepository& repository) {
        repository.signedInUser = L"ada";
        repository.onPurchase = [this](ShelfRepository&, LightweightVector<RemoteAsset> const& assets,
                                       bool byPage) {
            sent_.push_back((byPage ? "page" : "credits") + std::string(":") + idsOf(assets));
            network_.bytesSent += 100;
            ++network_.requests;
            return answer_();
        };
        repository.onOwned = [this](ShelfRepository&) {
            if (offline_) {
                ++network_.failures;
                network_.lastError = "no route";
                return LightweightVector<RemoteAsset>();
            }
            std::lock_guard const lock(mutex_);
            return owned_;
        };
    }
    std::unique_ptr<Handlers> begin(ShelfRepository& repository) {
        return std::make_unique<Handlers>(home_.engine(), repository,
                                          [this] { return std::vector{network_}; });
    }
    static std::string idsOf(LightweightVector<RemoteAsset> const& assets) {
        std::string all;
        for (RemoteAsset const& asset : assets) {
            all += " " + zq::utf8(asset.id);
        }
        return all;
    }
    Zq::Ptr<JSON::Element> buy(std::string const& key, std::string const& clips,
                               std::string const& payment = "credits") {
        return handlers_->json("POST", "/purchases", {}, {}, order(key, clips, payment));
    }
    static std::string order(std::string const& key, std::string const& clips,
                             std::string const& payment = "credits") {
        return "{\"key\":\"" + key + "\",\"clips\":[" + clips + "],\"payment\":\"" + payment + "\"}";
    }
    std::string failure(std::string const& body) {
        return handlers_->failureOf("POST", "/purchases", {}, {}, body);
    }
    // The purchase as the list tells it.
    Zq::Ptr<JSON::Element> listed(std::uint16_t index = 0) {
        return item(handlers_->json("GET", "/purchases"), "purchases", index);
    }
    [[nodiscard]] int countListed() {
        return child(handlers_->json("GET", "/purchases"), "purchases")->getNumChildren();
    }
    // The service carries it out or not; its answer is lost in any case.
    std::int32_t losesAnswer() {
        ++network_.failures;
        network_.lastError = "closed";
        return 0;
    }
    // Its answer is an error, carried out or not.
    std::int32_t failsWith(int status) {
        network_.countStatus(status);
        network_.lastError = "error " + std::to_string(status);
        return 0;
    }
    // The desk may be reading the list by itself.
    void own(char const* id) {
        std::lock_guard const lock(mutex_);
        owned_.push_back(ShelfRepository::clip(id, id, ""));
    }
    void ownNothing() {
        std::lock_guard const lock(mutex_);
        owned_ = {};
    }
    void signInAs(wchar_t const* user) {
        handlers_->desk().ask([&](zq::Session&) { repository_->signedInUser = user; });
    }
    // So much time passes, with looks at what is due.
    void pass(std::chrono::seconds time) {
        handlers_->now += time;
        handlers_->purchases().lookAtDue();
        handlers_->flush();
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    engine::ServerStatistics network_{.server = "https://shelf.example", .lastError = {}};
    std::function<std::int32_t()> answer_ = [] { return 2; };
    std::vector<std::string> sent_;
    std::atomic<bool> offline_{false};
    std::mutex mutex_;
    LightweightVector<RemoteAsset> owned_; // under the mutex
    std::unique_ptr<Handlers> handlers_;
};

} // namespace panel_tests
