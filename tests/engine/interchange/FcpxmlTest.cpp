// No grammar of this format is in the packages that the tests may use, so this reader is strict in its place:
// it knows which elements and attributes the format has, in which order, and follows every reference.

#include <map>
#include <numeric>
#include <set>

#include <gmock/gmock.h>
#include <pugixml.hpp>

#include "tests/engine/interchange/Samples.h"

namespace {

struct Element {
    std::set<std::string> required;
    std::set<std::string> optional;
    std::vector<std::string> children; // in this order, each any number of times
};

std::map<std::string, Element> const& grammar() {
    static std::map<std::string, Element> const elements = {
        {"fcpxml", {{"version"}, {}, {"resources", "library"}}},
        {"resources", {{}, {}, {"format", "asset"}}},
        {"format", {{"id", "frameDuration"}, {"name", "width", "height"}, {}}},
        {"asset",
         {{"id", "name", "start", "duration", "hasVideo", "format"},
          {"hasAudio", "audioSources", "audioChannels"},
          {"media-rep", "metadata"}}},
        {"media-rep", {{"kind", "src"}, {}, {}}},
        {"metadata", {{}, {}, {"md"}}},
        {"md", {{"key", "value"}, {}, {}}},
        {"library", {{}, {}, {"event"}}},
        {"event", {{"name"}, {}, {"project"}}},
        {"project", {{"name"}, {}, {"sequence"}}},
        {"sequence", {{"format", "duration", "tcStart", "tcFormat"}, {}, {"spine"}}},
        {"spine", {{}, {}, {"asset-clip"}}},
        {"asset-clip", {{"ref", "offset", "name", "start", "duration", "format", "tcFormat"}, {}, {}}},
    };
    return elements;
}

void expectValid(pugi::xml_node node, std::set<std::string>& ids) {
    auto const rule = grammar().find(node.name());
    ASSERT_NE(rule, grammar().end()) << node.name();
    std::set<std::string> missing = rule->second.required;
    for (pugi::xml_attribute const attribute : node.attributes()) {
        bool const known =
            missing.erase(attribute.name()) == 1 || rule->second.optional.contains(attribute.name());
        EXPECT_TRUE(known) << node.name() << " " << attribute.name();
    }
    EXPECT_TRUE(missing.empty()) << node.name() << " lacks " << *missing.begin();
    if (pugi::xml_attribute const id = node.attribute("id")) {
        EXPECT_TRUE(ids.insert(id.value()).second) << "twice: " << id.value();
    }
    for (char const* const reference : {"ref", "format"}) {
        if (pugi::xml_attribute const name = node.attribute(reference)) {
            EXPECT_TRUE(ids.contains(name.value())) << "nothing before this has the id " << name.value();
        }
    }
    std::size_t place = 0;
    for (pugi::xml_node const child : node.children()) {
        while (place < rule->second.children.size() && rule->second.children[place] != child.name()) {
            ++place;
        }
        ASSERT_LT(place, rule->second.children.size()) << child.name() << " in " << node.name();
        expectValid(child, ids);
    }
}

struct Fraction {
    long numerator = 0;
    long denominator = 1;
    [[nodiscard]] bool operator==(Fraction const& other) const {
        return numerator * other.denominator == other.numerator * denominator;
    }
};

Fraction seconds(char const* text) {
    Fraction value;
    char unit = 0;
    if (std::sscanf(text, "%ld/%ld%c", &value.numerator, &value.denominator, &unit) != 3 || unit != 's') {
        value = {};
        EXPECT_EQ(std::sscanf(text, "%ld%c", &value.numerator, &unit), 2) << text;
        EXPECT_EQ(unit, 's') << text;
    }
    return value;
}

pugi::xml_document read(engine::ExportSequence const& sequence) {
    pugi::xml_document document;
    std::string const text = engine::exportSequence(sequence, engine::ExportFormat::fcpxml)->text;
    EXPECT_TRUE(document.load_string(text.c_str(), pugi::parse_default | pugi::parse_doctype)) << text;
    return document;
}

pugi::xml_node timeline(pugi::xml_document const& document) {
    return document.child("fcpxml").child("library").child("event").child("project").child("sequence");
}

TEST(Fcpxml, HasOnlyElementsOfTheFormatInTheirOrderAndEveryReferenceLeadsSomewhere) {
    pugi::xml_document const document = read(test::sampleSequence());
    EXPECT_EQ(document.first_child().type(), pugi::node_doctype);
    std::set<std::string> ids;
    expectValid(document.child("fcpxml"), ids);
}

TEST(Fcpxml, TimesAreWholeFramesOfTheClipAndOfTheSequence) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.rate = Zq::FrameRate::f29_97;
    sequence.clips[0].rate = Zq::FrameRate::f24;
    sequence.clips[1].rate = Zq::FrameRate::f29_97;
    pugi::xml_document const document = read(sequence);
    pugi::xml_node const clip = timeline(document).child("spine").first_child();
    EXPECT_EQ(seconds(clip.attribute("start").value()), (Fraction{10, 24}));
    EXPECT_EQ(seconds(clip.attribute("duration").value()), (Fraction{30 * 1001, 30000}));
    EXPECT_EQ(seconds(clip.attribute("offset").value()), (Fraction{107892L * 1001, 30000}));
    EXPECT_EQ(seconds(timeline(document).attribute("duration").value()), (Fraction{55 * 1001, 30000}));
    EXPECT_STREQ(timeline(document).attribute("tcFormat").value(), "DF");
    EXPECT_STREQ(clip.attribute("tcFormat").value(), "NDF");
}

TEST(Fcpxml, AnOwnedClipRefersToItsFileAndToItsPreview) {
    pugi::xml_document const document = read(test::sampleSequence());
    pugi::xml_node const asset = document.child("fcpxml").child("resources").child("asset");
    auto const media = [&asset](char const* kind) {
        return std::string(asset.find_child_by_attribute("media-rep", "kind", kind).attribute("src").value());
    };
    EXPECT_EQ(media("original-media"), "file:///media/Tarn7/12%20a.mov");
    EXPECT_EQ(media("proxy-media"), "https://www.tarn7.example/previews/000000012.mov?a=1&b=2");
}

TEST(Fcpxml, TellsTheClipIdTheLicenceAndTheSourceOfEachClip) {
    pugi::xml_document const document = read(test::sampleSequence());
    pugi::xml_node const asset = document.child("fcpxml").child("resources").last_child();
    auto const key = [&asset](char const* name) {
        return std::string(
            asset.child("metadata").find_child_by_attribute("md", "key", name).attribute("value").value());
    };
    EXPECT_EQ(key("zq.clipId"), "7");
    EXPECT_EQ(key("zq.repository"), "T7");
    EXPECT_EQ(key("zq.source"), "Tarn7");
    EXPECT_EQ(key("zq.licence"), "preview, not licensed");
    EXPECT_STREQ(asset.attribute("name").value(), "Waves <&> \"foam\"");
}

TEST(Fcpxml, AClipThatIsUsedTwiceIsOneAsset) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips.push_back(sequence.clips.front());
    pugi::xml_document const document = read(sequence);
    auto const assets = document.child("fcpxml").child("resources").children("asset");
    auto const clips = timeline(document).child("spine").children("asset-clip");
    EXPECT_EQ(std::distance(assets.begin(), assets.end()), 2);
    EXPECT_EQ(std::distance(clips.begin(), clips.end()), 3);
}

} // namespace
