#include "host/engine/preferences/SqlitePreferences.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "host/engine/storage/Database.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/InstalledLog.h"
#include "tests/engine/local/OtherProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class SqlitePreferences : public testing::Test {
protected:
    // The databases that were set aside, without what SQLite keeps beside them.
    [[nodiscard]] std::vector<std::string> setAsideFiles() const {
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(folder_.path())) {
            std::string const name = entry.path().filename();
            if (name.starts_with("preferences.sqlite.damaged-") && !name.ends_with("-wal") &&
                !name.ends_with("-shm")) {
                names.push_back(name);
            }
        }
        std::ranges::sort(names);
        return names;
    }

    test::TemporaryFolder folder_;
    std::filesystem::path const file_ = folder_.path() / "preferences.sqlite";
    test::InstalledLog log_;
};

TEST_F(SqlitePreferences, ValuesOutliveTheStore) {
    {
        engine::SqlitePreferences store(file_);
        store.write("T7 Height", std::int32_t{1080});
        store.write("T7 User", WideString(L"kim"));
        store.write("T7 HQ Proxies", false);
    }
    engine::SqlitePreferences store(file_);
    EXPECT_EQ(store.readInt("T7 Height"), 1080);
    EXPECT_EQ(store.readText("T7 User"), WideString(L"kim"));
    EXPECT_EQ(store.readBool("T7 HQ Proxies"), false);
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SqlitePreferences, AWriteIsInTheFileBeforeTheStoreCloses) {
    engine::SqlitePreferences store(file_);
    store.write("T7 Height", std::int32_t{720});
    engine::Database other(file_);
    engine::Statement row = other.prepare("SELECT value FROM preference WHERE key = 'T7 Height'");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), 720);
}

TEST_F(SqlitePreferences, ATextKeepsACharacterOfValueZero) {
    WideString const text(L"a\0b", 3);
    engine::SqlitePreferences(file_).write("text", text);
    EXPECT_EQ(engine::SqlitePreferences(file_).readText("text"), text);
}

TEST_F(SqlitePreferences, AReadSeesWhatAnotherProcessHasWritten) {
    engine::SqlitePreferences store(file_);
    store.write("T7 Price", std::int32_t{5});
    std::uint64_t const before = store.revision();
    test::OtherProcess other({"preference", file_, "T7 Price", "50"});
    ASSERT_EQ(other.wait(), 0);
    EXPECT_EQ(store.readInt("T7 Price"), 50);
    EXPECT_NE(store.revision(), before);
}

TEST_F(SqlitePreferences, TheRevisionAloneTellsOfAnotherProcess) {
    engine::SqlitePreferences store(file_);
    std::uint64_t const before = store.revision();
    test::OtherProcess other({"preference", file_, "T7 Len", "30"});
    ASSERT_EQ(other.wait(), 0);
    EXPECT_NE(store.revision(), before);
}

TEST_F(SqlitePreferences, TwoProcessesThatWriteAtOnceLoseNothing) {
    engine::SqlitePreferences store(file_);
    test::OtherProcess other({"count", file_, "theirs", "100"});
    for (std::int32_t i = 1; i <= 100; ++i) {
        store.write("ours", i);
    }
    ASSERT_EQ(other.wait(), 0);
    EXPECT_EQ(store.readInt("ours"), 100);
    EXPECT_EQ(store.readInt("theirs"), 100);
    EXPECT_TRUE(log_.lines().empty());
}

TEST_F(SqlitePreferences, AKilledWriterLeavesAFileThatCanBeRead) {
    {
        test::OtherProcess other({"count", file_, "n", "1000000"});
        engine::SqlitePreferences store(file_);
        while (store.readInt("n").value_or(0) < 20) {
        }
        other.kill();
    }
    engine::SqlitePreferences store(file_);
    EXPECT_GE(store.readInt("n").value_or(0), 20);
    EXPECT_TRUE(setAsideFiles().empty());
}

TEST_F(SqlitePreferences, AFileThatIsNoDatabaseIsSetAsideAndDefaultsApply) {
    std::string const rubbish(5000, 'x');
    test::writeBytes(file_, rubbish);
    engine::SqlitePreferences store(file_);
    EXPECT_FALSE(store.readInt("T7 Price").has_value());
    store.write("T7 Price", std::int32_t{20});
    EXPECT_EQ(engine::SqlitePreferences(file_).readInt("T7 Price"), 20);
    ASSERT_EQ(setAsideFiles().size(), 1U);
    EXPECT_EQ(test::readBytes(folder_.path() / setAsideFiles().front()), rubbish);
    EXPECT_EQ(log_.count(setAsideFiles().front()), 1);
}

