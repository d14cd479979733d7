// Which parts of a file to ask for next, and which requests to leave.
//
// Pure: what runs and what is wanted goes in, what to do comes out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "host/engine/streaming/ByteRange.h"

namespace engine {

struct PlanLimits {
    static constexpr std::uint64_t join_bytes = std::uint64_t{128} << 10;
    static constexpr std::uint64_t mergedGap_bytes = std::uint64_t{64} << 10;
    static constexpr std::uint64_t finish_bytes = std::uint64_t{256} << 10;
    static constexpr std::uint64_t largestRequest_bytes = std::uint64_t{4} << 20;
};

struct RunningRange {
    ByteRange rest;    // what has not arrived yet
    bool keep = false; // of use also where no reader wants it now
};

// What one reader wants.
struct ReadNeed {
    ByteRange want;             // what it waits for, from the first missing byte on; empty where it does not
    std::uint64_t position = 0; // where it goes on
    std::uint64_t piece_bytes = 0;  // of a request ahead; 0 for none
    std::uint64_t window_bytes = 0; // ahead of its position
};

struct PlannedRange {
    ByteRange range;
    std::size_t reader = 0;
    bool ahead = false; // reaches beyond what the reader waits for
    bool operator==(PlannedRange const&) const = default;
};

struct RangePlan {
    std::vector<std::size_t> abort; // places in the list of what runs, rising
    std::vector<PlannedRange> start;
    bool starved = false; // more would have started with more room
};

// For `count` blocks from the first one on, whether each is there.
using Presence = std::function<std::vector<bool>(std::uint64_t first, std::size_t count)>;

// `room` requests may start, and as many more as the plan aborts.
//   - A byte within 128 KiB ahead of what arrives is waited for; any other gets a request at once.
//   - Parts with up to 64 KiB between them that is there are asked for as one.
//   - What no reader wants any more is left when more than 256 KiB are to go, and so is a part that nobody
//     waits for when a reader waits for a place in its stead.
//   - A piece ahead starts when at most half a piece is still under way, so that one request is in full flow
//     while the next one travels.
// Requests begin and end at blocks' bounds. Thread: any.
[[nodiscard]] RangePlan planRanges(std::uint64_t total, std::span<RunningRange const> running,
                                   std::span<ReadNeed const> needs, Presence const& presence,
                                   std::size_t room);

} // namespace engine
