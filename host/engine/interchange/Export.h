// Sequences as the files of other editors and players.
#pragma once

#include <string>
#include <vector>

#include "host/engine/project/Project.h"
#include "host/engine/settings/Result.h"

namespace engine {

enum class ExportFormat { mlt, edl, fcpxml, otio };

// The format of that name: "mlt", "edl", "fcpxml", "otio"; nothing for another.
[[nodiscard]] std::optional<ExportFormat> exportFormatFromName(std::string_view name);

// One clip of a sequence with all that a format may say of it.
struct ExportClip {
    Placement placement;
    EditRecord edit;
    std::string clipId;     // the service's, empty where there is none
    std::string source;     // the service's name: "Tarn7"
    std::string previewUrl; // http or https, empty where there is none
    std::string mediaPath;  // of the local file, empty while the clip is a preview
    [[nodiscard]] bool isPreview() const noexcept { return mediaPath.empty(); }
};

struct ExportSequence {
    Sequence sequence;
    std::vector<ExportClip> clips; // one for each placement
};

// The sequence with its clips; nothing where there is none of that name.
[[nodiscard]] std::optional<ExportSequence> gatherSequence(Project& project, std::string const& name);

struct Exported {
    std::string text;                  // the whole file, UTF-8
    std::vector<std::string> warnings; // one for each clip that is still a preview, and for what the format
                                       // cannot say
};

// Thread: any.
[[nodiscard]] Result<Exported> exportSequence(ExportSequence const& sequence, ExportFormat format);

} // namespace engine
