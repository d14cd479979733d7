// Copies one file on disk to another.
#pragma once

#include <filesystem>

#include "host/files/iFileManager.h"

namespace engine {

// The destination is whole or as it was before; an old one stays, and the copy fails, unless `overwrite`.
// Ends when the calling task is cancelled. Thread: any.
[[nodiscard]] iFileManager::eCopyRC copyLocalFile(std::filesystem::path const& source,
                                                  std::filesystem::path const& destination, bool overwrite,
                                                  iFileManager::ProgressCallback progress);

} // namespace engine
