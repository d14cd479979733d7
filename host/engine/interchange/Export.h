// Sequences as the files of other editors and players.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/engine/project/Project.h"
#include "host/engine/settings/Result.h"

namespace engine {

enum class ExportFormat { mlt, edl, fcpxml, otio };

// The format of that name: "mlt", "edl", "fcpxml", "otio"; nothing for another.
[[nodiscard]] std::optional<ExportFormat> exportFormatFromName(std::string_view name);

// One clip of a sequence with all that a format may say of it. Texts are UTF-8 on one line, without
// characters that XML does not allow.
struct ExportClip {
    Placement placement;
    std::string name;
    std::string kind;       // who gave the id, as a repository's short name; empty where nobody did
    std::string id;         // the service's
    std::string source;     // the service's name, as "Tarn7"
    std::string previewUrl; // http or https, empty where there is none
    std::string mediaPath;  // of the local file, empty while the clip is a preview
    Zq::FrameRate rate = Zq::FrameRate::unknown;
    std::int64_t duration = 0; // of the whole clip, in frames of its rate
    std::int32_t width = 0;
    std::int32_t height = 0;
    bool progressive = true;
    std::int32_t audioChannels = 0;

    [[nodiscard]] bool isPreview() const noexcept { return mediaPath.empty(); }
};

struct ExportSequence {
    std::string name;
    Zq::FrameRate rate = Zq::FrameRate::unknown;
    std::int64_t length = 0; // in frames
    std::vector<ExportClip> clips;
};

// The sequence with its clips; nothing where there is none of that name.
[[nodiscard]] std::optional<ExportSequence> gatherSequence(Project& project, std::string const& name);

// What a person should know of an exported file.
struct ExportWarning {
    enum class Kind {
        preview,       // the clip is still a preview, and not licensed
        otherRate,     // the clip's source times are counted in frames of the sequence
        tooManyEvents, // of the whole: more events than some readers take
    };
    Kind kind = Kind::preview;
    std::string clip; // its name; empty where it is none's
    std::string text; // in words
};

struct Exported {
    std::string text; // the whole file, UTF-8
    // One for each clip that is still a preview, and for what the format cannot say.
    std::vector<ExportWarning> warnings;
};

// Fails for a sequence without clips. Thread: any.
[[nodiscard]] Result<Exported> exportSequence(ExportSequence const& sequence, ExportFormat format);

} // namespace engine
