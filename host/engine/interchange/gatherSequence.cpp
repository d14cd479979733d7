#include <map>

#include "host/engine/interchange/Export.h"
#include "host/text/Unicode.h"
#include "host/text/oneLine.h"
#include "host/web/ParsedURI.h"

namespace engine {

namespace {

// On one line, and of characters that XML 1.0 allows.
std::string plain(WideString const& text) {
    WideString line = Zq::onOneLine(text);
    line.replaceAll(L"\xfffe", L" ");
    line.replaceAll(L"\xffff", L" ");
    return std::string(toUTF8(line).view());
}

std::string urlOf(WideString const& location) {
    ParsedURI const place = ParsedURI::parse(location);
    return place.valid() ? plain((place.secure != 0 ? L"https://" : L"http://") + place.server + place.path)
                         : std::string();
}

ExportClip describe(Placement const& placement, EditRecord const& edit) {
    ExportClip clip;
    clip.placement = placement;
    clip.name = plain(edit.name());
    if (!edit.externalIds.empty()) {
        clip.kind = plain(edit.externalIds.front().kind);
        clip.id = plain(edit.externalIds.front().id);
    }
    clip.source = plain(fromUTF8(edit.logAttributes.find(LogAttribute(LogAttribute::eSource))));
    clip.previewUrl = urlOf(edit.previewLocation);
    // A path is not for people alone: nothing in it may change.
    clip.mediaPath = std::string(toUTF8(edit.mediaLocation).view());
    clip.rate = edit.rate;
    clip.duration = edit.durationInFrames();
    clip.width = edit.video.width;
    clip.height = edit.video.height;
    clip.progressive = edit.video.scanMode == Zq::Image::ScanMode::progressive;
    clip.audioChannels = edit.audioChannels;
    return clip;
}

} // namespace

std::optional<ExportSequence> gatherSequence(Project& project, std::string const& name) {
    std::optional<Sequence> const found = project.sequence(name);
    if (!found) {
        return std::nullopt;
    }
    ExportSequence sequence;
    sequence.name = plain(fromUTF8(std::string_view(found->name)));
    sequence.rate = found->rate;
    sequence.length = found->length();
    std::map<Cookie, EditRecord> edits = project.editsOf(*found);
    for (Placement const& placement : found->placements) {
        sequence.clips.push_back(describe(placement, edits[placement.edit]));
    }
    return sequence;
}

} // namespace engine
