#include <algorithm>
#include <fstream>

#include "host/engine/files/WholeFile.h"
#include "host/engine/storage/Database.h"
#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

namespace fs = std::filesystem;
using enum Zq::FrameRate;
using testing::HasSubstr;
using testing::IsEmpty;

class Damage : public ProjectTest {
protected:
    Damage() {
        for (std::uint8_t number = 1; number <= 60; ++number) {
            makeKeptClip(number, L"a clip whose name is long enough to fill the pages of the file");
        }
        closeProject();
    }
    // The file that was set aside; empty where there is none.
    fs::path setAsideFile() {
        for (auto const& entry : fs::directory_iterator(folder.path())) {
            std::string const name = entry.path().filename().native();
            if (name.starts_with("project.sqlite.damaged-") && !name.ends_with("-wal") &&
                !name.ends_with("-shm")) {
                return entry.path();
            }
        }
        return {};
    }
    std::string bytes() { return engine::readWholeFile(file(), 10 << 20).value(); }
    void expectNewProject(std::string const& before) {
        reopen();
        EXPECT_THAT(project().edits(), IsEmpty());
        EXPECT_TRUE(project().canWrite());
        EXPECT_EQ(log.count("is damaged"), 1);
        ASSERT_FALSE(setAsideFile().empty());
        EXPECT_EQ(project().damagedFile(), setAsideFile());
        EXPECT_EQ(engine::readWholeFile(setAsideFile(), 10 << 20), before);
        makeKeptClip(1, L"new");
        reopen();
        EXPECT_EQ(project().edits().size(), 1U);
        EXPECT_EQ(project().damagedFile(), fs::path());
    }
    engine::Result<std::unique_ptr<engine::Project>> tryToOpen(fs::path const& path) {
        return engine::Project::open(path, nullptr);
    }
};

TEST_F(Damage, AFileThatIsNoDatabaseIsSetAside) {
    std::string const text(5000, 'x');
    std::ofstream(file(), std::ios::trunc) << text;
    expectNewProject(text);
}

TEST_F(Damage, ADatabaseWithBrokenPagesIsSetAside) {
    std::string content = bytes();
    ASSERT_GT(content.size(), 20'000U);
    std::fill(content.begin() + 4096, content.end(), '\x5a');
    std::ofstream(file(), std::ios::trunc | std::ios::binary) << content;
    expectNewProject(content);
}

TEST_F(Damage, ADatabaseThatWasCutShortIsSetAside) {
    fs::resize_file(file(), 6000);
    std::string const before = bytes();
    expectNewProject(before);
}

TEST_F(Damage, TheDatabaseOfSomethingElseIsSetAside) {
    fs::remove(file());
    { engine::Database(file()).execute("CREATE TABLE song (title TEXT)"); }
    std::string const before = bytes();
    expectNewProject(before);
}

TEST_F(Damage, AnEmptyFileIsANewProject) {
    std::ofstream(file(), std::ios::trunc).flush();
    reopen();
    EXPECT_THAT(project().edits(), IsEmpty());
    EXPECT_EQ(log.count("damaged"), 0);
    EXPECT_TRUE(project().canWrite());
}

TEST_F(Damage, AProjectThatWasRemovedWhileOpenTakesNoChangeThatWouldBeLost) {
    reopen();
    fs::remove(file());
    EXPECT_EQ(project().place("S", cookieOf(1), {}, {}).error(),
              "the project's file was moved or removed while it was open");
    EXPECT_FALSE(project().canWrite());
}

TEST_F(Damage, AFileThatCannotBeOpenedIsAFailureInWords) {
    fs::create_directory(folder.path() / "folder.sqlite");
    auto const opened = tryToOpen(folder.path() / "folder.sqlite");
    ASSERT_FALSE(opened);
    EXPECT_THAT(opened.error(), HasSubstr("folder.sqlite cannot be opened"));
    EXPECT_TRUE(fs::is_directory(folder.path() / "folder.sqlite"));

    auto const nowhere = tryToOpen(folder.path() / "no" / "such" / "folder" / "p.sqlite");
    ASSERT_FALSE(nowhere);
    EXPECT_THAT(nowhere.error(), HasSubstr("cannot be opened"));
}

} // namespace
} // namespace test