TEST_F(SqlitePreferences, TheNameOfAFileSetAsideHoldsDateAndTime) {
    test::writeBytes(file_, "not a database at all");
    engine::SqlitePreferences const store(file_);
    ASSERT_EQ(setAsideFiles().size(), 1U);
    std::string const stamp =
        setAsideFiles().front().substr(std::string("preferences.sqlite.damaged-").size());
    ASSERT_EQ(stamp.size(), std::string("YYYYMMDD-HHMMSS").size());
    EXPECT_EQ(stamp[8], '-');
    EXPECT_EQ(stamp.find_first_not_of("0123456789-"), std::string::npos);
}

TEST_F(SqlitePreferences, ASecondDamagedFileDoesNotReplaceTheFirst) {
    for (char const* const content : {"first damage", "second damage"}) {
        test::writeBytes(file_, content);
        engine::SqlitePreferences const store(file_);
    }
    EXPECT_EQ(setAsideFiles().size(), 2U);
}

TEST_F(SqlitePreferences, WhatLiesBesideADamagedFileGoesWithIt) {
    test::writeBytes(file_, std::string(4096, 'x'));
    test::writeBytes(file_.native() + "-wal", "left over");
    engine::SqlitePreferences const store(file_);
    ASSERT_EQ(setAsideFiles().size(), 1U);
    EXPECT_EQ(test::readBytes(folder_.path() / (setAsideFiles().front() + "-wal")), "left over");
}

TEST_F(SqlitePreferences, AFileWithOverwrittenPagesIsSetAside) {
    {
        engine::SqlitePreferences store(file_);
        for (int i = 0; i < 500; ++i) {
            store.write(("key " + std::to_string(i)).c_str(), WideString(L"some text to fill a page"));
        }
    }
    std::string bytes = test::readBytes(file_);
    ASSERT_GT(bytes.size(), 12'000U);
    std::fill(bytes.begin() + 4096, bytes.end() - 100, '\x55');
    test::writeBytes(file_, bytes);
    engine::SqlitePreferences store(file_);
    EXPECT_FALSE(store.readText("key 1").has_value());
    EXPECT_EQ(setAsideFiles().size(), 1U);
}

TEST_F(SqlitePreferences, AFileCutAtAnyLengthNeitherCrashesNorBlocks) {
    {
        engine::SqlitePreferences store(file_);
        for (int i = 0; i < 60; ++i) {
            store.write(("key " + std::to_string(i)).c_str(), WideString(L"value"));
        }
    }
    std::string const whole = test::readBytes(file_);
    for (std::size_t length = 0; length < whole.size(); length += 512) {
        test::TemporaryFolder const folder;
        std::filesystem::path const cut = folder.path() / "preferences.sqlite";
        test::writeBytes(cut, whole.substr(0, length));
        engine::SqlitePreferences store(cut);
        store.write("after", std::int32_t{1});
        EXPECT_EQ(store.readInt("after"), 1) << length;
        EXPECT_EQ(engine::SqlitePreferences(cut).readInt("after"), 1) << length;
    }
}

TEST_F(SqlitePreferences, AFileOfALaterVersionIsKeptAsideUntouched) {
    {
        engine::Database later(file_);
        later.execute("CREATE TABLE setting (name TEXT, value TEXT)");
        later.execute("INSERT INTO setting VALUES ('T7 User', 'kim')");
        later.setSchemaVersion(2);
    }
    engine::SqlitePreferences store(file_);
    EXPECT_FALSE(store.readText("T7 User").has_value());
    ASSERT_EQ(setAsideFiles().size(), 1U);
    engine::Database kept(folder_.path() / setAsideFiles().front());
    engine::Statement row = kept.prepare("SELECT value FROM setting");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.text(0), "kim");
}

TEST_F(SqlitePreferences, ATableOfAnotherShapeIsSetAside) {
    {
        engine::Database other(file_);
        other.execute("CREATE TABLE preference (something TEXT)");
    }
    engine::SqlitePreferences store(file_);
    store.write("T7 Price", std::int32_t{5});
    EXPECT_EQ(store.readInt("T7 Price"), 5);
    EXPECT_EQ(setAsideFiles().size(), 1U);
}

