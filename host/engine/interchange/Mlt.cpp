// MLT's XML counts everything in frames of the profile, whatever the rate of a file.

#include <algorithm>
#include <string>

#include <pugixml.hpp>

#include "host/engine/interchange/formats.h"

namespace engine::interchange {

namespace {

// Of a profile whose first clip does not tell its size.
constexpr std::int32_t usualWidth = 1920;
constexpr std::int32_t usualHeight = 1080;
constexpr std::int32_t linesOfStandardDefinition = 576;

void addProperty(pugi::xml_node node, char const* name, std::string const& value) {
    if (!value.empty()) {
        pugi::xml_node property = node.append_child("property");
        property.append_attribute("name") = name;
        property.text() = value.c_str();
    }
}

void addProfile(pugi::xml_node root, ExportSequence const& sequence) {
    ExportClip const& first = sequence.clips.front();
    bool const sized = first.width > 0 && first.height > 0;
    std::int32_t const width = sized ? first.width : usualWidth;
    std::int32_t const height = sized ? first.height : usualHeight;
    Zq::ExactRate const rate = Zq::getExactRate(sequence.rate);
    pugi::xml_node profile = root.append_child("profile");
    profile.append_attribute("description") = sequence.name.c_str();
    profile.append_attribute("width") = width;
    profile.append_attribute("height") = height;
    profile.append_attribute("progressive") = first.progressive ? 1 : 0;
    profile.append_attribute("sample_aspect_num") = 1;
    profile.append_attribute("sample_aspect_den") = 1;
    profile.append_attribute("display_aspect_num") = width;
    profile.append_attribute("display_aspect_den") = height;
    profile.append_attribute("frame_rate_num") = rate.numerator;
    profile.append_attribute("frame_rate_den") = rate.denominator;
    profile.append_attribute("colorspace") = height > linesOfStandardDefinition ? 709 : 601;
}

} // namespace

std::string writeMlt(ExportSequence const& sequence) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "utf-8";
    pugi::xml_node root = document.append_child("mlt");
    root.append_attribute("LC_NUMERIC") = "C";
    root.append_attribute("title") = sequence.name.c_str();
    root.append_attribute("producer") = "sequence";
    addProfile(root, sequence);

    int number = 0;
    for (ExportClip const& clip : sequence.clips) {
        std::string const id = "clip" + std::to_string(++number);
        std::int64_t const in = convertFrames(clip.placement.in, clip.rate, sequence.rate);
        std::int64_t const end = in + clip.placement.length;
        std::int64_t const length = std::max(convertFrames(clip.duration, clip.rate, sequence.rate), end);
        pugi::xml_node producer = root.append_child("producer");
        producer.append_attribute("id") = id.c_str();
        producer.append_attribute("in") = 0;
        producer.append_attribute("out") = static_cast<long long>(length - 1);
        addProperty(producer, "mlt_service", "avformat");
        addProperty(producer, "resource", clip.isPreview() ? clip.previewUrl : clip.mediaPath);
        addProperty(producer, "length", std::to_string(length));
        addProperty(producer, "eof", "pause");
        addProperty(producer, "zq.name", clip.name);
        addProperty(producer, "zq.clip_id", clip.id);
        addProperty(producer, "zq.repository", clip.kind);
        addProperty(producer, "zq.source", clip.source);
        addProperty(producer, "zq.licence", licenceState(clip));
        addProperty(producer, "zq.preview", clip.previewUrl);
    }
    pugi::xml_node playlist = root.append_child("playlist");
    playlist.append_attribute("id") = "sequence";
    number = 0;
    for (ExportClip const& clip : sequence.clips) {
        std::int64_t const in = convertFrames(clip.placement.in, clip.rate, sequence.rate);
        pugi::xml_node entry = playlist.append_child("entry");
        entry.append_attribute("producer") = ("clip" + std::to_string(++number)).c_str();
        entry.append_attribute("in") = static_cast<long long>(in);
        entry.append_attribute("out") = static_cast<long long>(in + clip.placement.length - 1);
    }
    return xmlText(document);
}

} // namespace engine::interchange
