#include "host/engine/streaming/ReadAhead.h"

#include <algorithm>

namespace engine {

namespace {

// A demuxer steps over what it does not need.
constexpr std::uint64_t largestStep_bytes = std::uint64_t{64} << 10;

} // namespace

void ReadAhead::begin(ByteRange range, Time now) noexcept {
    bool const goesOn = consecutive_ > 0 && range.begin >= next_ && range.begin - next_ <= largestStep_bytes;
    if (!goesOn) {
        *this = ReadAhead();
        start_ = range.begin;
        started_ = now;
    } else {
        auto const taken = std::chrono::duration_cast<std::chrono::milliseconds>(now - started_).count();
        rate_bytes_per_s_ =
            (next_ - start_) / static_cast<std::uint64_t>(std::max<std::int64_t>(taken, 1)) * 1000;
    }
    ++consecutive_;
    next_ = range.end;
    if (range.begin >= aheadEnd_) {
        active_ = false; // what it finds here was there before
    }
}

void ReadAhead::miss() noexcept {
    active_ = consecutive_ >= 2;
}

void ReadAhead::issued(std::uint64_t end) noexcept {
    aheadEnd_ = std::max(aheadEnd_, end);
    piece_bytes_ = std::min(piece_bytes_ * 2, largestPiece_bytes);
}

void ReadAhead::stop() noexcept {
    active_ = false;
    aheadEnd_ = 0;
    piece_bytes_ = firstPiece_bytes;
}

std::uint64_t ReadAhead::window_bytes() const noexcept {
    std::uint64_t const limit =
        std::clamp(rate_bytes_per_s_ * limit_s, smallestLimit_bytes, largestWindow_bytes);
    return std::min(piece_bytes() * 2, limit);
}

} // namespace engine
