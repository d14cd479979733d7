// A sequence of the project as a file of another editor or player.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "apps/zq/Session.h"
#include "host/engine/interchange/Export.h"

namespace zq {

// Writes the file, whole or not at all; one that is there is replaced. Gives the warnings: a line each.
// Throws CommandError where there is no such sequence, the format cannot take it, or the file cannot be
// written.
[[nodiscard]] std::vector<std::string> exportFile(Session& session, std::string const& sequence,
                                                  engine::ExportFormat format,
                                                  std::filesystem::path const& file);

} // namespace zq
