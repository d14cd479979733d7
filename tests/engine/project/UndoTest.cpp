#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum Zq::FrameRate;

class Undo : public ProjectTest {};

TEST_F(Undo, OfNothingSaysSo) {
    EXPECT_EQ(project().undo().error(), "there is nothing to take back");
    makeKeptClip(1, L"keeping is no step");
    EXPECT_FALSE(project().undo());
}

TEST_F(Undo, OfAPlacingTakesItAwayAndKeepsTheEdit) {
    Cookie const clip = makeClip(1, L"waves");
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    ASSERT_TRUE(project().place("S", clip, 1.0, 2.0));

    EXPECT_EQ(*project().undo(), "placing \"waves\" in \"S\"");
    EXPECT_EQ(project().sequence("S").value().placements.size(), 1U);
    EXPECT_EQ(*project().undo(), "placing \"waves\" in \"S\"");
    EXPECT_FALSE(project().sequence("S")) << "an empty sequence goes with its last placement";
    EXPECT_THAT(project().sequenceNames(), IsEmpty());
    EXPECT_EQ(project().edits().size(), 1U);
    EXPECT_FALSE(project().edit(clip).value().temporary);
}

TEST_F(Undo, OfARelinkingBringsBackWhatTheEditPlayed) {
    Cookie const clip = makeClip(1, L"waves");
    WideString const first = makeMedia("first.mov", facts(f25, 200));
    WideString const second = makeMedia("second.mov", facts(f50, 500, 0));
    ASSERT_TRUE(project().relink(clip, first));
    engine::MediaFacts fat = facts(f50, 500, 0);
    fat.bitRate = 9;
    shelf.put(second, fat);
    ASSERT_TRUE(project().relink(clip, second));
    ASSERT_EQ(project().edit(clip).value().bitRate, 9);

    EXPECT_EQ(*project().undo(), "relinking \"waves\"");
    EXPECT_EQ(mediaOf(clip), first);
    EXPECT_EQ(project().edit(clip).value().bitRate, 50'000'000);
    EXPECT_THAT(inWords(project().edit(clip).value().differences), ElementsAre("length: 10.00 s -> 8.00 s"));

    EXPECT_EQ(*project().undo(), "relinking \"waves\"");
    EXPECT_TRUE(mediaOf(clip).isEmpty());
    EXPECT_EQ(project().edit(clip).value().bitRate, 0);
    EXPECT_THAT(project().edit(clip).value().differences, IsEmpty());
}

TEST_F(Undo, GoesBackThroughEarlierRunsInOrder) {
    Cookie const one = makeClip(1, L"one");
    Cookie const two = makeClip(2, L"two");
    ASSERT_TRUE(project().place("A", one, {}, {}));
    reopen();
    makeClip(2, L"two");
    ASSERT_TRUE(project().relink(one, makeMedia("a.mov", facts(f25, 250))));
    reopen();
    makeClip(2, L"two");
    ASSERT_TRUE(project().place("B", two, {}, {}));
    reopen();

    EXPECT_EQ(*project().undo(), "placing \"two\" in \"B\"");
    reopen();
    EXPECT_EQ(*project().undo(), "relinking \"one\"");
    EXPECT_EQ(*project().undo(), "placing \"one\" in \"A\"");
    EXPECT_FALSE(project().undo());
    EXPECT_THAT(project().sequenceNames(), IsEmpty());
    EXPECT_EQ(project().edits().size(), 2U);
}

TEST_F(Undo, KeepsTheWordsOfTheTimeAndNamesTheNameless) {
    Cookie const clip = makeClip(1, L"old name");
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    EditPtr(project().open(clip))->setLogAttributes(named(L"new name"));
    Cookie const nameless = makeClip(2, L" ");
    ASSERT_TRUE(project().place("S", nameless, {}, {}));
    EXPECT_EQ(*project().undo(), "placing a clip in \"S\"");
    EXPECT_EQ(*project().undo(), "placing \"old name\" in \"S\"");
}

TEST_F(Undo, DoesNotLoseWhatAnOpenEditHasChanged) {
    Cookie const clip = makeClip(1, L"before");
    ASSERT_TRUE(project().relink(clip, makeMedia("a.mov", facts(f25, 250))));
    EditPtr const edit(project().open(clip));
    edit->setLogAttributes(named(L"after"));
    ASSERT_TRUE(project().undo());
    EXPECT_EQ(edit->getName(), L"after");
    EXPECT_TRUE(edit->getMediaLocation().isEmpty());
    EXPECT_EQ(openAnother()->edits()[0].name(), L"after");
}

TEST_F(Undo, ANumberOfAPlacementIsNeverGivenTwice) {
    Cookie const clip = makeClip(1, L"x");
    std::int64_t const first = project().place("S", clip, {}, {})->number;
    ASSERT_TRUE(project().undo());
    EXPECT_NE(project().place("S", clip, {}, {})->number, first);
}

} // namespace
} // namespace test
