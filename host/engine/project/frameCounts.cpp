#include "host/engine/project/frameCounts.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace engine {

namespace {

// A millionth of a frame is far below what a person can mean and far above what a double loses in a year.
constexpr double rounding_frames = 1e-6;

double framesIn(double time_s, Zq::FrameRate rate) noexcept {
    Zq::ExactRate const exact = Zq::getExactRate(rate);
    return time_s * exact.numerator / exact.denominator;
}

std::int64_t limited(double frames, std::int64_t most) noexcept {
    if (!(frames > 0)) {
        return 0;
    }
    return frames >= static_cast<double>(most) ? most : static_cast<std::int64_t>(frames);
}

} // namespace

std::int64_t framesBefore(double time_s, Zq::FrameRate rate, std::int64_t most) noexcept {
    return limited(std::floor(framesIn(time_s, rate) + rounding_frames), most);
}

std::int64_t framesReaching(double time_s, Zq::FrameRate rate, std::int64_t most) noexcept {
    return limited(std::ceil(framesIn(time_s, rate) - rounding_frames), most);
}

std::int64_t framesAt(Zq::FrameRate other, std::int64_t frames, Zq::FrameRate rate) noexcept {
    Zq::ExactRate const to = Zq::getExactRate(other);
    Zq::ExactRate const from = Zq::getExactRate(rate);
    std::int64_t numerator = std::int64_t{to.numerator} * from.denominator;
    std::int64_t denominator = std::int64_t{to.denominator} * from.numerator;
    std::int64_t const common = std::gcd(numerator, denominator);
    numerator /= common;
    denominator /= common;
    std::int64_t const nearest = (frames * numerator * 2 + denominator) / (denominator * 2);
    return std::max<std::int64_t>(nearest, frames > 0 ? 1 : 0);
}

} // namespace engine
