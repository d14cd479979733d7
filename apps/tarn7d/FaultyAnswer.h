// Answers requests, and goes wrong where a rule of the fault desk says so.
#pragma once

#include <atomic>
#include <functional>
#include <span>
#include <string>

#include <httplib.h>

#include "apps/tarn7d/ConnectionRegistry.h"
#include "apps/tarn7d/DownloadAddresses.h"
#include "apps/tarn7d/FaultDesk.h"

namespace tarn7d {

// Any thread. What it is given outlives it.
class FaultyAnswer {
public:
    // Fills the answer as the service does without a fault. With Expiry::past, addresses that are given or
    // used have expired.
    using Handler = std::function<void(DownloadAddresses::Expiry)>;

    FaultyAnswer(FaultDesk& desk, ConnectionRegistry& connections) : desk_(desk), connections_(connections) {}

    // Runs the handler, with the fault that the request meets, if any.
    void answer(httplib::Request const& request, httplib::Response& response,
                std::span<std::string const> commandWords, Handler const& handler);

private:
    void spoilRequest(FaultRule const& rule, httplib::Request& request) const;
    void spoilResponse(FaultRule const& rule, httplib::Request const& request, httplib::Response& response);

    FaultDesk& desk_;
    ConnectionRegistry& connections_;
    std::atomic<unsigned> changes_{0}; // so that no changed validator comes twice
};

} // namespace tarn7d
