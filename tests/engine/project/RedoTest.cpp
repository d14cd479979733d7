#include "host/engine/project/StepTable.h"
#include "host/engine/storage/Database.h"
#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using engine::Placement;
using testing::ElementsAre;
using testing::IsEmpty;
using enum Zq::FrameRate;

class Redo : public ProjectTest {
protected:
    // All that steps can change, in words.
    std::string state() {
        std::string text;
        for (std::string const& name : project().sequenceNames()) {
            engine::Sequence const sequence = project().sequence(name).value();
            text += name + " " + std::to_string(static_cast<int>(sequence.rate)) + ":";
            for (Placement const& placement : sequence.placements) {
                for (std::int64_t const value :
                     {placement.number, placement.in, placement.out, placement.start, placement.length}) {
                    text += " " + std::to_string(value);
                }
                text += " " + engine::cookieText(placement.edit) + ";";
            }
            text += "\n";
        }
        for (engine::EditRecord const& edit : project().edits()) {
            text += std::string(toUTF8(edit.mediaLocation).view()) + " " + std::to_string(edit.bitRate);
            for (std::string const& difference : inWords(edit.differences)) {
                text += " " + difference;
            }
            text += "\n";
        }
        return text;
    }
    // One step of every kind, and each twice; gives the state before the first and after each.
    std::vector<std::string> doAll() {
        Cookie const one = makeKeptClip(1, L"one");
        Cookie const two = makeKeptClip(2, L"two", f50);
        engine::MediaFacts fat = facts(f50, 300, 0);
        fat.bitRate = 9;
        WideString const first = makeMedia("first.mov", facts(f25, 200));
        WideString const second = makeMedia("second.mov", fat);
        std::vector<std::string> states = {state()};
        std::int64_t a = 0;
        std::int64_t b = 0;
        auto const done = [&](auto const& result) {
            EXPECT_TRUE(result) << result.error();
            states.push_back(state());
        };
        auto const place = [&](std::int64_t& number, Cookie const& clip, std::optional<std::int64_t> at) {
            auto const placed = project().place("S", clip, 1.0, 3.0, at);
            number = placed ? placed->number : 0;
            done(placed);
        };
        place(a, two, {});
        place(b, one, 0);
        done(project().relink(one, first));
        done(project().move(b, 1));
        done(project().trim(a, {}, 2.5));
        done(project().relink(one, second));
        done(project().remove(a));
        done(project().trim(b, 0.0, {}));
        done(project().remove(b));
        return states;
    }
};

TEST_F(Redo, OfNothingSaysSo) {
    EXPECT_EQ(project().redo().error(), "there is nothing to do again");
    ASSERT_TRUE(project().place("S", makeClip(1, L"x"), {}, {}));
    EXPECT_EQ(project().redo().error(), "there is nothing to do again");
    ASSERT_TRUE(project().undo());
    ASSERT_TRUE(project().redo());
    EXPECT_EQ(project().redo().error(), "there is nothing to do again");
}

TEST_F(Redo, LeadsThroughTheSameStatesAsTheStepsAndUndoDid) {
    std::vector<std::string> const states = doAll();
    for (int round = 0; round < 2; ++round) {
        for (std::size_t i = states.size() - 1; i > 0; --i) {
            ASSERT_TRUE(project().undo());
            EXPECT_EQ(state(), states[i - 1]) << "back to " << i - 1;
        }
        EXPECT_FALSE(project().undo());
        for (std::size_t i = 1; i < states.size(); ++i) {
            ASSERT_TRUE(project().redo());
            EXPECT_EQ(state(), states[i]) << "forth to " << i;
        }
        EXPECT_FALSE(project().redo());
    }
}

