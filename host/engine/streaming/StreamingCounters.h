// What streaming has cost so far. Thread: any.
#pragma once

#include <atomic>
#include <cstdint>

namespace engine {

struct StreamingCounters {
    std::atomic<std::uint64_t> opens{0};
    std::atomic<std::uint64_t> requests{0};
    std::atomic<std::uint64_t> bytesReceived{0};
    std::atomic<std::uint64_t> bytesRead{0};
    std::atomic<std::uint64_t> bytesFromStore{0};
};

} // namespace engine
