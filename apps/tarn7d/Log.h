// The service's log: one line on standard error for each event.
#pragma once

#include <string_view>

namespace tarn7d {

// Writes the text as one line with the time in front. Control characters and malformed bytes cannot break the
// line. Any thread; lines do not mix.
void logLine(std::string_view text);

} // namespace tarn7d