TEST_F(Redo, GoesOnInTheNextRun) {
    std::vector<std::string> const states = doAll();
    std::size_t const last = states.size() - 1;
    reopen();
    ASSERT_TRUE(project().undo());
    reopen();
    ASSERT_TRUE(project().undo());
    ASSERT_TRUE(project().undo());
    EXPECT_EQ(state(), states[last - 3]);
    reopen();
    for (std::size_t i = last - 2; i <= last; ++i) {
        ASSERT_TRUE(project().redo());
        reopen();
        EXPECT_EQ(state(), states[i]);
    }
    EXPECT_FALSE(project().redo());
    ASSERT_TRUE(project().undo());
    EXPECT_EQ(state(), states[last - 1]);
}

TEST_F(Redo, IsEmptyAfterANewStep) {
    Cookie const clip = makeClip(1, L"x");
    std::int64_t const first = project().place("S", clip, {}, {})->number;
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    ASSERT_TRUE(project().undo());
    ASSERT_TRUE(project().trim(first, 1.0, {}));
    EXPECT_EQ(project().history().redo, "");
    EXPECT_EQ(project().redo().error(), "there is nothing to do again");
    EXPECT_EQ(*project().undo(), "trimming \"x\" in \"S\"");
    EXPECT_EQ(*project().undo(), "placing \"x\" in \"S\"");
    EXPECT_FALSE(project().undo());
}

TEST_F(Redo, StaysAfterWhatIsNoStepAndAfterWhatIsRefused) {
    Cookie const clip = makeClip(1, L"x");
    WideString const media = makeMedia("a.mov", facts(f25, 250));
    ASSERT_TRUE(project().relink(clip, media));
    std::int64_t const number = project().place("S", clip, {}, {})->number;
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    ASSERT_TRUE(project().undo());

    EXPECT_FALSE(project().trim(number, 99.0, {}));
    EXPECT_FALSE(project().move(number, 7));
    EXPECT_FALSE(project().remove(12345));
    EXPECT_TRUE(project().move(number, 0)) << "where it stands";
    EXPECT_TRUE(project().relink(clip, media)) << "what it plays";
    EditPtr(project().open(clip))->setLogAttributes(named(L"new"));
    project().associate(clip, L"T7", L"1");

    EXPECT_EQ(*project().redo(), "placing \"x\" in \"S\"");
    EXPECT_EQ(project().sequence("S")->placements.size(), 2U);
}

TEST_F(Redo, OfARelinkingPlaysTheFileAgainWithoutLookingAtIt) {
    Cookie const clip = makeClip(1, L"waves");
    WideString const media = makeMedia("first.mov", facts(f25, 200));
    ASSERT_TRUE(project().relink(clip, media));
    ASSERT_TRUE(project().undo());
    EXPECT_TRUE(mediaOf(clip).isEmpty());
    EXPECT_THAT(project().edit(clip)->differences, IsEmpty());
    int const looks = shelf.looks();

    EXPECT_EQ(*project().redo(), "relinking \"waves\"");
    EXPECT_EQ(mediaOf(clip), media);
    EXPECT_EQ(project().edit(clip)->bitRate, 50'000'000);
    EXPECT_THAT(inWords(project().edit(clip)->differences), ElementsAre("length: 10.00 s -> 8.00 s"));
    EXPECT_EQ(shelf.looks(), looks);
}

TEST_F(Redo, DoesNotLoseWhatAnOpenEditHasChanged) {
    Cookie const clip = makeClip(1, L"before");
    WideString const media = makeMedia("a.mov", facts(f25, 250));
    ASSERT_TRUE(project().relink(clip, media));
    ASSERT_TRUE(project().undo());
    EditPtr const edit(project().open(clip));
    edit->setLogAttributes(named(L"after"));
    ASSERT_TRUE(project().redo());
    EXPECT_EQ(edit->getName(), L"after");
    EXPECT_EQ(edit->getMediaLocation(), media);
    EXPECT_EQ(openAnother()->edits()[0].name(), L"after");
}