TEST_F(SqlitePreferences, RowsThatNoPreferenceHasArePassedOver) {
    engine::SqlitePreferences(file_).write("good", std::int32_t{1});
    {
        engine::Database other(file_);
        other.execute("INSERT INTO preference VALUES ('huge', 1, 99999999999), ('odd', 77, 'x')");
    }
    engine::SqlitePreferences store(file_);
    EXPECT_FALSE(store.readInt("huge").has_value());
    EXPECT_FALSE(store.readText("odd").has_value());
    EXPECT_EQ(store.readInt("good"), 1);
}

TEST_F(SqlitePreferences, AFileThatIsDamagedWhileItIsOpenIsReplaced) {
    engine::SqlitePreferences store(file_);
    for (int i = 0; i < 200; ++i) {
        store.write(("key " + std::to_string(i)).c_str(), WideString(L"some text to fill a page"));
    }
    // As a failing disk would: the same file, other bytes, and no log that still holds the good ones.
    {
        engine::Database other(file_);
        other.execute("PRAGMA wal_checkpoint(TRUNCATE)");
    }
    std::string const rubbish(static_cast<std::size_t>(std::filesystem::file_size(file_)), '\x55');
    std::fstream(file_, std::ios::in | std::ios::out | std::ios::binary) << rubbish;
    {
        // Its commit is what makes the store look at the file again.
        engine::SqlitePreferences other(file_);
        other.write("fresh", std::int32_t{1});
    }
    store.write("mine", std::int32_t{2});
    EXPECT_EQ(store.readInt("mine"), 2);
    engine::SqlitePreferences again(file_);
    EXPECT_EQ(again.readInt("mine"), 2);
    EXPECT_EQ(again.readInt("fresh"), 1);
    EXPECT_EQ(setAsideFiles().size(), 1U);
}

TEST_F(SqlitePreferences, AFileThatIsRemovedWhileItIsOpenIsMadeAgainByTheNextWrite) {
    engine::SqlitePreferences store(file_);
    store.write("before", std::int32_t{1});
    for (char const* const suffix : {"", "-wal", "-shm"}) {
        std::filesystem::remove(file_.native() + suffix);
    }
    store.write("after", std::int32_t{2});
    EXPECT_EQ(engine::SqlitePreferences(file_).readInt("after"), 2);
}

TEST_F(SqlitePreferences, WithoutAFolderToWriteToValuesHoldForTheLifeOfTheProgram) {
    test::writeBytes(folder_.path() / "file", "in the way");
    engine::SqlitePreferences store(folder_.path() / "file" / "preferences.sqlite");
    std::uint64_t const before = store.revision();
    store.write("T7 Price", std::int32_t{20});
    store.write("T7 Price", std::int32_t{50});
    EXPECT_EQ(store.readInt("T7 Price"), 50);
    EXPECT_NE(store.revision(), before);
    EXPECT_EQ(log_.lines().size(), 1U);
    EXPECT_EQ(log_.count("changes last until the program ends"), 1);
    EXPECT_EQ(test::readBytes(folder_.path() / "file"), "in the way");
}

TEST_F(SqlitePreferences, AValueThatCouldNotBeWrittenStillCountsAndIsWrittenLater) {
    engine::SqlitePreferences store(file_);
    store.write("T7 Price", std::int32_t{5});
    {
        // Refuses each write of this key, as a full disk refuses all.
        engine::Database other(file_);
        other.execute(
            "CREATE TRIGGER refuse BEFORE UPDATE ON preference BEGIN SELECT RAISE(ABORT, 'full'); END");
    }
    store.write("T7 Price", std::int32_t{10});
    store.write("T7 Price", std::int32_t{20});
    EXPECT_EQ(store.readInt("T7 Price"), 20);
    EXPECT_EQ(log_.lines().size(), 1U);
    engine::Database(file_).execute("DROP TRIGGER refuse");
    EXPECT_EQ(store.readInt("T7 Price"), 20);
    store.write("T7 Price", std::int32_t{50});
    EXPECT_EQ(engine::SqlitePreferences(file_).readInt("T7 Price"), 50);
}

} // namespace
