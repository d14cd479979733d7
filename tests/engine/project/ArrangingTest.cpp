#include <cmath>

#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using engine::Placement;
using engine::Project;
using engine::Sequence;
using testing::ElementsAre;
using testing::IsEmpty;
using enum Zq::FrameRate;

// Pieces "a", "b" and "c" of one clip each in "Main", of 100, 200 and 50 frames.
class Arranging : public ProjectTest {
protected:
    Arranging()
        : a_(placed(makeClip(1, L"a"), 4.0)), b_(placed(makeClip(2, L"b"), 8.0)),
          c_(placed(makeClip(3, L"c"), 2.0)) {}

    std::int64_t placed(Cookie const& clip, double length_s, std::optional<std::int64_t> index = {}) {
        auto const placement = project().place("Main", clip, 0.0, length_s, index);
        EXPECT_TRUE(placement) << placement.error();
        return placement ? placement->number : 0;
    }
    // The numbers of the pieces; what holds of every sequence is checked along the way.
    std::vector<std::int64_t> order(std::string const& name = "Main") {
        std::vector<std::int64_t> numbers;
        std::int64_t end = 0;
        Sequence const sequence = project().sequence(name).value_or(Sequence());
        for (Placement const& placement : sequence.placements) {
            EXPECT_EQ(placement.start, end) << "no gap and no overlap before " << placement.number;
            EXPECT_LT(placement.in, placement.out);
            EXPECT_GT(placement.length, 0);
            end += placement.length;
            numbers.push_back(placement.number);
        }
        return numbers;
    }
    Placement piece(std::int64_t number) {
        Sequence const sequence = project().sequence("Main").value_or(Sequence());
        for (Placement const& placement : sequence.placements) {
            if (placement.number == number) {
                return placement;
            }
        }
        ADD_FAILURE() << "there is no piece " << number;
        return {};
    }

    std::int64_t const a_;
    std::int64_t const b_;
    std::int64_t const c_;
};

TEST_F(Arranging, PlacesBeforeThePieceAtTheIndex) {
    std::int64_t const front = placed(cookieOf(1), 1.0, 0);
    std::int64_t const middle = placed(cookieOf(1), 1.0, 2);
    std::int64_t const end = placed(cookieOf(1), 1.0, 5);
    EXPECT_THAT(order(), ElementsAre(front, a_, middle, b_, c_, end));
    EXPECT_EQ(piece(b_).start, 25 + 100 + 25);
    reopen();
    EXPECT_THAT(order(), ElementsAre(front, a_, middle, b_, c_, end));
}

TEST_F(Arranging, PlacesNowhereElse) {
    std::string const text = "positions go from 1 to 4";
    EXPECT_EQ(project().place("Main", cookieOf(1), {}, {}, 4).error(), text);
    EXPECT_EQ(project().place("Main", cookieOf(1), {}, {}, -1).error(), text);
    EXPECT_EQ(project().place("New", cookieOf(1), {}, {}, 1).error(), "the only position is 1");
    EXPECT_THAT(project().sequenceNames(), ElementsAre("Main"));
    EXPECT_TRUE(project().place("New", cookieOf(1), {}, {}, 0));
    Cookie const temporary = makeClip(9, L"t");
    EXPECT_FALSE(project().place("Main", temporary, {}, {}, 9));
    EXPECT_TRUE(project().edit(temporary).value().temporary);
}

TEST_F(Arranging, MovesAPieceSoThatItStandsAtTheIndex) {
    auto const moved = project().move(a_, 2);
    ASSERT_TRUE(moved) << moved.error();
    EXPECT_EQ(moved->sequence, "Main");
    EXPECT_EQ(moved->placement.number, a_);
    EXPECT_EQ(moved->placement.edit, cookieOf(1));
    EXPECT_EQ(moved->placement.start, 250);
    EXPECT_THAT(order(), ElementsAre(b_, c_, a_));
    EXPECT_TRUE(project().move(a_, 0));
    EXPECT_THAT(order(), ElementsAre(a_, b_, c_));
    EXPECT_TRUE(project().move(c_, 1));
    EXPECT_THAT(order(), ElementsAre(a_, c_, b_));
    EXPECT_EQ(piece(b_).start, 150);
    EXPECT_EQ(piece(b_).out, 200);
    reopen();
    EXPECT_THAT(order(), ElementsAre(a_, c_, b_));
}

