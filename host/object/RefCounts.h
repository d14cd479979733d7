// Counting of owners, in one short call each: the door to the counter service of OS().
#pragma once

#include <cstdint>

#include "host/object/Api.h"
#include "host/object/RefCount.h"

namespace Zq {

// Adds one owner. Thread: any.
ZQ_API void addReference(RefCount& handle) noexcept;

// Takes one owner away and gives the number that remains. Thread: any.
[[nodiscard]] ZQ_API std::uint32_t releaseReference(RefCount& handle) noexcept;

} // namespace Zq
