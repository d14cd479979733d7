#include "apps/tarn7d/ClipVersion.h"

#include <algorithm>

#include "apps/tarn7d/Renditions.h"

namespace tarn7d {

namespace {

constexpr VersionRow versions[] = {
    {ClipVersion::original, "0", "1", ""},
    {ClipVersion::transcoded, "1", "1", "_h264"},
};

struct TypeRow {
    std::string_view extension;
    std::string_view type;
};

constexpr TypeRow typeRows[] = {
    {"mov", "video/quicktime"}, {"mp4", "video/mp4"},        {"m4v", "video/mp4"},
    {"mxf", "application/mxf"}, {"mkv", "video/x-matroska"}, {"webm", "video/webm"},
    {"avi", "video/x-msvideo"}, {"mpg", "video/mpeg"},       {"mpeg", "video/mpeg"},
    {"dv", "video/x-dv"},
};

// The transcoded version is the high-quality preview: at most this wide.
constexpr int transcodedWidth = 1280;

int evenPart(double value) {
    return std::max(2, static_cast<int>(value / 2) * 2);
}

} // namespace

VersionRow const& versionRow(ClipVersion version) noexcept {
    return *std::find_if(std::begin(versions), std::end(versions),
                         [version](VersionRow const& row) { return row.version == version; });
}

std::optional<ClipVersion> parseVersion(std::string_view tr, std::string_view v) noexcept {
    if (tr.empty() && v.empty()) {
        return ClipVersion::original;
    }
    for (VersionRow const& row : versions) {
        if (row.tr == tr && row.v == v) {
            return row.version;
        }
    }
    return std::nullopt;
}

bool hasVersion(Clip const& clip, ClipVersion version) noexcept {
    return version == ClipVersion::original || clip.media.height >= highQualityHeight;
}

std::string extensionOf(Clip const& clip, ClipVersion version) {
    if (version == ClipVersion::transcoded) {
        return "mp4";
    }
    std::string const own = clip.path.extension().native();
    std::string extension;
    for (char const c : own.substr(std::min<std::size_t>(1, own.size()))) {
        bool const isLetter = (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
        if (!isLetter && (c < '0' || c > '9')) {
            return "mov";
        }
        extension += isLetter ? static_cast<char>(c | 0x20) : c;
    }
    constexpr std::size_t longest = 8;
    return extension.empty() || extension.size() > longest ? "mov" : extension;
}

Clip describeVersion(Clip clip, ClipVersion version) {
    if (version == ClipVersion::original) {
        return clip;
    }
    MediaInfo& media = clip.media;
    if (media.width > transcodedWidth) {
        media.height = evenPart(static_cast<double>(transcodedWidth) * media.height / media.width);
        media.width = transcodedWidth;
    }
    media.codec = "H.264 (high, avc1)";
    media.standard = videoStandard({media.width, media.height, false, media.rate});
    if (media.sound != soundText(0, 0, {})) {
        media.sound = media.sound.substr(0, media.sound.find(" kHz")) + " kHz stereo aac";
    }
    return clip;
}

std::string_view mediaTypeOf(std::string_view extension) noexcept {
    for (TypeRow const& row : typeRows) {
        if (row.extension == extension) {
            return row.type;
        }
    }
    return "application/octet-stream";
}

} // namespace tarn7d
