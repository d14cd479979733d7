#include "host/engine/files/WholeFile.h"
#include "host/engine/storage/Database.h"
#include "tests/engine/project/ProjectFixture.h"
#include "tests/engine/project/versionOne.h"
#include "tests/engine/project/versionTwo.h"

namespace test {
namespace {

using enum Zq::FrameRate;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

class Migration : public ProjectTest {
protected:
    Migration() {
        closeProject();
        fs::remove(file());
        engine::Database(file()).execute(versionOne);
    }
    void execute(char const* sql) { engine::Database(file()).execute(sql); }
    std::int64_t number(char const* sql) {
        engine::Database database(file());
        engine::Statement statement = database.prepare(sql);
        return statement.step() ? statement.integer(0) : -1;
    }
};

TEST_F(Migration, AProjectOfVersionOneOpensWithAllThatItHas) {
    reopen();

    ASSERT_EQ(project().edits().size(), 1U);
    engine::EditRecord const record = project().edits()[0];
    EXPECT_EQ(record.cookie, cookieOf(1));
    EXPECT_EQ(record.name(), L"waves");
    EXPECT_EQ(record.logAttributes.find(LogAttribute(LogAttribute::ePrice)), "12");
    EXPECT_EQ(record.rate, f25);
    EXPECT_EQ(record.durationInFrames(), 250);
    EXPECT_EQ(record.sourceDuration_s, 10.02);
    EXPECT_EQ(record.sourceMedium, MediumRollMedium::progressive25);
    EXPECT_TRUE(record.frameBased);
    EXPECT_EQ(record.bitRate, 800'000);
    EXPECT_EQ(record.video.width, 1920);
    EXPECT_EQ(record.video.dataFormat, Zq::Image::Format::unknown);
    EXPECT_EQ(record.labels.size(), 1U);
    EXPECT_EQ(project().findObject(L"T7", L"4711"), cookieOf(1));
    engine::Sequence const sequence = project().sequence("Scene 1").value();
    ASSERT_EQ(sequence.placements.size(), 1U);
    EXPECT_EQ(sequence.placements[0].number, 7);
    EXPECT_EQ(sequence.placements[0].in, 25);
    EXPECT_EQ(sequence.placements[0].out, 75);
    EXPECT_EQ(log.count("from version 1 to"), 1);
}

TEST_F(Migration, AProjectOfVersionOneTakesStepsAndGivesThemBack) {
    reopen();
    EXPECT_EQ(project().undo().error(), "there is nothing to take back");
    ASSERT_TRUE(project().place("Scene 1", cookieOf(1), {}, 1.0));
    ASSERT_TRUE(project().relink(cookieOf(1), makeMedia("a.mov", facts(f25, 200))));
    reopen();
    EXPECT_EQ(project().edits()[0].differences.size(), 1U);
    EXPECT_EQ(*project().undo(), "relinking \"waves\"");
    EXPECT_EQ(project().edits()[0].bitRate, 800'000);
    EXPECT_EQ(*project().undo(), "placing \"waves\" in \"Scene 1\"");
    EXPECT_EQ(project().sequence("Scene 1").value().placements.size(), 1U);
    EXPECT_EQ(log.count("from version 1 to"), 1) << "it happens once";
}

TEST_F(Migration, TheStepsOfVersionTwoAreTakenBackAndDoneAgain) {
    execute(fromVersionOneToTwo);
    reopen();
    EXPECT_EQ(log.count("from version 2 to 3"), 1);
    EXPECT_EQ(project().revision(), 0);
    EXPECT_EQ(project().history().undo, "relinked waves");
    EXPECT_EQ(project().history().redo, "");
    EXPECT_EQ(project().redo().error(), "there is nothing to do again");

    EXPECT_EQ(*project().undo(), "relinked waves");
    EXPECT_EQ(mediaOf(cookieOf(1)), L"/media/first.mov");
    EXPECT_EQ(project().edits()[0].bitRate, 800'000);
    EXPECT_THAT(inWords(project().edits()[0].differences), ElementsAre("sound: 2 channels -> none"));
    EXPECT_EQ(*project().undo(), "placed waves in Scene 1");
    EXPECT_EQ(project().sequence("Scene 1").value().length(), 50);
    EXPECT_EQ(*project().undo(), "placed waves in Scene 1");
    EXPECT_THAT(project().sequenceNames(), IsEmpty());
    EXPECT_EQ(project().undo().error(), "there is nothing to take back");

    reopen();
    EXPECT_EQ(*project().redo(), "placed waves in Scene 1");
    EXPECT_EQ(*project().redo(), "placed waves in Scene 1");
    EXPECT_EQ(*project().redo(), "relinked waves");
    EXPECT_FALSE(project().redo());
    engine::Sequence const sequence = project().sequence("Scene 1").value();
    EXPECT_EQ(sequence.rate, f25);
    ASSERT_EQ(sequence.placements.size(), 2U);
    EXPECT_EQ(sequence.placements[0].number, 7);
    EXPECT_EQ(sequence.placements[0].in, 25);
    EXPECT_EQ(sequence.placements[1].number, 8);
    EXPECT_EQ(sequence.placements[1].start, 50);
    EXPECT_EQ(mediaOf(cookieOf(1)), L"/media/second.mov");
    EXPECT_THAT(inWords(project().edits()[0].differences), ElementsAre("length: 10.00 s -> 8.00 s"));
}

TEST_F(Migration, TheSequencesOfVersionTwoCanBeArranged) {
    execute(fromVersionOneToTwo);
    reopen();
    ASSERT_TRUE(project().move(8, 0));
    ASSERT_TRUE(project().trim(7, {}, 2.0));
    ASSERT_TRUE(project().remove(8));
    EXPECT_EQ(project().sequence("Scene 1").value().length(), 25);
    EXPECT_EQ(project().history().undo, "removing \"waves\" from \"Scene 1\"");
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(project().undo());
    }
    EXPECT_EQ(project().history().undo, "relinked waves");
    EXPECT_EQ(project().sequence("Scene 1").value().placements[1].number, 8);
}

TEST_F(Migration, FromVersionTwoThatCannotBeFinishedLeavesIt) {
    execute(fromVersionOneToTwo);
    execute("CREATE TABLE revision (in_the_way INTEGER)");
    ASSERT_FALSE(engine::Project::open(file(), nullptr));
    EXPECT_EQ(number("SELECT version FROM schema_version"), 2);
    EXPECT_EQ(number("SELECT count(*) FROM step WHERE previous_media = '/media/first.mov'"), 1);
    execute("DROP TABLE revision");
    reopen();
    EXPECT_EQ(*project().undo(), "relinked waves");
}

TEST_F(Migration, AProjectThatWasBroughtUpHasTheTablesOfANewOne) {
    reopen();
    closeProject();
    fs::path const fresh = folder.path() / "fresh.sqlite";
    ASSERT_TRUE(engine::Project::open(fresh, nullptr));
    auto const tables = [](fs::path const& path) {
        engine::Database database(path);
        std::string text;
        for (engine::Statement row =
                 database.prepare("SELECT m.name, c.name, c.type, c.\"notnull\", c.pk FROM sqlite_schema m "
                                  "JOIN pragma_table_info(m.name) c ORDER BY m.name, c.cid");
             row.step();) {
            for (int column = 0; column < 5; ++column) {
                text += row.text(column);
                text += ' ';
            }
            text += '\n';
        }
        return text;
    };
    EXPECT_EQ(tables(file()), tables(fresh));
    EXPECT_EQ(number("SELECT version FROM schema_version"), 3);
}

TEST_F(Migration, ThatCannotBeFinishedLeavesTheOldVersion) {
    execute("CREATE TABLE step (in_the_way INTEGER)");
    auto const opened = engine::Project::open(file(), nullptr);
    ASSERT_FALSE(opened);
    EXPECT_EQ(number("SELECT version FROM schema_version"), 1);
    EXPECT_EQ(number("SELECT count(*) FROM sqlite_schema WHERE name = 'difference'"), 0);
    execute("DROP TABLE step");
    reopen();
    EXPECT_EQ(project().edits().size(), 1U);
}

TEST_F(Migration, AProjectOfALaterVersionIsRefusedAndStaysAsItIs) {
    execute("UPDATE schema_version SET version = 4");
    std::string const before = engine::readWholeFile(file(), 10 << 20).value();

    auto const opened = engine::Project::open(file(), nullptr);

    ASSERT_FALSE(opened);
    EXPECT_THAT(opened.error(),
                testing::EndsWith("a later version of the program made it (version 4, this one knows 3)"));
    EXPECT_EQ(engine::readWholeFile(file(), 10 << 20).value(), before);
    EXPECT_EQ(number("SELECT count(*) FROM placement"), 1);
}

} // namespace
} // namespace test
