// Text that a person sees: either a plain text or a number in the host's strings.
#pragma once

#include <cstdint>

#include "host/text/LightweightString.h"

struct UIString {
    // The number that stands for "no resource, take the text".
    static constexpr std::uint32_t noResource = 999999;

    WideString text;
    std::uint32_t resource = noResource;
    std::int32_t extra = 0;

    UIString() = default;
    explicit UIString(WideString plain, std::uint32_t number = noResource, std::int32_t further = 0)
        : text(std::move(plain)), resource(number), extra(further) {}
};
