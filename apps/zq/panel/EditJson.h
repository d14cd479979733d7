// What clips and pieces of sequences tell alike of their edits. Thread: any.
#pragma once

#include <cstdint>

#include "host/engine/project/EditRecord.h"
#include "host/json/Builder.h"

namespace zq::panel {

// "preview", "downloading", "full" or "missing"; `task` fetches the edit's clip now, 0 where none does.
[[nodiscard]] char const* stateOf(engine::EditRecord const& edit, std::uint64_t task);

// Frames a second as a list of numerator and denominator; null for the unknown rate.
void addRateFraction(JSON::Builder& json, char const* key, Zq::FrameRate rate);

} // namespace zq::panel
