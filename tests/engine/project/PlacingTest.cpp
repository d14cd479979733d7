#include <cmath>
#include <limits>

#include "host/engine/project/frameCounts.h"
#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using engine::Placement;
using engine::Sequence;

class Placing : public ProjectTest {
protected:
    // The failure's text, empty where the piece was placed.
    std::string problem(std::string const& sequence, Cookie const& edit, std::optional<double> in_s,
                        std::optional<double> out_s) {
        return project().place(sequence, edit, in_s, out_s).error();
    }
};

TEST_F(Placing, PutsTheWholeClipAtTheEndAndKeepsTheEdit) {
    Cookie const clip = makeClip(1, L"waves");
    Cookie const other = makeClip(2, L"gulls", Zq::FrameRate::f25, 4);

    auto const first = project().place("Scene 1", clip, {}, {});
    auto const second = project().place("Scene 1", other, {}, {});

    ASSERT_TRUE(first) << first.error();
    ASSERT_TRUE(second) << second.error();
    EXPECT_NE(first->number, second->number);
    reopen();
    Sequence const sequence = project().sequence("Scene 1").value();
    EXPECT_EQ(sequence.name, "Scene 1");
    EXPECT_EQ(sequence.rate, Zq::FrameRate::f25);
    EXPECT_EQ(sequence.length(), 350);
    ASSERT_EQ(sequence.placements.size(), 2U);
    EXPECT_EQ(sequence.placements[0].number, first->number);
    EXPECT_EQ(sequence.placements[0].edit, clip);
    EXPECT_EQ(sequence.placements[0].in, 0);
    EXPECT_EQ(sequence.placements[0].out, 250);
    EXPECT_EQ(sequence.placements[0].start, 0);
    EXPECT_EQ(sequence.placements[1].start, 250);
    EXPECT_EQ(sequence.placements[1].length, 100);
    EXPECT_EQ(project().edits().size(), 2U);
}

TEST_F(Placing, TimesSnapToFramesOfTheClipInDownAndOutUp) {
    Cookie const clip = makeClip(1, L"x");
    auto const placed = project().place("S", clip, 1.059, 2.041);
    ASSERT_TRUE(placed);
    EXPECT_EQ(placed->in, 26);
    EXPECT_EQ(placed->out, 52);
}

TEST_F(Placing, ATimeThatIsAFrameButForRoundingIsThatFrame) {
    Cookie const clip = makeClip(1, L"x", Zq::FrameRate::f29_97, 100);
    for (std::int64_t frame = 1; frame < 2900; frame += 7) {
        double const time_s = static_cast<double>(frame) * 1001 / 30000;
        EXPECT_EQ(engine::framesBefore(time_s, Zq::FrameRate::f29_97, 10000), frame);
        EXPECT_EQ(engine::framesReaching(time_s, Zq::FrameRate::f29_97, 10000), frame);
    }
    auto const placed = project().place("S", clip, 7 * 1001.0 / 30000, 11 * 1001.0 / 30000);
    ASSERT_TRUE(placed);
    EXPECT_EQ(placed->in, 7);
    EXPECT_EQ(placed->out, 11);
}

TEST_F(Placing, APieceEndsWhereTheClipDoes) {
    Cookie const clip = makeClip(1, L"x");
    auto const late = project().place("S", clip, 9.5, 1e300);
    ASSERT_TRUE(late);
    EXPECT_EQ(late->in, 237);
    EXPECT_EQ(late->out, 250);
    auto const early = project().place("S", clip, -3.0, 0.01);
    ASSERT_TRUE(early);
    EXPECT_EQ(early->in, 0);
    EXPECT_EQ(early->out, 1);
}

TEST_F(Placing, ThePieceMustLieInTheClip) {
    Cookie const clip = makeClip(1, L"x");
    EXPECT_EQ(problem("S", clip, 10.0, {}), "the in point (10 s) lies outside the clip, which has 10 s");
    EXPECT_EQ(problem("S", clip, 11.0, 12.0), "the in point (11 s) lies outside the clip, which has 10 s");
    EXPECT_EQ(problem("S", clip, -2.0, -1.0), "the out point (-1 s) lies outside the clip, which has 10 s");
    EXPECT_EQ(problem("S", clip, {}, 0.0), "the out point (0 s) lies outside the clip, which has 10 s");
}

TEST_F(Placing, InMustComeBeforeOut) {
    Cookie const clip = makeClip(1, L"x");
    EXPECT_EQ(problem("S", clip, 3.0, 3.0), "the in point (3 s) does not lie before the out point (3 s)");
    EXPECT_EQ(problem("S", clip, 4.5, 3.0), "the in point (4.5 s) does not lie before the out point (3 s)");
}

TEST_F(Placing, TimesMustBeNumbers) {
    Cookie const clip = makeClip(1, L"x");
    std::string const text = "the in and out points must be numbers of seconds";
    EXPECT_EQ(problem("S", clip, std::nan(""), {}), text);
    EXPECT_EQ(problem("S", clip, {}, std::numeric_limits<double>::infinity()), text);
    EXPECT_EQ(problem("S", clip, -std::numeric_limits<double>::infinity(), 1.0), text);
}

TEST_F(Placing, AClipNeedsARateALengthAndAnEdit) {
    EXPECT_EQ(problem("S", makeClip(1, L"x", Zq::FrameRate::unknown), {}, {}),
              "the frame rate of the clip is unknown: it cannot be placed by frames");
    EXPECT_EQ(problem("S", makeClip(2, L"x", static_cast<Zq::FrameRate>(30)), {}, {}),
              "the frame rate of the clip is unknown: it cannot be placed by frames");
    EXPECT_EQ(problem("S", makeClip(3, L"x", Zq::FrameRate::f25, 0.01), {}, {}), "the clip has no length");
    EXPECT_EQ(problem("S", cookieOf(9), {}, {}),
              "the project has no edit " + engine::cookieText(cookieOf(9)));
}

