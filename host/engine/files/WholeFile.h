// Small files that are read and written in one step.
//
// Only regular files are read: a pipe or a device put in a file's place can neither block nor feed without
// end. Thread: any.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace engine {

enum class Durability {
    cache,  // may be lost in a power cut
    synced, // on disk on return
};

enum class Readers {
    all,   // as far as the folder and the process's mask let them
    owner, // a secret of the user's own
};

// The content; nothing when the file is not there, is not a regular file, is larger than `limit_bytes` or
// cannot be read.
[[nodiscard]] std::optional<std::string> readWholeFile(std::filesystem::path const& file,
                                                       std::size_t limit_bytes);

// Replaces the file, whole or not at all: other processes see the old content or the new one. False when it
// could not be written; the old file then stands. The new one is readable by `readers`, whoever could read
// the old one.
[[nodiscard]] bool writeWholeFile(std::filesystem::path const& file, std::string_view content,
                                  Durability durability, Readers readers = Readers::all);

// Name prefix of what writeWholeFile has not yet put in place; left over only by a killed process.
inline constexpr std::string_view unfinishedPrefix = ".unfinished-";

} // namespace engine
