// The time of day, for what is written down and compared after a restart: orders, and addresses that expire.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace tarn7d {

// Seconds since 1970 in UTC.
using WallClock = std::function<std::int64_t()>;

[[nodiscard]] inline std::int64_t systemSeconds() {
    using std::chrono::duration_cast;
    using std::chrono::seconds;
    using std::chrono::system_clock;
    return duration_cast<seconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace tarn7d
