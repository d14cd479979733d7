// Frames counted with exact rates. Thread: any.
#pragma once

#include <cstdint>

#include "host/picture/FrameRate.h"

namespace engine {

// The whole frames that lie before the time, and those that reach it. A time that misses a frame only by what
// rounding takes counts as that frame. The result lies between 0 and `most`, also for times that are no
// number.
[[nodiscard]] std::int64_t framesBefore(double time_s, Zq::FrameRate rate, std::int64_t most) noexcept;
[[nodiscard]] std::int64_t framesReaching(double time_s, Zq::FrameRate rate, std::int64_t most) noexcept;

// How many frames of the other rate last nearest to as long; at least 1 for a frame. Both rates known.
[[nodiscard]] std::int64_t framesAt(Zq::FrameRate other, std::int64_t frames, Zq::FrameRate rate) noexcept;

} // namespace engine
