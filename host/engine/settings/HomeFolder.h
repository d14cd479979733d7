// Where everything lies that a user of the host owns.
#pragma once

#include <filesystem>

#include "host/engine/settings/Result.h"

namespace engine {

// The home folder: the given one, else ZQ_HOME, else "zq" in XDG_DATA_HOME, else ~/.local/share/zq. Absolute,
// made where it is not there (for this user alone), and writable; otherwise the reason and what to do.
// Thread: one that changes no environment at that moment.
[[nodiscard]] Result<std::filesystem::path> findHomeFolder(std::filesystem::path const& given);

// The folder of the running program, empty where the system does not tell. Thread: any.
[[nodiscard]] std::filesystem::path findProgramFolder();

} // namespace engine
