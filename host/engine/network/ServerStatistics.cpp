#include "host/engine/network/ServerStatistics.h"

namespace engine {

namespace {

void addTo(ServerStatistics& sum, ServerStatistics const& call) {
    sum.server = call.server;
    sum.requests += call.requests;
    sum.failures += call.failures;
    sum.refusals += call.refusals;
    sum.rejections += call.rejections;
    sum.relayed += call.relayed;
    sum.bytesSent += call.bytesSent;
    sum.bytesReceived += call.bytesReceived;
    sum.totalTime += call.totalTime;
    if (!call.lastError.empty()) {
        sum.lastError = call.lastError;
    }
}

std::vector<ServerStatistics> listOf(std::map<std::string, ServerStatistics> const& servers) {
    std::vector<ServerStatistics> list;
    list.reserve(servers.size());
    for (auto const& [name, statistics] : servers) {
        list.push_back(statistics);
    }
    return list;
}

} // namespace

void ServerStatistics::countStatus(int status) {
    constexpr int firstError = 400;
    constexpr int firstServerError = 500;
    constexpr int timeOut = 408;
    // 52x are those of a large network of gateways.
    bool const isRelayed = status == timeOut || status == 502 || status == 504 || status / 10 == 52;
    if (status < firstError) {
        return;
    }
    ++refusals;
    relayed += isRelayed ? 1 : 0;
    rejections += !isRelayed && status < firstServerError ? 1 : 0;
}

void StatisticsTable::add(ServerStatistics const& call) {
    std::lock_guard const lock(mutex_);
    addTo(servers_[call.server], call);
    if (auto const found = byThread_.find(std::this_thread::get_id()); found != byThread_.end()) {
        addTo(found->second[call.server], call);
    }
}

std::vector<ServerStatistics> StatisticsTable::all() const {
    std::lock_guard const lock(mutex_);
    return listOf(servers_);
}

std::vector<ServerStatistics> StatisticsTable::ofThisThread() {
    std::lock_guard const lock(mutex_);
    return listOf(byThread_[std::this_thread::get_id()]);
}

} // namespace engine
