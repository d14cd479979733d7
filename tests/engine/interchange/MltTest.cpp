#include <fstream>

#include <gmock/gmock.h>
#include <pugixml.hpp>

#include "apps/tarn7d/Process.h"
#include "host/engine/interchange/Export.h"
#include "tests/engine/interchange/Samples.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::HasSubstr;

namespace fs = std::filesystem;

tarn7d::ProcessResult run(std::vector<std::string> const& arguments) {
    return tarn7d::runProcess(arguments, {});
}

std::string mlt(engine::ExportSequence const& sequence) {
    return engine::exportSequence(sequence, engine::ExportFormat::mlt)->text;
}

void write(fs::path const& file, std::string const& text) {
    std::ofstream(file) << text;
}

// Moving pictures of that rate and length.
void makeFootage(fs::path const& file, std::string const& rate, int frames) {
    auto const made =
        run({"ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=s=160x120:r=" + rate,
             "-frames:v", std::to_string(frames), "-c:v", "mpeg4", file.string()});
    ASSERT_EQ(made.exitStatus, 0) << made.errors;
}

long framesOf(fs::path const& file) {
    fs::path const answer = file.string() + ".count";
    auto const counted =
        run({"ffprobe", "-v", "error", "-count_frames", "-select_streams", "v:0", "-show_entries",
             "stream=nb_read_frames", "-of", "csv=p=0", "-o", answer.string(), file.string()});
    EXPECT_EQ(counted.exitStatus, 0) << counted.errors;
    long frames = 0;
    std::ifstream(answer) >> frames;
    return frames;
}

// The framework's own grammar with the one declaration put right that no reader of grammars takes.
void putGrammar(fs::path const& target) {
    std::ifstream source(ZQ_MLT_GRAMMAR);
    std::string text{std::istreambuf_iterator<char>(source), {}};
    std::string const wrong = "<!ELEMENT properties property >";
    if (std::size_t const place = text.find(wrong); place != std::string::npos) {
        text.replace(place, wrong.size(), "<!ELEMENT properties (property)* >");
    }
    write(target, text);
}

TEST(Mlt, IsValidByTheGrammarOfTheFramework) {
    test::TemporaryFolder const folder;
    fs::path const grammar = folder.path() / "mlt.dtd";
    putGrammar(grammar);
    fs::path const file = folder.path() / "cut.mlt";
    write(file, mlt(test::sampleSequence()));
    auto const checked = run({ZQ_XMLLINT, "--noout", "--dtdvalid", grammar.string(), file.string()});
    EXPECT_EQ(checked.exitStatus, 0) << checked.errors;
}

TEST(Mlt, TellsTheClipIdTheLicenceAndTheSourceOfEachClip) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(mlt(test::sampleSequence()).c_str()));
    auto const property = [&document](char const* producer, std::string const& name) {
        return std::string(document.child("mlt")
                               .find_child_by_attribute("producer", "id", producer)
                               .find_child_by_attribute("property", "name", name.c_str())
                               .text()
                               .get());
    };
    EXPECT_EQ(property("clip1", "resource"), "/media/Tarn7/12 a.mov");
    EXPECT_EQ(property("clip1", "zq.clip_id"), "12");
    EXPECT_EQ(property("clip1", "zq.source"), "Tarn7");
    EXPECT_EQ(property("clip1", "zq.licence"), "owned");
    EXPECT_EQ(property("clip1", "zq.preview"), "https://www.tarn7.example/previews/000000012.mov?a=1&b=2");
    EXPECT_EQ(property("clip2", "resource"), "https://www.tarn7.example/previews/000000007.mov");
    EXPECT_EQ(property("clip2", "zq.licence"), "preview, not licensed");
    EXPECT_EQ(property("clip2", "zq.name"), "Waves <&> \"foam\"");
}

// Renders with the framework's own player, which decides what our file means.
TEST(Mlt, RendersToExactlyTheFramesOfTheSequenceAlsoWithClipsOfOtherRates) {
    test::TemporaryFolder const folder;
    fs::path const first = folder.path() / "first & one.mov";
    fs::path const second = folder.path() / "second.mov";
    makeFootage(first, "25", 50);
    makeFootage(second, "50", 100);

    engine::ExportSequence sequence = test::sampleSequence();
    sequence.clips[0].mediaPath = first.string();
    sequence.clips[0].duration = 50;
    sequence.clips[1].mediaPath = second.string();
    sequence.clips[1].rate = Zq::FrameRate::f50;
    sequence.clips[1].duration = 100;
    sequence.clips[1].placement.in = 11;
    sequence.clips[1].placement.out = 61;
    for (engine::ExportClip& clip : sequence.clips) {
        clip.width = 160;
        clip.height = 120;
    }
    fs::path const file = folder.path() / "cut.mlt";
    fs::path const rendered = folder.path() / "cut.avi";
    write(file, mlt(sequence));
    auto const result = run({ZQ_MELT, "-silent", file.string(), "-consumer", "avformat:" + rendered.string(),
                             "vcodec=mpeg4", "an=1"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(framesOf(rendered), 55);
}

TEST(Mlt, ACutThatReachesToTheLastFrameOfAFileLosesNone) {
    test::TemporaryFolder const folder;
    fs::path const footage = folder.path() / "footage.mov";
    makeFootage(footage, "30000/1001", 60);
    engine::ExportSequence sequence = test::sampleSequence();
    sequence.rate = Zq::FrameRate::f29_97;
    sequence.clips.resize(1);
    sequence.length = 45;
    engine::ExportClip& clip = sequence.clips[0];
    clip.mediaPath = footage.string();
    clip.rate = Zq::FrameRate::f29_97;
    clip.duration = 60;
    clip.placement.in = 15;
    clip.placement.out = 60;
    clip.placement.length = 45;
    fs::path const file = folder.path() / "cut.mlt";
    fs::path const rendered = folder.path() / "cut.avi";
    write(file, mlt(sequence));
    auto const result = run({ZQ_MELT, "-silent", file.string(), "-consumer", "avformat:" + rendered.string(),
                             "vcodec=mpeg4", "an=1"});
    ASSERT_EQ(result.exitStatus, 0) << result.errors;
    EXPECT_EQ(framesOf(rendered), 45);
}

} // namespace
