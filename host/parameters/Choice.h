// One entry of a list that a person chooses from.
#pragma once

#include <cstdint>

#include "host/text/UIString.h"

struct Choice {
    UIString text;
    std::int32_t tag = -1; // what the change handlers are told; -1 by custom stands for no choice made
};
