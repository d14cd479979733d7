// The label of a piece of an edit: where its picture comes from, as a list of cuts shows it. A value.
// Thread: any.
#pragma once

#include <cstdint>

#include "host/object/Api.h"
#include "host/picture/FrameRate.h"
#include "host/picture/ImageFormat.h"

struct EditLabel {
    std::int64_t position = 0; // first frame of the edit that the label holds for
    Zq::Image::ScanMode scanMode = Zq::Image::ScanMode::progressive;
    Zq::FrameRate frameRate = Zq::FrameRate::unknown;
    bool countsIn1001 = false; // its frames last 1001/1000 of what the whole number of the rate says
    // Frame of the source that the position shows; -1 while nobody has said which.
    std::int32_t sourceOffset = -1;

    [[nodiscard]] bool operator==(EditLabel const&) const = default;
};

// The label for the pieces from that position on, with no source offset yet.
[[nodiscard]] ZQ_API EditLabel editLabFrom(std::int64_t position, Zq::Image::ScanMode scan,
                                           Zq::FrameRate rate, bool countsIn1001) noexcept;
