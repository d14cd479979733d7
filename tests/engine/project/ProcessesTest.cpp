#include <unistd.h>

#include "tests/engine/project/ChildProcess.h"
#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using testing::IsEmpty;
using enum Zq::FrameRate;

constexpr char const* refusal = "the project is open in another process";

class Processes : public ProjectTest {
protected:
    Processes() { closeProject(); }

    // One that opens the project, says so, and then does each word it hears: 'p' places, 'm' moves the first
    // piece to the end, 'u' and 'r' go through the steps. Another word ends it.
    auto writer() {
        return [this](ParentLine const& line) {
            auto const opened = openAnother();
            line.tell(opened != nullptr && opened->canWrite() ? 'w' : 'r');
            for (char word = line.hear(); opened != nullptr; word = line.hear()) {
                switch (word) {
                case 'p':
                    (void)opened->makeNewClip(1, 2, 10, f25, cookieOf(1));
                    line.tell(opened->place("S", cookieOf(1), {}, {}) ? 'y' : 'n');
                    break;
                case 'm': {
                    auto const pieces = opened->sequence("S").value_or(engine::Sequence()).placements;
                    auto const last = static_cast<std::int64_t>(pieces.size()) - 1;
                    line.tell(last >= 0 && opened->move(pieces[0].number, last) ? 'y' : 'n');
                    break;
                }
                case 'u':
                    line.tell(opened->undo() ? 'y' : 'n');
                    break;
                case 'r':
                    line.tell(opened->redo() ? 'y' : 'n');
                    break;
                default:
                    return;
                }
            }
        };
    }
};

TEST_F(Processes, TheFirstWritesAndTheSecondSeesWhatItCommits) {
    ChildProcess const first(writer());
    ASSERT_EQ(first.hear(), 'w');
    auto const second = openAnother();
    EXPECT_FALSE(second->canWrite());
    EXPECT_THAT(second->edits(), IsEmpty());

    for (std::size_t placed = 1; placed <= 3; ++placed) {
        first.tell('p');
        ASSERT_EQ(first.hear(), 'y');
        EXPECT_EQ(second->sequence("S").value().placements.size(), placed);
        EXPECT_EQ(second->edits().size(), 1U);
    }
}

TEST_F(Processes, TheSecondSeesEveryStepAndTheRevisionRise) {
    ChildProcess const first(writer());
    ASSERT_EQ(first.hear(), 'w');
    auto const second = openAnother();
    int told = 0;
    second->onChange([&told] { ++told; });
    std::int64_t revision = second->revision();
    std::vector<std::string> seen;
    for (char const word : {'p', 'p', 'm', 'u', 'r', 'u', 'u'}) {
        first.tell(word);
        ASSERT_EQ(first.hear(), 'y') << word;
        EXPECT_EQ(second->revision(), revision + 1) << word;
        revision = second->revision();
        std::string numbers;
        engine::Sequence const sequence = second->sequence("S").value();
        for (engine::Placement const& placement : sequence.placements) {
            numbers += std::to_string(placement.number);
        }
        seen.push_back(numbers + " " + second->history().undo + "|" + second->history().redo);
    }
    std::string const place = "placing a clip in \"S\"";
    std::string const move = "moving a clip in \"S\"";
    EXPECT_THAT(seen, testing::ElementsAre("1 " + place + "|", "12 " + place + "|", "21 " + move + "|",
                                           "12 " + place + "|" + move, "21 " + move + "|",
                                           "12 " + place + "|" + move, "1 " + place + "|" + place));
    EXPECT_EQ(told, 0) << "the listener is for changes of its own process";
}

TEST_F(Processes, WhenTheWriterIsKilledTheReaderDoesAgainWhatItTookBack) {
    ChildProcess first(writer());
    ASSERT_EQ(first.hear(), 'w');
    for (char const word : {'p', 'p', 'm', 'u'}) {
        first.tell(word);
        ASSERT_EQ(first.hear(), 'y') << word;
    }
    auto const second = openAnother();
    EXPECT_EQ(second->redo().error(), refusal);
    first.kill();
    EXPECT_EQ(*second->redo(), "moving a clip in \"S\"");
    EXPECT_EQ(second->sequence("S").value().placements[0].number, 2);
}

TEST_F(Processes, TheSecondIsRefusedEveryChangeWithAReason) {
    ChildProcess const first(writer());
    ASSERT_EQ(first.hear(), 'w');
    first.tell('p');
    ASSERT_EQ(first.hear(), 'y');
    auto const second = openAnother();
    WideString const media = makeMedia("a.mov", facts(f25, 250));

    EXPECT_EQ(second->place("S", cookieOf(1), {}, {}).error(), refusal);
    EXPECT_EQ(second->relink(cookieOf(1), media).error(), refusal);
    EXPECT_EQ(second->move(1, 0).error(), refusal);
    EXPECT_EQ(second->trim(1, 1.0, {}).error(), refusal);
    EXPECT_EQ(second->remove(1).error(), refusal);
    EXPECT_EQ(second->undo().error(), refusal);
    EXPECT_EQ(second->redo().error(), refusal);
    EXPECT_TRUE(second->checkRelink(cookieOf(1), media)) << "which changes nothing";
    EditPtr(second->open(cookieOf(1)))->setLogAttributes(named(L"mine"));
    EXPECT_EQ(log.count("a clip: its changes are not kept") + log.count("mine: its changes are not kept"), 1);
    EXPECT_TRUE(EditPtr(second->open(cookieOf(1)))->getName().isEmpty());
    second->associate(cookieOf(1), L"T7", L"5");
    EXPECT_EQ(log.count(refusal), 2);
    EXPECT_TRUE(second->find(cookieOf(1), L"T7").isEmpty());
}

