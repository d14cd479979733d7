#include "host/engine/network/ServerStatistics.h"

namespace engine {

void StatisticsTable::add(ServerStatistics const& call) {
    std::lock_guard const lock(mutex_);
    ServerStatistics& sum = servers_[call.server];
    sum.server = call.server;
    sum.requests += call.requests;
    sum.failures += call.failures;
    sum.refusals += call.refusals;
    sum.bytesSent += call.bytesSent;
    sum.bytesReceived += call.bytesReceived;
    sum.totalTime += call.totalTime;
    if (!call.lastError.empty()) {
        sum.lastError = call.lastError;
    }
}

std::vector<ServerStatistics> StatisticsTable::all() const {
    std::lock_guard const lock(mutex_);
    std::vector<ServerStatistics> list;
    list.reserve(servers_.size());
    for (auto const& [name, statistics] : servers_) {
        list.push_back(statistics);
    }
    return list;
}

} // namespace engine
