// Whether the servers of the repositories can be reached from here.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "host/network/iHTTPServer.h"

namespace zq::panel {

struct ServerAnswer {
    std::string name; // of the server
    bool ok = false;  // it has answered, whatever it said
    std::string text; // in words
    double seconds = 0;
};

// Asks each server for "/", side by side, over the host's network. One that has not answered within the time
// counts as not reached. Ends early when the calling task is cancelled. Thread: any.
[[nodiscard]] std::vector<ServerAnswer> testConnections(std::vector<HTTPConnectionInfo> const& servers,
                                                        std::chrono::milliseconds atMost);

} // namespace zq::panel
