#include "host/edit/MediumRoll.h"

#include <cmath>

namespace {

using Zq::FrameRate;

struct Row {
    FrameRate rate;
    MediumRollMedium progressive;
    MediumRollMedium interlaced;
};

using enum MediumRollMedium;

// Film and fast cameras have no fields: both columns are the same there.
constexpr Row rows[] = {
    {FrameRate::f12, lowSpeed, lowSpeed},
    {FrameRate::f15, lowSpeed, lowSpeed},
    {FrameRate::f23_976, film, film},
    {FrameRate::f24, film, film},
    {FrameRate::f25, progressive25, interlaced25},
    {FrameRate::f29_97, progressive30, interlaced30},
    {FrameRate::f30, progressive30, interlaced30},
    {FrameRate::f47_952, film, film},
    {FrameRate::f48, film, film},
    {FrameRate::f50, progressive50, interlaced25},
    {FrameRate::f59_94, progressive60, interlaced30},
    {FrameRate::f60, progressive60, interlaced30},
    {FrameRate::f72, highSpeed, highSpeed},
    {FrameRate::f100, highSpeed, highSpeed},
    {FrameRate::f119_88, highSpeed, highSpeed},
    {FrameRate::f120, highSpeed, highSpeed},
};

// A millionth of a frame is far below a sample and far above what a double loses in a day of frames.
constexpr double rounding_frames = 1e-6;

} // namespace

MediumRollMedium getMediumRollfromInputDetails(Zq::Image::ScanMode scan, FrameRate rate) noexcept {
    for (Row const& row : rows) {
        if (row.rate == rate) {
            return scan == Zq::Image::ScanMode::progressive ? row.progressive : row.interlaced;
        }
    }
    return unknown;
}

MediumRollMedium getRepresentativeSourceMediumfromFrameRate(FrameRate rate) noexcept {
    return getMediumRollfromInputDetails(Zq::Image::ScanMode::progressive, rate);
}

double mPosn_Xlate(double position_s, MediumRollMedium, MediumRollMedium target,
                   MPosn_Xlate_Params const& parameters) noexcept {
    double const rate = Zq::getFramesPerSecond(parameters.targetRate);
    double const frames = position_s * rate;
    // A position so far out that its frames cannot be counted has none to snap to.
    if (target != edit || rate == 0 || !std::isfinite(frames)) {
        return position_s;
    }
    return std::floor(frames + rounding_frames) / rate;
}
