#include <atomic>
#include <barrier>
#include <thread>

#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using enum Zq::FrameRate;

class InParallel : public ProjectTest {
protected:
    // Runs the work on several threads at once, each with its number.
    template <class Work>
    static void onThreads(int count, Work const& work) {
        std::barrier start(count);
        std::vector<std::jthread> threads;
        threads.reserve(static_cast<std::size_t>(count));
        for (int number = 0; number < count; ++number) {
            threads.emplace_back([&start, &work, number] {
                start.arrive_and_wait();
                work(number);
            });
        }
    }
};

TEST_F(InParallel, PlacementsOfManyThreadsStandOneBehindTheOther) {
    std::atomic<int> failures = 0;
    onThreads(4, [&](int thread) {
        for (int i = 0; i < 8; ++i) {
            Cookie const clip = cookieOf(static_cast<std::uint8_t>(1 + thread * 8 + i));
            EditModifier const edit(project().makeNewClip(1, 2, 4, f25, clip));
            edit->setLogAttributes(named(L"x"));
            project().associate(clip, L"T7", L"1");
            if (!project().place("S", clip, {}, {}) || project().usesOf(clip).size() != 1) {
                ++failures;
            }
        }
    });
    EXPECT_EQ(failures, 0);
    engine::Sequence const sequence = project().sequence("S").value();
    ASSERT_EQ(sequence.placements.size(), 32U);
    for (std::size_t i = 0; i < 32; ++i) {
        EXPECT_EQ(sequence.placements[i].start, static_cast<std::int64_t>(i) * 100);
    }
    EXPECT_EQ(project().edits().size(), 32U);
}

TEST_F(InParallel, OneEditIsChangedReadPlacedAndRelinkedAtOnce) {
    Cookie const clip = makeKeptClip(1, L"x");
    WideString const media[] = {makeMedia("0.mov", facts(f25, 250)), makeMedia("1.mov", facts(f50, 300))};
    onThreads(5, [&](int thread) {
        for (int i = 0; i < 12; ++i) {
            EditPtr const edit(project().open(clip));
            switch (thread) {
            case 0:
                edit->setLogAttributes(named(i % 2 == 0 ? L"even" : L"odd"));
                EXPECT_FALSE(edit->getName().isEmpty());
                break;
            case 1:
                EXPECT_TRUE(project().useMedia(*edit, media[i % 2]));
                EXPECT_TRUE(project().lastRelink(clip));
                break;
            case 2:
                EXPECT_TRUE(project().place("S", clip, {}, {}));
                break;
            case 3:
                EXPECT_TRUE(project().checkRelink(clip, media[0]));
                EXPECT_EQ(project().edits().size(), 1U);
                break;
            default:
                (void)project().undo();
                (void)project().sequence("S");
                (void)project().canWrite();
            }
        }
    });
    reopen();
    EXPECT_THAT(project().edits()[0].name(), testing::AnyOf(WideString(L"even"), WideString(L"odd")));
    int steps = 0;
    while (project().undo()) {
        ++steps;
    }
    // Twelve placements and at least the first relinking are steps, one to the file that plays already is
    // none, and at most twelve were taken back.
    EXPECT_GE(steps, 1);
    EXPECT_LE(steps, 24);
    EXPECT_TRUE(mediaOf(clip).isEmpty());
    EXPECT_FALSE(project().sequence("S"));
}

TEST_F(InParallel, ASequenceThatManyArrangeStaysWhole) {
    Cookie const clip = makeKeptClip(1, L"x");
    for (int i = 0; i < 6; ++i) {
        ASSERT_TRUE(project().place("S", clip, {}, 1.0 + i));
    }
    std::atomic<std::int64_t> told = 0;
    std::atomic<std::int64_t> seen = 0;
    project().onChange([&] {
        ++told;
        std::int64_t const revision = project().history().revision;
        EXPECT_GE(revision, seen.exchange(revision)) << "one call at a time, each after its change";
    });
    std::int64_t const before = project().revision();
    std::atomic<std::int64_t> changes = 0;
    onThreads(5, [&](int thread) {
        for (std::int64_t i = 0; i < 12; ++i) {
            std::int64_t const number = 1 + (i * 5 + thread) % 6;
            // Those that find their piece gone, or where it is to go, change nothing.
            std::int64_t const revision = project().revision();
            EXPECT_GE(revision, before);
            switch (thread) {
            case 0:
                (void)project().move(number, i % 3);
                break;
            case 1:
                (void)project().trim(number, 0.04 * static_cast<double>(i), {});
                break;
            case 2:
                changes += project().undo() ? 1 : 0;
                changes += project().redo() ? 1 : 0;
                break;
            case 3:
                changes += project().place("S", clip, {}, 0.5, 0) ? 1 : 0;
                break;
            default:
                changes += i % 4 == 0 && project().remove(number) ? 1 : 0;
            }
            std::int64_t end = 0;
            engine::Sequence const sequence = project().sequence("S").value_or(engine::Sequence());
            for (engine::Placement const& placement : sequence.placements) {
                EXPECT_EQ(placement.start, end);
                end += placement.length;
            }
        }
    });
    project().onChange({});
    EXPECT_GE(project().revision() - before, changes);
    EXPECT_EQ(project().revision() - before, told);
    EXPECT_EQ(project().revision(), seen);
    while (project().undo()) {
    }
    EXPECT_FALSE(project().sequence("S"));
}

TEST_F(InParallel, AFormerListenerIsNotRunningWhenItWasReplaced) {
    Cookie const clip = makeKeptClip(1, L"x");
    std::atomic<bool> placing = true;
    std::jthread const placer([&] {
        while (placing) {
            EXPECT_TRUE(project().place("S", clip, {}, {}));
        }
    });
    for (int i = 0; i < 20; ++i) {
        std::barrier met(2);
        auto state = std::make_unique<int>(0);
        bool isFirst = true;
        project().onChange([&met, &isFirst, counted = state.get()] {
            ++*counted;
            if (std::exchange(isFirst, false)) {
                met.arrive_and_wait();
            }
        });
        met.arrive_and_wait();
        project().onChange({});
        EXPECT_GE(*state, 1);
        state.reset();
    }
    placing = false;
}

TEST_F(InParallel, TheProjectAnswersWhileAFileIsLookedAt) {
    closeProject();
    std::barrier looking(2);
    auto opened = engine::Project::open(file(), [&](WideString const&) -> engine::Result<engine::MediaFacts> {
        looking.arrive_and_wait();
        looking.arrive_and_wait();
        return facts(f25, 250);
    });
    ASSERT_TRUE(opened);
    engine::Project& project = **opened;
    EditPtr const edit(project.makeNewClip(1, 2, 10, f25, cookieOf(1)));
    std::jthread const relinking([&] { EXPECT_TRUE(project.relink(cookieOf(1), L"Virtual:T7 a")); });

    looking.arrive_and_wait();
    EXPECT_TRUE(project.place("S", cookieOf(1), {}, {}));
    edit->setLogAttributes(named(L"meanwhile"));
    EXPECT_EQ(project.edits().size(), 1U);
    looking.arrive_and_wait();
}

TEST_F(InParallel, EditsMayOutliveTheProjectOnOtherThreads) {
    makeKeptClip(1, L"x");
    EditModifier const edit(project().open(cookieOf(1)));
    std::atomic<bool> closed = false;
    std::jthread const reader([&] {
        while (!closed) {
            edit->setPreviewLocation(L"p");
            WideString const name = edit->getName();
            EXPECT_TRUE(name == L"x" || name.isEmpty());
        }
    });
    closeProject();
    closed = true;
}

} // namespace
} // namespace test
