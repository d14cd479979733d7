// The border between the contract's wide texts and this system's paths. Thread: any.
#pragma once

#include <filesystem>

#include "host/text/LightweightString.h"

namespace engine {

// The path as the system takes it, UTF-8. Empty for empty text and for text with a zero character, at which
// the system would cut the path and reach another file.
[[nodiscard]] std::filesystem::path localPath(WideString const& text);

// The path as wide text. A name that is not UTF-8 does not come back as the same path.
[[nodiscard]] WideString wideText(std::filesystem::path const& path);

} // namespace engine
