// Whether the servers of the repositories can be reached from here.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "apps/zq/ServiceWatch.h"
#include "host/network/iHTTPServer.h"

namespace zq::panel {

struct ServerAnswer {
    std::string name;                 // of the server
    bool ok = false;                  // it has answered, whatever it said
    char const* reason = "no_answer"; // "answered", "no_answer", "late", "no_address"
    std::int32_t status = 0;          // of the answer
    std::string text;                 // in words
    double seconds = 0;
};

// Asks each server for "/", side by side, over the host's network. One that has not answered within the time
// counts as not reached. Ends early when the calling task is cancelled. Why one is not reached is told by
// `statistics`, those of the thread that calls it (CurlNetwork::statisticsOfThisThread); without it nothing
// is told but that no answer came. Thread: any.
[[nodiscard]] std::vector<ServerAnswer> testConnections(std::vector<HTTPConnectionInfo> const& servers,
                                                        std::chrono::milliseconds atMost,
                                                        StatisticsSource const& statistics = {});

} // namespace zq::panel
