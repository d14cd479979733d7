#include "apps/tarn7d/Log.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string>

#include "apps/tarn7d/Text.h"

namespace tarn7d {

void logLine(std::string_view text) {
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 32> stamp{};
    std::strftime(stamp.data(), stamp.size(), "%H:%M:%S ", &parts);
    constexpr std::size_t longestLine = 1000;
    std::string const line = stamp.data() + cleanText(text, longestLine) + "\n";
    // One call for the whole line: the stream's lock keeps the lines of several threads apart.
    (void)std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace tarn7d
