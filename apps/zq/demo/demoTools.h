// Small things that all steps of the walk use.
#pragma once

#include <string>
#include <utility>

#include "apps/zq/Reply.h"
#include "host/engine/settings/Result.h"

namespace zq {

// "1 clip", "2 clips".
[[nodiscard]] inline std::string counted(std::size_t count, std::string const& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// The value, or its failure as a CommandError.
template <class T>
[[nodiscard]] T orThrow(engine::Result<T> result) {
    if (!result) {
        throw CommandError(result.error());
    }
    return std::move(*result);
}

} // namespace zq
