// CMX 3600 knows one rate for the whole list, reels of eight characters, and notes behind an asterisk.

#include <array>
#include <cstdio>
#include <string>

#include "host/engine/interchange/formats.h"

namespace engine::interchange {

namespace {

constexpr std::size_t longestReel = 8;
constexpr std::size_t mostEvents = 999;

// The repository and the clip's number where they fit in a reel's name, else AX, which stands for a file.
std::string reel(ExportClip const& clip) {
    std::string name = clip.kind + clip.id;
    bool const fits = !clip.id.empty() && name.size() <= longestReel &&
                      name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") == std::string::npos;
    if (!fits) {
        name = "AX";
    }
    name.resize(longestReel, ' ');
    return name;
}

std::string eventNumber(std::size_t number) {
    std::array<char, 24> text{};
    int const length = std::snprintf(text.data(), text.size(), "%03zu", number);
    return {text.data(), static_cast<std::size_t>(length)};
}

void addNote(std::string& list, std::string_view key, std::string_view value) {
    if (!value.empty()) {
        list.append("* ").append(key).append(": ").append(value).append("\n");
    }
}

} // namespace

std::string writeEdl(ExportSequence const& sequence, std::vector<ExportWarning>& warnings) {
    std::string list = "TITLE: " + sequence.name + "\n";
    list += countsInDropFrame(sequence.rate) ? "FCM: DROP FRAME\n" : "FCM: NON-DROP FRAME\n";
    std::int64_t const start = programmeStart(sequence.rate);
    std::size_t number = 0;
    for (ExportClip const& clip : sequence.clips) {
        std::int64_t const in = convertFrames(clip.placement.in, clip.rate, sequence.rate);
        std::int64_t const at = start + clip.placement.start;
        auto const code = [&sequence](std::int64_t frame) { return timecode(frame, sequence.rate); };
        list += "\n" + eventNumber(++number) + "  " + reel(clip) + " " +
                (clip.audioChannels > 0 ? "AA/V " : "V    ") + " C        " + code(in) + " " +
                code(in + clip.placement.length) + " " + code(at) + " " + code(at + clip.placement.length) +
                "\n";
        addNote(list, "FROM CLIP NAME", clip.name);
        addNote(list, "SOURCE FILE", clip.isPreview() ? clip.previewUrl : clip.mediaPath);
        addNote(list, "CLIP ID", clip.id.empty() ? "" : clip.kind + " " + clip.id);
        addNote(list, "SOURCE", clip.source);
        addNote(list, "LICENCE", licenceState(clip));
        if (clip.rate != sequence.rate) {
            warnings.push_back({ExportWarning::Kind::otherRate, clip.name,
                                "\"" + clip.name +
                                    "\" runs at another rate than the sequence: its source times are counted "
                                    "in frames of the sequence"});
        }
    }
    if (number > mostEvents) {
        warnings.push_back({ExportWarning::Kind::tooManyEvents, "",
                            "the list has more than 999 events, which some readers do not take"});
    }
    return list;
}

} // namespace engine::interchange
