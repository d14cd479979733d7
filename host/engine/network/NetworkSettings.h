// What a person can set about the network, and the patience of its transfers.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <string>

namespace engine {

struct NetworkSettings {
    // Where a named server is really reached, "host:port" to "host:port". The name stays the one that
    // requests and certificates speak of. A server listed here is reached without the environment's proxy.
    std::map<std::string, std::string> connect;
    std::filesystem::path caFile; // PEM, trusted beside the system's authorities; empty: none
    std::string proxy;            // empty: the environment's
    std::chrono::milliseconds connectTimeout{10'000};
    std::chrono::milliseconds stallTimeout{30'000}; // a transfer that moves no byte for so long ends
};

} // namespace engine
