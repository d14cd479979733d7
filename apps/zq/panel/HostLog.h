// The host's own log, as its user reads it.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace zq::panel {

// The last lines of the log in that home folder, the oldest first, with what is secret masked. Thread: any.
[[nodiscard]] std::vector<std::string> lastLogLines(std::filesystem::path const& home, std::size_t most);

} // namespace zq::panel
