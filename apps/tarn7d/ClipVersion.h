// The versions in which an owned clip can be had: the original file, and for large clips a smaller one made
// from it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "apps/tarn7d/Catalogue.h"

namespace tarn7d {

enum class ClipVersion { original, transcoded };

// How a version is told on the wire, in the list of owned clips and in the command that asks for it.
struct VersionRow {
    ClipVersion version;
    std::string_view tr;
    std::string_view v;
    std::string_view fileSuffix; // in a download's address, between the clip's number and the extension
};

[[nodiscard]] VersionRow const& versionRow(ClipVersion version) noexcept;

// The version of these texts. Two empty texts are the original: a client that knows a clip only from a search
// has none. Empty for anything else.
[[nodiscard]] std::optional<ClipVersion> parseVersion(std::string_view tr, std::string_view v) noexcept;

[[nodiscard]] bool hasVersion(Clip const& clip, ClipVersion version) noexcept;

// Extension of the version's file, without a dot: lower-case letters and digits only, whatever the file in
// the footage folder is called.
[[nodiscard]] std::string extensionOf(Clip const& clip, ClipVersion version);

// The clip with the technical data of the version in place of those of the original.
[[nodiscard]] Clip describeVersion(Clip clip, ClipVersion version);

// Media type of a file with this extension, as "video/quicktime".
[[nodiscard]] std::string_view mediaTypeOf(std::string_view extension) noexcept;

} // namespace tarn7d