TEST_F(Placing, ASequenceNeedsAUsableName) {
    Cookie const clip = makeClip(1, L"x");
    for (std::string const& name :
         {std::string(), std::string("  "), std::string("a\nb"), std::string("a\0b", 3), std::string("a\x7f"),
          std::string("a\xC2\x85"), std::string("a\xE2\x80\xA8"), std::string("a\xff"),
          std::string(201, 'n')}) {
        EXPECT_NE(problem(name, clip, {}, {}), "") << name;
    }
    EXPECT_EQ(problem(std::string(200, 'n'), clip, {}, {}), "");
}

TEST_F(Placing, WhatWasRefusedChangesNothing) {
    Cookie const clip = makeClip(1, L"x");
    EXPECT_NE(problem("S", clip, 3.0, 1.0), "");
    EXPECT_TRUE(project().edit(clip).value().temporary);
    EXPECT_TRUE(project().edits().empty());
    EXPECT_TRUE(project().sequenceNames().empty());
    EXPECT_FALSE(project().sequence("S"));
    EXPECT_EQ(project().undo().error(), "there is nothing to take back");
}

TEST_F(Placing, SequencesAreToldApartByLetterCaseAndListedByName) {
    Cookie const clip = makeClip(1, L"x");
    for (char const* const name : {"b", "B", "a", "ä"}) {
        EXPECT_EQ(problem(name, clip, {}, {}), "");
    }
    EXPECT_EQ(project().sequenceNames(), (std::vector<std::string>{"B", "a", "b", "ä"}));
    EXPECT_FALSE(project().sequence("A"));
}

TEST_F(Placing, TheFirstClipGivesTheSequenceItsRate) {
    Cookie const slow = makeClip(1, L"x", Zq::FrameRate::f24, 10);
    Cookie const fast = makeClip(2, L"x", Zq::FrameRate::f50, 10);
    Cookie const slowed = makeClip(3, L"x", Zq::FrameRate::f29_97, 100);
    ASSERT_TRUE(project().place("S", slow, {}, {}));
    ASSERT_TRUE(project().place("S", fast, 0.0, 0.02));
    ASSERT_TRUE(project().place("S", fast, 0.0, 1.04));
    ASSERT_TRUE(project().place("S", slowed, {}, 30000 * 1001.0 / 30000 / 1000));

    Sequence const sequence = project().sequence("S").value();
    EXPECT_EQ(sequence.rate, Zq::FrameRate::f24);
    EXPECT_EQ(sequence.placements[1].out, 1);
    EXPECT_EQ(sequence.placements[1].length, 1) << "a frame never vanishes";
    EXPECT_EQ(sequence.placements[2].out, 52);
    EXPECT_EQ(sequence.placements[2].length, 25) << "52 of 50 are 24.96 of 24";
    EXPECT_EQ(sequence.placements[3].out, 30);
    EXPECT_EQ(sequence.placements[3].length, 24) << "30 of 29.97 are 24.024 of 24";
    std::int64_t at = 0;
    for (Placement const& placement : sequence.placements) {
        EXPECT_EQ(placement.start, at);
        at += placement.length;
    }
    EXPECT_EQ(sequence.length(), at);
}

TEST_F(Placing, LengthsAreReckonedWithExactRates) {
    EXPECT_EQ(engine::framesAt(Zq::FrameRate::f24, 30000, Zq::FrameRate::f29_97), 24024);
    EXPECT_EQ(engine::framesAt(Zq::FrameRate::f29_97, 24024, Zq::FrameRate::f24), 30000);
    EXPECT_EQ(engine::framesAt(Zq::FrameRate::f59_94, 1'000'000'000'000, Zq::FrameRate::f29_97),
              2'000'000'000'000);
    EXPECT_EQ(engine::framesAt(Zq::FrameRate::f119_88, 1'000'000'000'000, Zq::FrameRate::f12),
              9'990'009'990'010);
    EXPECT_EQ(engine::framesAt(Zq::FrameRate::f25, 1, Zq::FrameRate::f120), 1);
}

TEST_F(Placing, EveryUseOfAnEditIsFound) {
    Cookie const clip = makeClip(1, L"x");
    Cookie const other = makeClip(2, L"y");
    ASSERT_TRUE(project().place("A", clip, {}, 1.0));
    ASSERT_TRUE(project().place("B", other, {}, {}));
    ASSERT_TRUE(project().place("B", clip, 2.0, 3.0));

    auto const uses = project().usesOf(clip);
    ASSERT_EQ(uses.size(), 2U);
    EXPECT_EQ(uses[0].sequence, "A");
    EXPECT_EQ(uses[1].sequence, "B");
    EXPECT_EQ(uses[1].placement.edit, clip);
    EXPECT_EQ(uses[1].placement.in, 50);
    EXPECT_EQ(uses[1].placement.start, 250);
    EXPECT_TRUE(project().usesOf(cookieOf(9)).empty());
}

TEST_F(Placing, WhatAnOpenEditHasChangedIsKeptAlongWithIt) {
    EditPtr const edit(project().makeNewClip(1, 2, 10, Zq::FrameRate::f25, cookieOf(1)));
    edit->setLogAttributes(named(L"open still"));
    ASSERT_TRUE(project().place("S", cookieOf(1), {}, {}));
    EXPECT_FALSE(edit->isTemporary());
    EXPECT_EQ(openAnother()->edits()[0].name(), L"open still");
}

} // namespace
} // namespace test
