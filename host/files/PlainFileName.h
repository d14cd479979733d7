// One file name out of any text: what a network service or another system calls a file becomes a name that
// lies directly in a folder and that every file system takes.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/text/LightweightString.h"

namespace Zq {

// Longest name that the usual file systems take, in bytes of UTF-8.
constexpr std::uint32_t longestFileName_bytes = 255;

// The name itself where it is one already. Else separators, control and direction characters, characters and
// names that a system reserves, "." and "..", unpaired surrogates, and dots and blanks at the end are
// replaced, what is too long is cut before the extension, and a number made of the original text tells names
// apart that would otherwise become the same. Never empty. Thread: any.
[[nodiscard]] WideString plainFileName(std::wstring_view name,
                                       std::uint32_t limit_bytes = longestFileName_bytes);

} // namespace Zq
