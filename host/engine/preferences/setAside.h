// Moves a damaged database out of the way without losing it.
#pragma once

#include <filesystem>

namespace engine {

// Renames the file, with what SQLite keeps beside it, to its name, ".damaged-" and the time, and gives the
// new path of the file; empty when it could not be renamed. Thread: any.
[[nodiscard]] std::filesystem::path setAside(std::filesystem::path const& database);

} // namespace engine
