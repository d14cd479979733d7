// URLs from their parts.
#pragma once

#include "host/text/LightweightString.h"

namespace URIBuilder {

// The two as one URL, with exactly one "/" between them. Thread: any.
[[nodiscard]] ZQ_API WideString join(WideString const& base, WideString const& relative);

} // namespace URIBuilder
