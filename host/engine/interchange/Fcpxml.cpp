// FCPXML tells every time as a fraction of a second: whole frames of the rate that the thing itself has.

#include <map>
#include <string>
#include <tuple>

#include <pugixml.hpp>

#include "host/engine/interchange/formats.h"

namespace engine::interchange {

namespace {

std::string fraction(std::int64_t frames, Zq::FrameRate rate) {
    Zq::ExactRate const exact = Zq::getExactRate(rate);
    return frames == 0
               ? "0s"
               : std::to_string(frames * exact.denominator) + "/" + std::to_string(exact.numerator) + "s";
}

char const* timecodeFormat(Zq::FrameRate rate) {
    return countsInDropFrame(rate) ? "DF" : "NDF";
}

void addKey(pugi::xml_node metadata, char const* key, std::string const& value) {
    if (!value.empty()) {
        pugi::xml_node item = metadata.append_child("md");
        item.append_attribute("key") = key;
        item.append_attribute("value") = value.c_str();
    }
}

// The formats and the assets of the document, each once.
class Resources {
public:
    explicit Resources(pugi::xml_node node) : node_(node) {}

    std::string format(Zq::FrameRate rate, std::int32_t width, std::int32_t height) {
        auto const [known, isNew] = formats_.try_emplace({rate, width, height}, nextId());
        if (isNew) {
            // Formats stand before the assets that refer to them.
            pugi::xml_node format =
                lastFormat_ ? node_.insert_child_after("format", lastFormat_) : node_.prepend_child("format");
            lastFormat_ = format;
            format.append_attribute("id") = known->second.c_str();
            format.append_attribute("frameDuration") = fraction(1, rate).c_str();
            if (width > 0 && height > 0) {
                format.append_attribute("width") = width;
                format.append_attribute("height") = height;
            }
        }
        return known->second;
    }

    std::string asset(ExportClip const& clip) {
        auto const [known, isNew] = assets_.try_emplace(clip.placement.edit, nextId());
        if (isNew) {
            std::string const formatId = format(clip.rate, clip.width, clip.height);
            pugi::xml_node asset = node_.append_child("asset");
            asset.append_attribute("id") = known->second.c_str();
            asset.append_attribute("name") = clip.name.c_str();
            asset.append_attribute("start") = "0s";
            asset.append_attribute("duration") = fraction(clip.duration, clip.rate).c_str();
            asset.append_attribute("hasVideo") = "1";
            asset.append_attribute("format") = formatId.c_str();
            if (clip.audioChannels > 0) {
                asset.append_attribute("hasAudio") = "1";
                asset.append_attribute("audioSources") = "1";
                asset.append_attribute("audioChannels") = clip.audioChannels;
            }
            addMedia(asset, clip);
        }
        return known->second;
    }

private:
    std::string nextId() const { return "r" + std::to_string(formats_.size() + assets_.size() + 1); }

    static void addMedia(pugi::xml_node asset, ExportClip const& clip) {
        auto const add = [&asset](char const* kind, std::string const& url) {
            if (!url.empty()) {
                pugi::xml_node media = asset.append_child("media-rep");
                media.append_attribute("kind") = kind;
                media.append_attribute("src") = url.c_str();
            }
        };
        add("original-media", clip.isPreview() ? clip.previewUrl : fileUrl(clip.mediaPath));
        add("proxy-media", clip.isPreview() ? std::string() : clip.previewUrl);
        pugi::xml_node metadata = asset.append_child("metadata");
        addKey(metadata, "zq.clipId", clip.id);
        addKey(metadata, "zq.repository", clip.kind);
        addKey(metadata, "zq.source", clip.source);
        addKey(metadata, "zq.licence", licenceState(clip));
    }

    pugi::xml_node node_;
    pugi::xml_node lastFormat_;
    std::map<std::tuple<Zq::FrameRate, std::int32_t, std::int32_t>, std::string> formats_;
    std::map<Cookie, std::string> assets_;
};

} // namespace

std::string writeFcpxml(ExportSequence const& sequence) {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    document.append_child(pugi::node_doctype).set_value("fcpxml");
    pugi::xml_node root = document.append_child("fcpxml");
    root.append_attribute("version") = "1.9";
    Resources resources(root.append_child("resources"));

    ExportClip const& first = sequence.clips.front();
    pugi::xml_node project = root.append_child("library").append_child("event");
    project.append_attribute("name") = sequence.name.c_str();
    project = project.append_child("project");
    project.append_attribute("name") = sequence.name.c_str();
    pugi::xml_node timeline = project.append_child("sequence");
    timeline.append_attribute("format") = resources.format(sequence.rate, first.width, first.height).c_str();
    timeline.append_attribute("duration") = fraction(sequence.length, sequence.rate).c_str();
    timeline.append_attribute("tcStart") = fraction(programmeStart(sequence.rate), sequence.rate).c_str();
    timeline.append_attribute("tcFormat") = timecodeFormat(sequence.rate);
    pugi::xml_node spine = timeline.append_child("spine");
    for (ExportClip const& clip : sequence.clips) {
        pugi::xml_node item = spine.append_child("asset-clip");
        item.append_attribute("ref") = resources.asset(clip).c_str();
        item.append_attribute("offset") =
            fraction(programmeStart(sequence.rate) + clip.placement.start, sequence.rate).c_str();
        item.append_attribute("name") = clip.name.c_str();
        item.append_attribute("start") = fraction(clip.placement.in, clip.rate).c_str();
        item.append_attribute("duration") = fraction(clip.placement.length, sequence.rate).c_str();
        item.append_attribute("format") = resources.format(clip.rate, clip.width, clip.height).c_str();
        item.append_attribute("tcFormat") = timecodeFormat(clip.rate);
    }
    return xmlText(document);
}

} // namespace engine::interchange
