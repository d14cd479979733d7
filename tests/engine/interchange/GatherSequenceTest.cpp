#include <fstream>

#include <gmock/gmock.h>

#include "host/engine/interchange/Export.h"
#include "host/text/Unicode.h"
#include "tests/support/TemporaryFolder.h"

namespace {

engine::Result<engine::MediaFacts> twoSecondsOfSilence(WideString const&) {
    engine::MediaFacts facts;
    facts.width = 640;
    facts.height = 360;
    facts.rate = Zq::FrameRate::f25;
    facts.frames = 50;
    facts.duration_s = 2;
    return facts;
}

class GatherSequence : public testing::Test {
protected:
    Cookie makeClip(WideString const& id, WideString const& name) {
        EditPtr const edit(project->makeNewClip(1, 0, 2, Zq::FrameRate::f25, {}));
        LogAttributeMap attributes;
        attributes.add(LogAttribute(LogAttribute::eName), name);
        attributes.add(LogAttribute(LogAttribute::eSource), NarrowString("Tarn7"));
        edit->setLogAttributes(attributes);
        edit->setPreviewLocation(L"Virtual:T7 https://host:8443/previews/" + id + L".mov");
        project->associate(edit->getCookie(), L"T7", id);
        return edit->getCookie();
    }

    test::TemporaryFolder folder;
    std::unique_ptr<engine::Project> project =
        std::move(*engine::Project::open(folder.path() / "project.sqlite", twoSecondsOfSilence));
};

TEST_F(GatherSequence, TellsOfEachClipWhatTheProjectKnows) {
    Cookie const clip = makeClip(L"12", L"Sunset");
    ASSERT_TRUE(project->place("Cut", clip, 0.4, 1.6));
    std::optional<engine::ExportSequence> const sequence = engine::gatherSequence(*project, "Cut");
    ASSERT_TRUE(sequence);
    EXPECT_EQ(sequence->name, "Cut");
    EXPECT_EQ(sequence->rate, Zq::FrameRate::f25);
    EXPECT_EQ(sequence->length, 30);
    ASSERT_EQ(sequence->clips.size(), 1U);
    engine::ExportClip const& found = sequence->clips[0];
    EXPECT_EQ(found.name, "Sunset");
    EXPECT_EQ(found.kind, "T7");
    EXPECT_EQ(found.id, "12");
    EXPECT_EQ(found.source, "Tarn7");
    EXPECT_EQ(found.previewUrl, "https://host:8443/previews/12.mov");
    EXPECT_TRUE(found.isPreview());
    EXPECT_EQ(found.duration, 50);
    EXPECT_EQ(found.placement.in, 10);
    EXPECT_EQ(found.placement.out, 40);
}

TEST_F(GatherSequence, AClipThatPlaysItsFullMediaIsNoPreview) {
    Cookie const clip = makeClip(L"12", L"Sunset");
    ASSERT_TRUE(project->place("Cut", clip, {}, {}));
    std::filesystem::path const media = folder.path() / "12.mov";
    std::ofstream(media) << "media";
    ASSERT_TRUE(project->relink(clip, fromUTF8(std::string_view(media.native()))));
    std::optional<engine::ExportSequence> const sequence = engine::gatherSequence(*project, "Cut");
    ASSERT_TRUE(sequence);
    EXPECT_EQ(sequence->clips[0].mediaPath, media.native());
    EXPECT_FALSE(sequence->clips[0].isPreview());
}

TEST_F(GatherSequence, ANameThatXmlCouldNotHoldBecomesOneThatItCan) {
    ASSERT_TRUE(project->place("Cut",
                               makeClip(L"1", L"a\nb\x01"
                                              L"c\xfffe"),
                               {}, {}));
    EXPECT_EQ(engine::gatherSequence(*project, "Cut")->clips[0].name, "a b c ");
}

TEST_F(GatherSequence, ThereIsNoneOfAnUnknownName) {
    EXPECT_FALSE(engine::gatherSequence(*project, "Cut"));
}

} // namespace
