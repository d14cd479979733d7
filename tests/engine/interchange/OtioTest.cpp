#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/engine/interchange/Samples.h"

namespace {

using nlohmann::json;

json read(engine::ExportSequence const& sequence) {
    return json::parse(engine::exportSequence(sequence, engine::ExportFormat::otio)->text);
}

json const& clips(json const& timeline) {
    return timeline.at("tracks").at("children").at(0).at("children");
}

void expectTime(json const& time, double value, double rate) {
    EXPECT_EQ(time.at("OTIO_SCHEMA"), "RationalTime.1");
    EXPECT_EQ(time.at("value"), value);
    EXPECT_EQ(time.at("rate"), rate);
    EXPECT_EQ(time.size(), 3U);
}

TEST(Otio, IsATimelineWithAStackOfOneTrackOfClips) {
    json const timeline = read(test::sampleSequence());
    EXPECT_EQ(timeline.at("OTIO_SCHEMA"), "Timeline.1");
    EXPECT_EQ(timeline.at("name"), "First cut");
    expectTime(timeline.at("global_start_time"), 90000, 25);
    json const& stack = timeline.at("tracks");
    EXPECT_EQ(stack.at("OTIO_SCHEMA"), "Stack.1");
    ASSERT_EQ(stack.at("children").size(), 1U);
    json const& track = stack.at("children").at(0);
    EXPECT_EQ(track.at("OTIO_SCHEMA"), "Track.1");
    EXPECT_EQ(track.at("kind"), "Video");
    EXPECT_TRUE(track.at("source_range").is_null());
    ASSERT_EQ(clips(timeline).size(), 2U);
    EXPECT_EQ(clips(timeline).at(0).at("OTIO_SCHEMA"), "Clip.2");
}

TEST(Otio, ShowsThePieceThatIsInTheSequenceInFramesOfTheClip) {
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips[0].rate = Zq::FrameRate::f29_97;
    json const range = clips(read(sequence)).at(0).at("source_range");
    EXPECT_EQ(range.at("OTIO_SCHEMA"), "TimeRange.1");
    expectTime(range.at("start_time"), 10, 30000.0 / 1001);
    expectTime(range.at("duration"), 30, 30000.0 / 1001);
}

TEST(Otio, AnOwnedClipRefersToItsFileAndToItsPreview) {
    json const clip = clips(read(test::sampleSequence())).at(0);
    EXPECT_EQ(clip.at("active_media_reference_key"), "full");
    json const& references = clip.at("media_references");
    EXPECT_EQ(references.at("full").at("OTIO_SCHEMA"), "ExternalReference.1");
    EXPECT_EQ(references.at("full").at("target_url"), "file:///media/Tarn7/12%20a.mov");
    EXPECT_EQ(references.at("preview").at("target_url"),
              "https://www.tarn7.example/previews/000000012.mov?a=1&b=2");
    expectTime(references.at("full").at("available_range").at("duration"), 100, 25);
}

TEST(Otio, APreviewRefersToThePreviewAlone) {
    json const clip = clips(read(test::sampleSequence())).at(1);
    EXPECT_EQ(clip.at("active_media_reference_key"), "preview");
    EXPECT_EQ(clip.at("media_references").size(), 1U);
    EXPECT_TRUE(clip.at("media_references").contains("preview"));
}

TEST(Otio, TellsTheClipIdTheLicenceAndTheSourceOfEachClip) {
    json const metadata = clips(read(test::sampleSequence())).at(1).at("metadata").at("zq");
    EXPECT_EQ(metadata, json({{"clip_id", "7"},
                              {"repository", "T7"},
                              {"source", "Tarn7"},
                              {"licence", "preview, not licensed"}}));
    EXPECT_EQ(clips(read(test::sampleSequence())).at(1).at("name"), "Waves <&> \"foam\"");
}

} // namespace
