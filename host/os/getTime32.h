// The host's clock.
#pragma once

#include <cstdint>

#include "host/object/Api.h"

class ZQ_API iClock {
public:
    virtual ~iClock();
    // Seconds since 1970 in UTC. Thread: any.
    [[nodiscard]] virtual std::uint32_t seconds() = 0;
};

// Unix seconds; 0 without a host. Thread: any.
[[nodiscard]] ZQ_API std::uint32_t getTime32();
