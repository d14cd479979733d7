// What became of setting a search option, in words.
#pragma once

#include "repository/SearchOptions.h"

namespace zq {

// Empty for one that was set.
[[nodiscard]] char const* inWords(SearchOptionResult result);

} // namespace zq
