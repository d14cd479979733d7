// OpenTimelineIO's JSON: a timeline, one track, and clips with a reference for each file that there is.

#include <array>
#include <charconv>
#include <string>

#include "host/engine/interchange/formats.h"
#include "host/json/Builder.h"
#include "host/text/Unicode.h"

namespace engine::interchange {

namespace {

void addText(JSON::Builder& json, char const* key, std::string_view text) {
    json.add(key, fromUTF8(text), true);
}

void addLiteral(JSON::Builder& json, char const* key, std::string_view literal) {
    json.add(key, fromUTF8(literal), false);
}

// The shortest decimals that read back as the same number.
void addNumber(JSON::Builder& json, char const* key, double number) {
    std::array<char, 32> text{};
    char const* const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    addLiteral(json, key, {text.data(), static_cast<std::size_t>(end - text.data())});
}

void addTime(JSON::Builder& json, char const* key, std::int64_t frames, Zq::FrameRate rate) {
    json.startChild(key);
    addText(json, "OTIO_SCHEMA", "RationalTime.1");
    addNumber(json, "rate", Zq::getFramesPerSecond(rate));
    addNumber(json, "value", static_cast<double>(frames));
    json.endChild();
}

void addRange(JSON::Builder& json, char const* key, std::int64_t start, std::int64_t length,
              Zq::FrameRate rate) {
    json.startChild(key);
    addText(json, "OTIO_SCHEMA", "TimeRange.1");
    addTime(json, "start_time", start, rate);
    addTime(json, "duration", length, rate);
    json.endChild();
}

void addReference(JSON::Builder& json, char const* key, ExportClip const& clip, std::string const& url) {
    json.startChild(key);
    addText(json, "OTIO_SCHEMA", "ExternalReference.1");
    addText(json, "name", clip.name);
    addText(json, "target_url", url);
    addRange(json, "available_range", 0, clip.duration, clip.rate);
    json.startChild("metadata");
    json.endChild();
    json.endChild();
}

void addItem(JSON::Builder& json, char const* schema, std::string const& name) {
    addText(json, "OTIO_SCHEMA", schema);
    addText(json, "name", name);
    for (char const* const list : {"effects", "markers"}) {
        json.startArray(list);
        json.endArray();
    }
    json.add("enabled", true);
}

void addNothing(JSON::Builder& json) {
    json.startChild("metadata");
    json.endChild();
    addLiteral(json, "source_range", "null");
}

void addClip(JSON::Builder& json, ExportClip const& clip) {
    json.startChild(nullptr);
    addItem(json, "Clip.2", clip.name);
    json.startChild("metadata");
    json.startChild("zq");
    addText(json, "clip_id", clip.id);
    addText(json, "repository", clip.kind);
    addText(json, "source", clip.source);
    addText(json, "licence", licenceState(clip));
    json.endChild();
    json.endChild();
    addRange(json, "source_range", clip.placement.in, clip.placement.out - clip.placement.in, clip.rate);
    json.startChild("media_references");
    bool const full = !clip.isPreview();
    if (full) {
        addReference(json, "full", clip, fileUrl(clip.mediaPath));
    }
    if (!full || !clip.previewUrl.empty()) {
        addReference(json, "preview", clip, clip.previewUrl);
    }
    json.endChild();
    addText(json, "active_media_reference_key", full ? "full" : "preview");
    json.endChild();
}

} // namespace

std::string writeOtio(ExportSequence const& sequence) {
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "OTIO_SCHEMA", "Timeline.1");
    addText(json, "name", sequence.name);
    json.startChild("metadata");
    json.endChild();
    addTime(json, "global_start_time", programmeStart(sequence.rate), sequence.rate);
    json.startChild("tracks");
    addItem(json, "Stack.1", "tracks");
    addNothing(json);
    json.startArray("children");
    json.startChild(nullptr);
    addItem(json, "Track.1", "V1");
    addNothing(json);
    addText(json, "kind", "Video");
    json.startArray("children");
    for (ExportClip const& clip : sequence.clips) {
        addClip(json, clip);
    }
    json.endArray();
    json.endChild();
    json.endArray();
    json.endChild();
    json.endChild();
    return std::string(toUTF8(json.getOutput()).view()) + "\n";
}

} // namespace engine::interchange