TEST_F(Redo, GivesAPlacementItsNumberBackAndNoOtherOne) {
    Cookie const clip = makeClip(1, L"x");
    std::int64_t const first = project().place("S", clip, {}, {})->number;
    ASSERT_TRUE(project().undo());
    ASSERT_TRUE(project().redo());
    EXPECT_EQ(project().sequence("S")->placements[0].number, first);
    EXPECT_GT(project().place("S", clip, {}, {})->number, first);
}

TEST_F(Redo, HistoryTellsTheStepsAsFactsToo) {
    using engine::StepKind;
    using Facts = engine::Project::StepFacts;
    auto const last = [this] { return project().history().undoStep; };
    auto const next = [this] { return project().history().redoStep; };
    EXPECT_EQ(last(), std::nullopt);
    Cookie const clip = makeClip(1, L"waves\n2");
    std::int64_t const number = project().place("S", clip, {}, {})->number;
    EXPECT_EQ(last(), (Facts{StepKind::placing, "waves 2", "S"}));
    ASSERT_TRUE(project().trim(number, 1, 2));
    EXPECT_EQ(last(), (Facts{StepKind::trimming, "waves 2", "S"}));
    ASSERT_TRUE(project().relink(clip, makeMedia("first.mov", facts(f25, 200))));
    EXPECT_EQ(last(), (Facts{StepKind::relinking, "waves 2", ""}));
    ASSERT_TRUE(project().remove(number));
    EXPECT_EQ(last(), (Facts{StepKind::removing, "waves 2", "S"})) << "the sequence is gone with it";
    EXPECT_EQ(next(), std::nullopt);
    for (int step = 0; step < 4; ++step) {
        ASSERT_TRUE(project().undo());
    }
    EXPECT_EQ(last(), std::nullopt);
    EXPECT_EQ(next(), (Facts{StepKind::placing, "waves 2", "S"})) << "it stands nowhere yet";
}

TEST_F(Redo, HistoryTellsWhatWouldComeNextEitherWay) {
    auto const words = [this] { return project().history().undo + " | " + project().history().redo; };
    EXPECT_EQ(words(), " | ");
    Cookie const clip = makeClip(1, L"x");
    Cookie const nameless = makeClip(2, L" ");
    std::int64_t const number = project().place("S", clip, {}, {})->number;
    ASSERT_TRUE(project().place("S 2", nameless, {}, {}));
    ASSERT_TRUE(project().remove(number));
    EXPECT_EQ(words(), "removing \"x\" from \"S\" | ");
    ASSERT_TRUE(project().undo());
    EXPECT_EQ(words(), "placing a clip in \"S 2\" | removing \"x\" from \"S\"");
    ASSERT_TRUE(project().undo());
    EXPECT_EQ(words(), "placing \"x\" in \"S\" | placing a clip in \"S 2\"");
    reopen();
    EXPECT_EQ(words(), "placing \"x\" in \"S\" | placing a clip in \"S 2\"");
    ASSERT_TRUE(project().undo());
    EXPECT_EQ(words(), " | placing \"x\" in \"S\"");
}

TEST_F(Redo, OnlyTheLastThousandStepsAreKept) {
    Cookie const clip = makeClip(1, L"x");
    std::int64_t const number = project().place("S", clip, {}, {})->number;
    ASSERT_TRUE(project().relink(clip, makeMedia("a.mov", facts(f25, 200))));
    for (int i = 0; i < engine::StepTable::most; ++i) {
        ASSERT_TRUE(project().trim(number, i % 2 == 0 ? 1.0 : 0.0, {}));
    }
    int undone = 0;
    while (project().undo()) {
        ++undone;
    }
    EXPECT_EQ(undone, engine::StepTable::most);
    EXPECT_EQ(project().sequence("S")->placements[0].in, 0) << "what stands before the oldest step stays";
    EXPECT_FALSE(mediaOf(clip).isEmpty());
    engine::Database database(file());
    engine::Statement left = database.prepare("SELECT count(*) FROM step_difference");
    ASSERT_TRUE(left.step());
    EXPECT_EQ(left.integer(0), 0) << "of the relinking that is forgotten";
}

} // namespace
} // namespace test
