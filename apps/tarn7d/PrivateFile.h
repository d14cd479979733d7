// Whole files written so that nobody ever sees half of one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace tarn7d {

// Writes the bytes beside the file and moves them into place, with the mode from the first byte on. Throws
// std::runtime_error naming the file and the reason.
void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes, mode_t mode);

// The whole file, or an empty text when it cannot be read or is larger than the limit.
[[nodiscard]] std::string readSmallFile(std::filesystem::path const& file, std::size_t limit_bytes);

} // namespace tarn7d
