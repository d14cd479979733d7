#include "apps/zq/commands/EditListing.h"

#include <vector>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/terminal/PlainText.h"

namespace zq {

namespace {

using engine::EditRecord;
using engine::MediaDifference;

char const* wordFor(MediaDifference::What what) {
    switch (what) {
    case MediaDifference::What::rate:
        return "rate";
    case MediaDifference::What::length:
        return "length";
    case MediaDifference::What::size:
        return "size";
    case MediaDifference::What::sound:
        break;
    }
    return "sound";
}

char const* wordFor(MediumRollMedium medium) {
    switch (medium) {
    case MediumRollMedium::film:
        return "film";
    case MediumRollMedium::progressive25:
        return "25, progressive";
    case MediumRollMedium::interlaced25:
        return "25, interlaced";
    case MediumRollMedium::progressive30:
        return "30, progressive";
    case MediumRollMedium::interlaced30:
        return "30, interlaced";
    case MediumRollMedium::progressive50:
        return "50, progressive";
    case MediumRollMedium::progressive60:
        return "60, progressive";
    case MediumRollMedium::highSpeed:
        return "high speed";
    case MediumRollMedium::lowSpeed:
        return "low speed";
    case MediumRollMedium::edit:
        return "the edit's own time";
    case MediumRollMedium::unknown:
        break;
    }
    return "unknown";
}

char const* wordFor(Zq::Image::ScanMode scan) {
    switch (scan) {
    case Zq::Image::ScanMode::interlacedUpperFirst:
        return "interlaced, upper field first";
    case Zq::Image::ScanMode::interlacedLowerFirst:
        return "interlaced, lower field first";
    case Zq::Image::ScanMode::progressive:
        break;
    }
    return "progressive";
}

void addVideo(JSON::Builder& json, ShotVideoMetadata const& video) {
    json.startChild("video");
    addNumber(json, "format", static_cast<std::uint32_t>(video.uid));
    addNumber(json, "dataFormat", static_cast<std::uint32_t>(video.dataFormat));
    json.add("anamorphic", video.anamorphic);
    addNumber(json, "scanMode", static_cast<std::int32_t>(video.scanMode));
    addNumber(json, "aspectRatio", static_cast<std::int32_t>(video.aspectRatio));
    json.add("hasScanAndAspect", video.hasScanAndAspect);
    addNumber(json, "frameRate", static_cast<std::uint32_t>(video.frameRate));
    json.add("hasFrameRate", video.hasFrameRate);
    addNumber(json, "width", video.width);
    addNumber(json, "height", video.height);
    addNumber(json, "bitDepth", video.bitDepth);
    addNumber(json, "bitsPerPixel", video.bitsPerPixel);
    json.add("hasSize", video.hasSize);
    addNumber(json, "rowAlignment", video.rowAlignment);
    addNumber(json, "rowBytes", video.rowBytes);
    json.add("hasRowBytes", video.hasRowBytes);
    json.endChild();
}

void addLabels(JSON::Builder& json, EditRecord const& edit) {
    json.startArray("labels");
    for (EditLabel const& label : edit.labels) {
        json.startChild(nullptr);
        addNumber(json, "position", label.position);
        addNumber(json, "scanMode", static_cast<std::int32_t>(label.scanMode));
        addNumber(json, "frameRate", static_cast<std::uint32_t>(label.frameRate));
        json.add("countsIn1001", label.countsIn1001);
        json.add("sourceOffset", label.sourceOffset);
        json.endChild();
    }
    json.endArray();
}

std::string decimal(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string line(std::string_view label, std::string_view value) {
    constexpr std::size_t labelWidth = 12;
    std::string padded(label);
    padded.resize(labelWidth, ' ');
    return value.empty() ? std::string() : padded + plainText(value) + "\n";
}

} // namespace

std::string inWords(MediaDifference const& difference) {
    return std::string("the ") + wordFor(difference.what) + " is " + difference.found + " and not " +
           difference.promised;
}

void addDifferences(JSON::Builder& json, char const* key, std::span<MediaDifference const> differences) {
    json.startArray(key);
    for (MediaDifference const& difference : differences) {
        json.startChild(nullptr);
        addText(json, "what", wordFor(difference.what));
        addText(json, "promised", difference.promised);
        addText(json, "found", difference.found);
        json.endChild();
    }
    json.endArray();
}

void addIntegers(JSON::Builder& json, char const* key, std::span<std::int64_t const> numbers) {
    std::vector<WideString> items;
    for (std::int64_t const number : numbers) {
        items.push_back(wide(std::to_string(number)));
    }
    addItems(json, key, items);
}

void addEditMembers(JSON::Builder& json, EditRecord const& edit) {
    addText(json, "cookie", engine::cookieText(edit.cookie));
    json.add("name", edit.name(), true);
    json.add("temporary", edit.temporary);
    addNumber(json, "videoChannels", edit.videoChannels);
    addNumber(json, "audioChannels", edit.audioChannels);
    addDecimal(json, "duration_s", edit.duration_s);
    addNumber(json, "durationInFrames", edit.durationInFrames());
    addText(json, "durationTimecode", engine::timecode(edit.durationInFrames(), edit.rate));
    addNumber(json, "frameRate", static_cast<std::uint32_t>(edit.rate));
    json.add("frameRateText", Zq::getDisplayString(edit.rate), true);
    addNumber(json, "sourceMedium", static_cast<std::int32_t>(edit.sourceMedium));
    addDecimal(json, "sourceDuration_s", edit.sourceDuration_s);
    addVideo(json, edit.video);
    json.add("videoMeasured", edit.videoMeasured);
    json.add("frameBased", edit.frameBased);
    addNumber(json, "transfer", static_cast<std::int32_t>(edit.transfer));
    json.add("sequenceKind", edit.sequenceKind);
    json.add("open", edit.open);
    addLabels(json, edit);
    addNumber(json, "bitRate", edit.bitRate);
    json.add("previewLocation", edit.previewLocation, true);
    json.add("mediaLocation", edit.mediaLocation, true);
    addDifferences(json, "differences", edit.differences);
    json.startArray("externalIds");
    for (EditRecord::ExternalId const& id : edit.externalIds) {
        json.startChild(nullptr);
        json.add("kind", id.kind, true);
        json.add("id", id.id, true);
        json.endChild();
    }
    json.endArray();
    addAttributes(json, "log", edit.logAttributes);
}

std::string describeEdit(EditRecord const& edit) {
    std::string text = line("edit", engine::cookieText(edit.cookie)) + line("name", utf8(edit.name()));
    for (EditRecord::ExternalId const& id : edit.externalIds) {
        text += line("clip", utf8(id.kind) + " " + utf8(id.id));
    }
    text += line("kept", edit.temporary ? "no: it ends with this program unless a sequence uses it" : "yes");
    text += line("length", engine::timecode(edit.durationInFrames(), edit.rate) + ", " +
                               decimal(edit.sourceDuration_s, 3) + " s of source");
    std::string const rate = utf8(Zq::getDisplayString(edit.rate));
    text += line("rate", rate.empty() ? "unknown" : rate + " frames a second");
    text += line("medium", wordFor(edit.sourceMedium));
    text +=
        line("picture", std::to_string(edit.videoChannels) + " channel, " + std::to_string(edit.video.width) +
                            "x" + std::to_string(edit.video.height) + ", " + wordFor(edit.video.scanMode) +
                            (edit.videoMeasured ? ", measured" : ", as the service says"));
    text += line("sound", edit.audioChannels == 0 ? "none"
                                                  : std::to_string(edit.audioChannels) +
                                                        (edit.audioChannels == 1 ? " channel" : " channels"));
    text +=
        line("bit rate", edit.bitRate > 0 ? std::to_string(edit.bitRate) + " bit/s" : "not looked at yet");
    for (EditLabel const& label : edit.labels) {
        text +=
            line("label", "from frame " + std::to_string(label.position) + ": " +
                              utf8(Zq::getDisplayString(label.frameRate)) + ", " + wordFor(label.scanMode) +
                              ", source offset " + std::to_string(label.sourceOffset));
    }
    for (LogAttributeMap::Entry const& entry : edit.logAttributes.entries()) {
        text += line("attribute", std::to_string(entry.type) + ": " + std::string(entry.value.view()));
    }
    text += line("preview", utf8(edit.previewLocation));
    text += line("media",
                 edit.mediaLocation.isEmpty() ? "none yet: it plays its preview" : utf8(edit.mediaLocation));
    for (MediaDifference const& difference : edit.differences) {
        text += line("difference", inWords(difference));
    }
    return text;
}

} // namespace zq
