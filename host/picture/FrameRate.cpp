#include "host/picture/FrameRate.h"

#include <cmath>
#include <iterator>

namespace Zq {

namespace {

struct Row {
    FrameRate rate;
    std::int32_t numerator;
    std::int32_t denominator;
    wchar_t const* text;

    [[nodiscard]] constexpr double framesPerSecond() const noexcept {
        return static_cast<double>(numerator) / denominator;
    }
};

constexpr std::int32_t whole = 1;
constexpr std::int32_t slowed = 1001;

constexpr Row rates[] = {
    {FrameRate::f12, 12, whole, L"12"},
    {FrameRate::f15, 15, whole, L"15"},
    {FrameRate::f23_976, 24000, slowed, L"23.976"},
    {FrameRate::f24, 24, whole, L"24"},
    {FrameRate::f25, 25, whole, L"25"},
    {FrameRate::f29_97, 30000, slowed, L"29.97"},
    {FrameRate::f30, 30, whole, L"30"},
    {FrameRate::f47_952, 48000, slowed, L"47.952"},
    {FrameRate::f48, 48, whole, L"48"},
    {FrameRate::f50, 50, whole, L"50"},
    {FrameRate::f59_94, 60000, slowed, L"59.94"},
    {FrameRate::f60, 60, whole, L"60"},
    {FrameRate::f72, 72, whole, L"72"},
    {FrameRate::f100, 100, whole, L"100"},
    {FrameRate::f119_88, 120000, slowed, L"119.88"},
    {FrameRate::f120, 120, whole, L"120"},
};

// 0.1 %, and a little for figures that a double cannot hold exactly.
constexpr double tolerance = 0.001 + 1e-12;

Row const* rowOf(FrameRate rate) noexcept {
    for (Row const& row : rates) {
        if (row.rate == rate) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

FrameRate getEquivalentZqFrameRate(double framesPerSecond) noexcept {
    if (!std::isfinite(framesPerSecond) || framesPerSecond <= 0) {
        return FrameRate::unknown;
    }
    Row const* nearest = std::begin(rates);
    double distance = std::abs(framesPerSecond - nearest->framesPerSecond());
    for (Row const& row : rates) {
        double const other = std::abs(framesPerSecond - row.framesPerSecond());
        if (other < distance) {
            nearest = &row;
            distance = other;
        }
    }
    if (distance <= nearest->framesPerSecond() * tolerance) {
        return nearest->rate;
    }
    for (Row const& row : rates) {
        if (row.denominator > whole && framesPerSecond == std::floor(row.framesPerSecond())) {
            return row.rate;
        }
    }
    return FrameRate::unknown;
}

bool has1001Factor(FrameRate rate) noexcept {
    Row const* const row = rowOf(rate);
    return row != nullptr && row->denominator > whole;
}

WideString getDisplayString(FrameRate rate) {
    Row const* const row = rowOf(rate);
    return row != nullptr ? WideString(row->text) : WideString();
}

double getFramesPerSecond(FrameRate rate) noexcept {
    Row const* const row = rowOf(rate);
    return row != nullptr ? row->framesPerSecond() : 0;
}

ExactRate getExactRate(FrameRate rate) noexcept {
    Row const* const row = rowOf(rate);
    return row != nullptr ? ExactRate{row->numerator, row->denominator} : ExactRate();
}

} // namespace Zq
