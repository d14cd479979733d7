// What the tests of the network share: a network with settings of the test, and small observers.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <stdlib.h>

#include <gtest/gtest.h>

#include "host/HostServices.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "host/text/Unicode.h"

namespace test {

[[nodiscard]] inline HTTPConnectionInfo serverRecord(std::string_view name, bool secure = false) {
    HTTPConnectionInfo info;
    info.server = fromUTF8(name);
    info.secure = secure ? 1 : 0;
    return info;
}

[[nodiscard]] inline std::string bodyOf(Zq::Ptr<iHTTPReply> const& reply) {
    if (!reply || !reply->getBody()) {
        return "(no reply)";
    }
    return {reply->getBody()->getData(), reply->getBody()->getSize()};
}

// The task that the test's threads belong to.
class OneTask final : public iTaskContext {
public:
    [[nodiscard]] iBackgroundTask::eStatus currentTaskStatus() override {
        return cancelled_ ? iBackgroundTask::eCancelling : iBackgroundTask::eRunning;
    }
    void cancel() { cancelled_ = true; }

private:
    std::atomic<bool> cancelled_{false};
};

class NetworkFixture : public testing::Test {
protected:
    NetworkFixture() {
        for (char const* const name :
             {"http_proxy", "https_proxy", "all_proxy", "HTTPS_PROXY", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
            unsetenv(name);
        }
        HostServices services;
        services.tasks = &task;
        before_ = installHost(services);
    }
    ~NetworkFixture() override {
        network_.reset();
        installHost(before_);
    }

    // Made of `settings` at the first call.
    engine::CurlNetwork& network() {
        if (!network_) {
            network_ = std::make_unique<engine::CurlNetwork>(settings);
        }
        return *network_;
    }
    Zq::Ptr<iHTTPServer> server(std::string_view name, bool secure = false) {
        return network().createHTTPServer(serverRecord(name, secure));
    }
    // Closes the kept connections, as far as no server object is left.
    void forgetNetwork() { network_.reset(); }
    std::string lastError() {
        auto const all = network().statistics();
        return all.size() == 1 ? all[0].lastError : "(not one server)";
    }

    engine::NetworkSettings settings;
    OneTask task;

private:
    HostServices before_;
    std::unique_ptr<engine::CurlNetwork> network_;
};

// Writes down what it is called with.
class RecordingReceiver : public iHTTPServer::iDataReceiver {
public:
    [[nodiscard]] bool beginReceive(std::uint64_t totalLength) override {
        ++begins;
        total = totalLength;
        return takesBegin;
    }
    [[nodiscard]] bool receiveData(std::uint64_t offset, Zq::Ptr<iMemHolder> const& block) override {
        inOrder = inOrder && begins == 1 && ends == 0 && offset == data.size();
        sizes.push_back(block->getSize());
        data.append(block->getData(), block->getSize());
        return data.size() < mostBytes;
    }
    void endReceive() override { ++ends; }

    bool takesBegin = true;
    std::size_t mostBytes = SIZE_MAX; // refuses further data from here on
    int begins = 0;
    int ends = 0;
    std::uint64_t total = 12345;
    bool inOrder = true;
    std::string data;
    std::vector<std::size_t> sizes;
};

} // namespace test
