// Frame rates by number. Thread: any.
#pragma once

#include <cstdint>

#include "host/text/LightweightString.h"

namespace Zq {

enum class FrameRate : std::uint32_t {
    unknown = 0,
    f23_976 = 1, // 24000/1001
    f24 = 2,
    f25 = 3,
    f29_97 = 4, // 30000/1001
    f30 = 5,
    f47_952 = 6, // 48000/1001
    f48 = 7,
    f50 = 8,
    f59_94 = 9, // 60000/1001
    f60 = 10,
    f12 = 11,
    f15 = 12,
    f72 = 40,
    f119_88 = 41, // 120000/1001
    f120 = 42,
    f100 = 43,
};

// The rate within 0.1 % of the figure, the nearest where two are; failing that, a whole number that is a 1001
// rate cut short (23, 29, 47, 59, 119) means that rate; else unknown.
[[nodiscard]] ZQ_API FrameRate getEquivalentZqFrameRate(double framesPerSecond) noexcept;
// True for the rates that are 1000/1001 of a whole number.
[[nodiscard]] ZQ_API bool has1001Factor(FrameRate rate) noexcept;
// The rate as a person writes it: "25", "29.97", "23.976". Empty for unknown.
[[nodiscard]] ZQ_API WideString getDisplayString(FrameRate rate);
// Frames per second; 0 for unknown.
[[nodiscard]] ZQ_API double getFramesPerSecond(FrameRate rate) noexcept;

struct ExactRate {
    std::int32_t numerator = 0;
    std::int32_t denominator = 1;
};
// Frames per second as a fraction in lowest terms; 0/1 for unknown.
[[nodiscard]] ZQ_API ExactRate getExactRate(FrameRate rate) noexcept;

} // namespace Zq
