// The handle that the host's counter service counts on.
#pragma once

#include <atomic>
#include <cstdint>

#include "host/object/Api.h"

namespace Zq {

// One per shared thing: number of owners. Only the counter service of OS() changes it.
struct RefCount {
    std::atomic<std::uint32_t> owners{0};
};

} // namespace Zq
