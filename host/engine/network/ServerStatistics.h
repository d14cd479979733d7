// What was exchanged with each server, and why the last exchange failed: for a person who looks for the
// reason.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace engine {

struct ServerStatistics {
    std::string server;           // "https://host:port", the port where it is not the scheme's own
    std::uint64_t requests = 0;   // calls; the redirects of one belong to it
    std::uint64_t failures = 0;   // calls without a whole answer, cancelled ones counted
    std::uint64_t refusals = 0;   // calls with a whole answer of status 400 or above
    std::uint64_t rejections = 0; // of these: the server blames the request, and does nothing of it
    std::uint64_t relayed = 0;    // of these: one before that server speaks, who cannot know what it did
    std::uint64_t bytesSent = 0;
    std::uint64_t bytesReceived = 0; // as they came over the line
    std::chrono::microseconds totalTime{0};
    std::string lastError; // one printable line, empty when no call has failed or been refused

    // Counts the status of a call's whole answer among the refusals, where it is one.
    void countStatus(int status);
};

// Thread: any.
class StatisticsTable {
public:
    // Adds the figures of one call to those of its server; an empty `lastError` keeps the earlier one.
    void add(ServerStatistics const& call);
    // In the order of the servers' names.
    [[nodiscard]] std::vector<ServerStatistics> all() const;
    // The same for the calls that the calling thread has made since it first asked.
    [[nodiscard]] std::vector<ServerStatistics> ofThisThread();

private:
    using Servers = std::map<std::string, ServerStatistics>;

    mutable std::mutex mutex_;
    Servers servers_;
    std::map<std::thread::id, Servers> byThread_; // of those that have asked
};

} // namespace engine
