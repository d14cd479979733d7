// What tells a panel that the project has changed: the revision and the listener.

#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using enum Zq::FrameRate;

class Changes : public ProjectTest {
protected:
    // How far the revision rises and how often the listener is told while the work is done.
    struct Seen {
        std::int64_t raised = 0;
        int told = 0;
        bool operator==(Seen const&) const = default;
    };
    template <class Work>
    Seen seen(Work const& work) {
        Seen seen;
        std::int64_t const before = project().revision();
        project().onChange([&seen] { ++seen.told; });
        work();
        project().onChange({});
        seen.raised = project().revision() - before;
        return seen;
    }
};

TEST_F(Changes, EveryChangeThatIsKeptRaisesTheRevisionAndIsTold) {
    Cookie const clip = makeClip(1, L"x");
    WideString const media = makeMedia("a.mov", facts(f25, 250));
    std::int64_t number = 0;
    Seen const one{1, 1};
    EXPECT_EQ(seen([&] { number = project().place("S", clip, {}, {})->number; }), one);
    EXPECT_EQ(seen([&] { (void)project().place("S", clip, {}, {}); }), one);
    EXPECT_EQ(seen([&] { (void)project().move(number, 1); }), one);
    EXPECT_EQ(seen([&] { (void)project().trim(number, 1.0, {}); }), one);
    EXPECT_EQ(seen([&] { (void)project().remove(number); }), one);
    EXPECT_EQ(seen([&] { (void)project().undo(); }), one);
    EXPECT_EQ(seen([&] { (void)project().redo(); }), one);
    EXPECT_EQ(seen([&] { (void)project().relink(clip, media); }), one);
    EXPECT_EQ(seen([&] { project().associate(clip, L"T7", L"1"); }), one);
    EXPECT_EQ(seen([&] { EditPtr(project().open(clip))->setLogAttributes(named(L"y")); }), one);
    EXPECT_EQ(seen([&] { makeKeptClip(2, L"z"); }), one);
    EXPECT_EQ(seen([&] {
                  EditPtr const edit(project().open(clip));
                  EXPECT_TRUE(project().useMedia(*edit, makeMedia("b.mov", facts(f25, 200))));
              }),
              one);
}

TEST_F(Changes, WhatChangesNothingIsNotTold) {
    Cookie const clip = makeClip(1, L"x");
    std::int64_t const number = project().place("S", clip, {}, {})->number;
    Seen const nothing;
    EXPECT_EQ(seen([&] {
                  (void)project().trim(number, 99.0, {});
                  (void)project().move(number, 0);
                  (void)project().move(number, 5);
                  (void)project().remove(77);
                  (void)project().redo();
                  (void)project().place("S", cookieOf(9), {}, {});
                  (void)project().relink(clip, makeFile("no media"));
              }),
              nothing);
    EXPECT_EQ(seen([&] {
                  (void)project().sequence("S");
                  (void)project().edits();
                  (void)project().history();
                  (void)project().canWrite();
                  (void)project().checkRelink(clip, makeMedia("a.mov", facts(f25, 250)));
              }),
              nothing);
    EXPECT_EQ(seen([&] { makeClip(2, L"temporary"); }), nothing);
}

TEST_F(Changes, TheRevisionGoesOnInTheNextRun) {
    ASSERT_TRUE(project().place("S", makeClip(1, L"x"), {}, {}));
    std::int64_t const before = project().revision();
    EXPECT_GT(before, 0);
    reopen();
    EXPECT_EQ(project().revision(), before);
    EXPECT_EQ(project().history().revision, before);
    ASSERT_TRUE(project().undo());
    EXPECT_EQ(project().revision(), before + 1);
}

TEST_F(Changes, AListenerMayReadAndEvenChangeTheProject) {
    Cookie const clip = makeClip(1, L"x");
    std::vector<std::size_t> sizes;
    project().onChange([&] {
        engine::Sequence const sequence = project().sequence("S").value_or(engine::Sequence());
        sizes.push_back(sequence.placements.size());
        if (sizes.back() == 1) {
            EXPECT_TRUE(project().place("S", clip, {}, {}));
        }
    });
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    EXPECT_EQ(sizes, (std::vector<std::size_t>{1, 2}));
}

TEST_F(Changes, AListenerMayTakeItselfAway) {
    Cookie const clip = makeClip(1, L"x");
    int told = 0;
    project().onChange([&, kept = std::string(100, 'k')] {
        project().onChange({});
        told += static_cast<int>(kept.size());
    });
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    EXPECT_EQ(told, 100);
}

TEST_F(Changes, WhatAListenerThrowsGoesToTheLogAndTheChangeStands) {
    Cookie const clip = makeClip(1, L"x");
    project().onChange([] { throw std::runtime_error("no panel"); });
    EXPECT_TRUE(project().place("S", clip, {}, {}));
    project().onChange([] { throw 7; });
    EXPECT_TRUE(project().place("S", clip, {}, {}));
    EXPECT_EQ(log.count("Telling of a change failed: no panel"), 1);
    EXPECT_EQ(log.count("Telling of a change failed"), 2);
    EXPECT_EQ(project().sequence("S")->placements.size(), 2U);
}

TEST_F(Changes, NoListenerRunsFromTheDestructorOn) {
    int told = 0;
    EditPtr const edit(project().open(makeKeptClip(1, L"x")));
    project().onChange([&told] { ++told; });
    edit->setLogAttributes(named(L"kept as the project closes"));
    closeProject();
    EXPECT_EQ(told, 0);
    EXPECT_EQ(openAnother()->edits()[0].name(), L"kept as the project closes");
}

} // namespace
} // namespace test