TEST_F(Arranging, EveryMoveOfEveryPieceIsTakenBack) {
    for (std::int64_t const number : {a_, b_, c_}) {
        for (std::int64_t index = 0; index < 3; ++index) {
            std::vector<std::int64_t> expected = {a_, b_, c_};
            std::erase(expected, number);
            expected.insert(expected.begin() + index, number);
            bool const isMoved = expected != std::vector{a_, b_, c_};

            ASSERT_TRUE(project().move(number, index));
            EXPECT_EQ(order(), expected);
            if (isMoved) {
                ASSERT_TRUE(project().undo());
                EXPECT_THAT(order(), ElementsAre(a_, b_, c_));
                ASSERT_TRUE(project().redo());
                EXPECT_EQ(order(), expected);
                ASSERT_TRUE(project().undo());
            }
            EXPECT_THAT(order(), ElementsAre(a_, b_, c_));
        }
    }
}

TEST_F(Arranging, MovesToNoOtherIndex) {
    EXPECT_EQ(project().move(a_, 3).error(), "positions go from 1 to 3");
    EXPECT_EQ(project().move(a_, -1).error(), "positions go from 1 to 3");
    EXPECT_EQ(project().move(999, 0).error(), "no sequence has a piece 999");
    EXPECT_EQ(project().move(0, 0).error(), "no sequence has a piece 0");
    EXPECT_EQ(project().move(-4, 0).error(), "no sequence has a piece -4");
    EXPECT_THAT(order(), ElementsAre(a_, b_, c_));
    EXPECT_EQ(project().history().undo, "placing \"c\" in \"Main\"");
}

TEST_F(Arranging, TrimsWithTheRulesOfPlacing) {
    auto const trimmed = project().trim(b_, 1.059, 2.041);
    ASSERT_TRUE(trimmed) << trimmed.error();
    EXPECT_EQ(trimmed->sequence, "Main");
    EXPECT_EQ(trimmed->placement.in, 26);
    EXPECT_EQ(trimmed->placement.out, 52);
    EXPECT_EQ(trimmed->placement.length, 26);
    EXPECT_EQ(trimmed->placement.start, 100);
    EXPECT_THAT(order(), ElementsAre(a_, b_, c_));
    EXPECT_EQ(piece(c_).start, 126) << "what follows closes up";
    EXPECT_EQ(project().trim(b_, -3.0, 1e300)->placement.out, 250) << "a piece ends where its clip does";
    EXPECT_EQ(piece(b_).in, 0);
}

TEST_F(Arranging, TrimsOneEndAndLeavesTheOther) {
    EXPECT_EQ(project().trim(b_, 2.0, {})->placement.in, 50);
    EXPECT_EQ(piece(b_).out, 200);
    EXPECT_EQ(project().trim(b_, {}, 4.0)->placement.out, 100);
    EXPECT_EQ(piece(b_).in, 50);
    EXPECT_EQ(piece(c_).start, 150);
}

TEST_F(Arranging, ATrimmedPieceIsNeverEmptyNorOutsideItsClip) {
    ASSERT_TRUE(project().trim(b_, 2.0, 4.0));
    EXPECT_EQ(project().trim(b_, {}, {}).error(), "trimming needs an in point or an out point");
    EXPECT_EQ(project().trim(b_, 4.0, {}).error(),
              "the in point (4 s) does not lie before the end of the piece");
    EXPECT_EQ(project().trim(b_, {}, 2.0).error(),
              "the out point (2 s) does not lie behind the beginning of the piece");
    EXPECT_EQ(project().trim(b_, 3.0, 3.0).error(),
              "the in point (3 s) does not lie before the out point (3 s)");
    EXPECT_EQ(project().trim(b_, 10.0, {}).error(),
              "the in point (10 s) lies outside the clip, which has 10 s");
    EXPECT_EQ(project().trim(b_, {}, 0.0).error(),
              "the out point (0 s) lies outside the clip, which has 10 s");
    EXPECT_EQ(project().trim(b_, std::nan(""), {}).error(),
              "the in and out points must be numbers of seconds");
    EXPECT_EQ(project().trim(999, 1.0, {}).error(), "no sequence has a piece 999");
    EXPECT_EQ(piece(b_).in, 50);
    EXPECT_EQ(piece(b_).out, 100);
    EXPECT_EQ(*project().undo(), "trimming \"b\" in \"Main\"") << "what was refused is no step";
    EXPECT_EQ(*project().undo(), "placing \"c\" in \"Main\"");
}

