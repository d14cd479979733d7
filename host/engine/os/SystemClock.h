// The system's clock.
#pragma once

#include <ctime>

#include "host/os/getTime32.h"

namespace engine {

class SystemClock final : public iClock {
public:
    std::uint32_t seconds() override { return static_cast<std::uint32_t>(std::time(nullptr)); }
};

} // namespace engine
