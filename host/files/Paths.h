// Paths as text. Thread: any.
#pragma once

#include "host/text/LightweightString.h"

// The folder, with or without a separator at its end, and one file name in it; the bare name without a
// folder. The name may come from the network: separators, "..", control and reserved characters and names
// become harmless ones, and a name too long for a file system is cut before its extension, so the result
// always lies directly in the folder. A name that had to change gets a mark by which different names stay
// different.
[[nodiscard]] ZQ_API WideString joinPaths(WideString const& folder, WideString const& name);
// The folder part of a path, without the separator at its end unless it is a root; empty for a bare name.
[[nodiscard]] ZQ_API WideString getPath(WideString const& path);
// The path made fit for this system, whatever system its separators and characters come from. The query or
// fragment of a path from a URL is dropped; each part between separators becomes harmless as in joinPaths,
// and short enough that a suffix of up to 32 bytes still fits.
[[nodiscard]] ZQ_API WideString fixForeignOSFileName(WideString const& name);
// The name without folder and without its last extension. A dot at the start begins no extension.
[[nodiscard]] ZQ_API WideString stripPathAndExt(WideString const& path);
