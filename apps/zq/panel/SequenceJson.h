// Sequences of the project as the panel's JSON, with the clips of all repositories.
#pragma once

#include <string>

#include "apps/zq/panel/Panel.h"
#include "host/engine/project/Sequence.h"
#include "host/json/Builder.h"

namespace zq::panel {

// The sequence; an empty one where there is none of that name. Thread: any.
[[nodiscard]] std::string sequenceJson(Panel const& panel, std::string const& name);

// Seconds; 0 at the unknown rate.
[[nodiscard]] double timeOf(std::int64_t frame, Zq::FrameRate rate);

} // namespace zq::panel
