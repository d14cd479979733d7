// One reader of a remote file, as the file knows it.
#pragma once

#include <cstdint>

#include "host/engine/streaming/RangePlanner.h"
#include "host/engine/streaming/ReadAhead.h"
#include "host/engine/streaming/StreamError.h"

namespace engine {

// Guarded by the file's mutex while it is attached.
struct StreamReader {
    std::uint64_t generation = 0; // of the file that it reads; 0 until it knows one
    ByteRange want;               // what it waits for, from the first missing byte on
    std::uint64_t position = 0;   // where it goes on
    ReadAhead ahead;
    int failures = 0;  // of requests for what it waits for, since it last got a byte
    StreamError error; // why its wait ended in vain

    [[nodiscard]] ReadNeed need() const noexcept {
        return {want, position, ahead.piece_bytes(), ahead.window_bytes()};
    }
};

} // namespace engine
