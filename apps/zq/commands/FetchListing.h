// What came of a fetch as JSON.
#pragma once

#include <span>

#include "apps/zq/FetchJob.h"
#include "host/json/Builder.h"

namespace zq {

// The clips as a list.
void addUnfetched(JSON::Builder& json, char const* key, std::span<UnfetchedClip const> clips);

} // namespace zq
