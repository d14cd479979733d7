// Mediums of a recording, and positions on them. Thread: any.
//
// A position is a time in seconds. Which times exist depends on the medium: the edit's own time knows whole
// frames only.
#pragma once

#include "host/object/Api.h"
#include "host/picture/FrameRate.h"
#include "host/picture/ImageFormat.h"

// What a picture was recorded on, by frame rate and way of scanning.
enum class MediumRollMedium : std::int32_t {
    unknown = 0,
    film = 1, // 24 and what counts as it
    progressive25 = 2,
    interlaced25 = 3,  // 576 and 1080 lines in 50 fields
    progressive30 = 4, // 30 and 30000/1001
    interlaced30 = 5,  // 480 and 1080 lines in 60 fields
    progressive50 = 6,
    progressive60 = 7, // 60 and 60000/1001
    highSpeed = 8,     // above 60
    lowSpeed = 9,      // below 24
    edit = 12,         // the edit's own time
};

// The medium that a camera of that scan mode and rate records on; unknown for the unknown rate.
[[nodiscard]] ZQ_API MediumRollMedium getMediumRollfromInputDetails(Zq::Image::ScanMode scan,
                                                                    Zq::FrameRate rate) noexcept;
// The one medium that stands for the rate where nothing is known of the scan mode: the progressive one.
[[nodiscard]] ZQ_API MediumRollMedium getRepresentativeSourceMediumfromFrameRate(Zq::FrameRate rate) noexcept;

struct MPosn_Xlate_Params {
    MPosn_Xlate_Params(Zq::FrameRate from, Zq::FrameRate to) noexcept : sourceRate(from), targetRate(to) {}

    Zq::FrameRate sourceRate;
    Zq::FrameRate targetRate;
};

// The position on the target medium. To the edit's own time it snaps down to a whole frame of the target
// rate, where a position that misses a frame only by what rounding takes counts as that frame; with an
// unknown rate, and between all other mediums, the position stays as it is.
[[nodiscard]] ZQ_API double mPosn_Xlate(double position_s, MediumRollMedium source, MediumRollMedium target,
                                        MPosn_Xlate_Params const& parameters) noexcept;
