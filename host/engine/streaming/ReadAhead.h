// How far ahead of a reader its file is fetched: not at all while it jumps, or finds what it wants.
#pragma once

#include <chrono>
#include <cstdint>

#include "host/engine/streaming/ByteRange.h"

namespace engine {

// Of one reader. Thread: one at a time.
class ReadAhead {
public:
    using Time = std::chrono::steady_clock::time_point;

    static constexpr std::uint64_t firstPiece_bytes = std::uint64_t{256} << 10;
    static constexpr std::uint64_t largestPiece_bytes = std::uint64_t{2} << 20;
    static constexpr std::uint64_t largestWindow_bytes = 2 * largestPiece_bytes;
    static constexpr std::uint64_t smallestLimit_bytes = std::uint64_t{2} << 20;
    static constexpr std::uint64_t limit_s = 10; // of what the reader takes

    // A read begins.
    void begin(ByteRange range, Time now) noexcept;
    // The read that began last has to wait for the network.
    void miss() noexcept;
    // A piece up to there was asked for.
    void issued(std::uint64_t end) noexcept;
    // Nothing is fetched ahead until the reader misses again.
    void stop() noexcept;

    // Bytes of the next request ahead; 0 for none.
    [[nodiscard]] std::uint64_t piece_bytes() const noexcept { return active_ ? piece_bytes_ : 0; }
    // How far behind the reader's position the requests may reach.
    [[nodiscard]] std::uint64_t window_bytes() const noexcept;

private:
    std::uint64_t next_ = 0; // where a read would go on
    unsigned consecutive_ = 0;
    bool active_ = false;
    std::uint64_t piece_bytes_ = firstPiece_bytes;
    std::uint64_t aheadEnd_ = 0;
    std::uint64_t rate_bytes_per_s_ = 0;
    std::uint64_t start_ = 0; // of the run of consecutive reads
    Time started_;
};

} // namespace engine
