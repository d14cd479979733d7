// Media files of the system's disk, around a relinking. Thread: any.
#pragma once

#include <filesystem>
#include <string>

#include "host/text/LightweightString.h"

namespace engine {

// Has the file and its name on disk, so that a power cut after a relinking does not leave it short. The
// reason in words where that fails; empty where it is done and where the path is not of the system's disk.
[[nodiscard]] std::string putOnDisk(WideString const& path);

// Renames a refused file to its name and ".refused", or to the next such name that is free, and gives the new
// path; nothing is lost. Empty where no regular file lies there or it cannot be renamed.
[[nodiscard]] std::filesystem::path setRefusedAside(WideString const& path);

} // namespace engine