TEST_F(Processes, TheSecondMayHaveTemporaryEdits) {
    ChildProcess const first(writer());
    ASSERT_EQ(first.hear(), 'w');
    auto const second = openAnother();

    EditPtr const edit(second->makeNewClip(1, 2, 10, f25, cookieOf(5)));
    ASSERT_TRUE(edit);
    edit->setLogAttributes(named(L"in memory"));
    second->associate(cookieOf(5), L"T7", L"5");
    EXPECT_EQ(second->findObject(L"T7", L"5"), cookieOf(5));
    EXPECT_EQ(second->place("S", cookieOf(5), {}, {}).error(), refusal);
    EditModifier(second->open(cookieOf(5)))->setPreviewLocation(L"p");
    EXPECT_EQ(edit->getName(), L"in memory");
    EXPECT_TRUE(edit->isTemporary());
}

TEST_F(Processes, ATemporaryEditThatCannotBeKeptStaysInMemory) {
    ChildProcess const first(writer());
    ASSERT_EQ(first.hear(), 'w');
    auto const second = openAnother();
    EditModifier const edit(second->makeNewClip(1, 2, 10, f25, cookieOf(5)));
    edit->setTemporary(false);
    EXPECT_TRUE(edit->isTemporary());
    EXPECT_EQ(log.count(refusal), 1);
}

TEST_F(Processes, WhenTheWriterIsKilledTheReaderTakesOver) {
    ChildProcess first(writer());
    ASSERT_EQ(first.hear(), 'w');
    first.tell('p');
    ASSERT_EQ(first.hear(), 'y');
    auto const second = openAnother();
    EditPtr const edit(second->makeNewClip(1, 2, 10, f25, cookieOf(5)));
    ASSERT_EQ(second->place("S", cookieOf(5), {}, {}).error(), refusal);

    first.kill();

    auto const placed = second->place("S", cookieOf(5), {}, {});
    ASSERT_TRUE(placed) << placed.error();
    EXPECT_EQ(placed->start, 250);
    EXPECT_TRUE(second->canWrite());
    ChildProcess const third(writer());
    EXPECT_EQ(third.hear(), 'r');
}

TEST_F(Processes, WhenTheWriterIsKilledTheNextToOpenWrites) {
    ChildProcess first(writer());
    ASSERT_EQ(first.hear(), 'w');
    first.tell('p');
    ASSERT_EQ(first.hear(), 'y');
    first.kill();
    auto const next = openAnother();
    EXPECT_TRUE(next->canWrite());
    EXPECT_EQ(*next->undo(), "placing a clip in \"S\"");
}

TEST_F(Processes, OfManyThatOpenANewProjectAtOnceExactlyOneWrites) {
    std::vector<std::unique_ptr<ChildProcess>> children;
    children.reserve(6);
    std::filesystem::remove(file());
    for (int i = 0; i < 6; ++i) {
        children.push_back(std::make_unique<ChildProcess>([this](ParentLine const& line) {
            (void)line.hear();
            writer()(line);
        }));
    }
    for (auto const& child : children) {
        child->tell('g');
    }
    std::string answers;
    for (auto const& child : children) {
        answers += child->hear();
    }
    EXPECT_EQ(std::ranges::count(answers, 'w'), 1) << answers;
    EXPECT_EQ(std::ranges::count(answers, 'r'), 5) << answers;
}

TEST_F(Processes, ASecondProjectOfTheSameProcessReads) {
    auto const first = openAnother();
    auto second = openAnother();
    EXPECT_TRUE(first->canWrite());
    EXPECT_FALSE(second->canWrite());
    second.reset();
    EXPECT_TRUE(first->canWrite());
    EditPtr const edit(first->makeNewClip(1, 2, 10, f25, cookieOf(1)));
    EXPECT_TRUE(first->place("S", cookieOf(1), {}, {}));
}

TEST_F(Processes, AnotherNameOfTheFileIsTheSameProject) {
    auto const first = openAnother();
    std::filesystem::create_symlink(file(), folder.path() / "alias.sqlite");
    auto const second = engine::Project::open(
        folder.path() / "alias.sqlite",
        [](WideString const&) -> engine::Result<engine::MediaFacts> { return engine::Failure{"none"}; });
    ASSERT_TRUE(second) << second.error();
    EXPECT_FALSE((*second)->canWrite());
}

} // namespace
} // namespace test