TEST_F(Arranging, ATrimmedPieceOfAnotherRateCountsInFramesOfTheSequence) {
    Cookie const fast = makeClip(4, L"fast", f50);
    std::int64_t const number = placed(fast, 2.0, 1);
    EXPECT_EQ(piece(number).length, 50);
    ASSERT_TRUE(project().trim(number, 0.0, 0.02));
    EXPECT_EQ(piece(number).out, 1);
    EXPECT_EQ(piece(number).length, 1) << "a frame never vanishes";
    EXPECT_EQ(piece(b_).start, 101);
    EXPECT_THAT(order(), ElementsAre(a_, number, b_, c_));
}

TEST_F(Arranging, RemovesAPieceAndClosesTheGap) {
    auto const removed = project().remove(b_);
    ASSERT_TRUE(removed) << removed.error();
    EXPECT_EQ(removed->sequence, "Main");
    EXPECT_EQ(removed->placement.number, b_);
    EXPECT_EQ(removed->placement.start, 100) << "as it stood";
    EXPECT_THAT(order(), ElementsAre(a_, c_));
    EXPECT_EQ(project().edits().size(), 3U) << "its edit stays";
    EXPECT_THAT(project().usesOf(cookieOf(2)), IsEmpty());
    EXPECT_EQ(project().remove(b_).error(), "no sequence has a piece " + std::to_string(b_));

    EXPECT_EQ(*project().undo(), "removing \"b\" from \"Main\"");
    EXPECT_THAT(order(), ElementsAre(a_, b_, c_));
    EXPECT_EQ(piece(b_).out, 200);
}

TEST_F(Arranging, TheLastPieceTakesItsSequenceAlongAndBringsItBack) {
    Cookie const slow = makeClip(4, L"slow", f24);
    ASSERT_TRUE(project().place("Slow", slow, {}, 1.0));
    std::int64_t const fast = project().place("Slow", cookieOf(1), {}, 1.0)->number;
    std::int64_t const first = project().sequence("Slow")->placements[0].number;
    ASSERT_TRUE(project().remove(first));
    EXPECT_EQ(project().sequence("Slow")->rate, f24);
    ASSERT_TRUE(project().remove(fast));
    EXPECT_THAT(project().sequenceNames(), ElementsAre("Main"));

    ASSERT_TRUE(project().undo());
    ASSERT_TRUE(project().sequence("Slow"));
    EXPECT_EQ(project().sequence("Slow")->rate, f24) << "not that of the piece which comes back first";
    EXPECT_EQ(project().sequence("Slow")->placements[0].length, 24);
    ASSERT_TRUE(project().undo());
    EXPECT_THAT(order("Slow"), ElementsAre(first, fast));
}

TEST_F(Arranging, AChangeOfOneSequenceLeavesTheOthers) {
    ASSERT_TRUE(project().place("Other", cookieOf(1), {}, {}));
    ASSERT_TRUE(project().place("Other", cookieOf(2), {}, {}));
    std::vector<std::int64_t> const other = order("Other");
    ASSERT_TRUE(project().move(c_, 0));
    ASSERT_TRUE(project().trim(a_, 1.0, 2.0));
    ASSERT_TRUE(project().remove(b_));
    EXPECT_EQ(order("Other"), other);
    EXPECT_EQ(project().sequence("Other")->length(), 500);
}

TEST_F(Arranging, WhatLeavesAllAsItIsIsNoStep) {
    std::int64_t const revision = project().revision();
    EXPECT_EQ(project().move(b_, 1)->placement.number, b_);
    EXPECT_EQ(project().trim(b_, 0.01, {})->placement.out, 200);
    EXPECT_EQ(project().trim(b_, {}, 7.99)->placement.in, 0);
    EXPECT_EQ(project().revision(), revision);
    EXPECT_EQ(project().history().undo, "placing \"c\" in \"Main\"");
}

TEST_F(Arranging, RelinkingTellsThePiecesThatAreCutShortAsTheyStandNow) {
    WideString const media = makeMedia("short.mov", facts(f25, 150));
    EXPECT_THAT(project().checkRelink(cookieOf(2), media)->cutShort, ElementsAre(b_));
    ASSERT_TRUE(project().trim(b_, {}, 6.0));
    EXPECT_THAT(project().checkRelink(cookieOf(2), media)->cutShort, IsEmpty());
}

TEST_F(Arranging, AnEditThatIsOpenGivesTheStepTheNameThatItHasNow) {
    EditPtr const edit(project().open(cookieOf(1)));
    edit->setLogAttributes(named(L"new name"));
    ASSERT_TRUE(project().move(a_, 1));
    EXPECT_EQ(project().history().undo, "moving \"new name\" in \"Main\"");
}

} // namespace
} // namespace test
