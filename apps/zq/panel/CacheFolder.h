// What lies in the host's cache folder, as a person asks for it.
#pragma once

#include <cstdint>
#include <filesystem>

namespace zq::panel {

// Bytes on the disk of what was fetched and of what streams. Thread: any, for both.
[[nodiscard]] std::uint64_t cacheSize(std::filesystem::path const& folder);
// Removes both, except streams that are open, in any process. Gives the bytes that are free then.
[[nodiscard]] std::uint64_t clearCacheFolder(std::filesystem::path const& folder);

} // namespace zq::panel
