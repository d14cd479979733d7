// Paths as text. Thread: any.
#pragma once

#include "host/text/LightweightString.h"

// The folder and one file name in it. The name may come from the network: separators, "..", control and
// reserved characters and names become harmless ones, so the result always lies directly in the folder.
[[nodiscard]] ZQ_API WideString joinPaths(WideString const& folder, WideString const& name);
// The folder part of a path, without the separator at its end; empty for a bare name.
[[nodiscard]] ZQ_API WideString getPath(WideString const& path);
// The name made fit for this system, whatever system its separators and characters come from.
[[nodiscard]] ZQ_API WideString fixForeignOSFileName(WideString const& name);
// The name without folder and extension.
[[nodiscard]] ZQ_API WideString stripPathAndExt(WideString const& path);
