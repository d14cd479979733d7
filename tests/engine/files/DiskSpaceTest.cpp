#include "host/engine/files/DiskSpace.h"

#include <cerrno>
#include <cstring>
#include <optional>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "host/engine/files/FileDescriptor.h"
#include "tests/engine/files/FilesFixture.h"
#include "tests/engine/local/Bytes.h"

namespace {

using engine::FileTransfer;

constexpr std::uint64_t MiB = std::uint64_t{1} << 20;

std::uint64_t allocatedBytes(std::filesystem::path const& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    return static_cast<std::uint64_t>(status.st_blocks) * 512;
}

class AnnouncedFiles : public test::FilesFixture {
protected:
    Zq::Ptr<iFile> openAnnounced(std::filesystem::path const& file, std::uint64_t length) {
        transfer_ = Zq::makeShared<FileTransfer>(length);
        return open(file, transfer_);
    }

private:
    Zq::Ptr<FileTransfer> transfer_;
};

TEST_F(AnnouncedFiles, TheRoomIsReservedAndTheFileIsAsLongAsWhatIsWritten) {
    Zq::Ptr<iFile> file = openAnnounced(at("a.mov"), 4 * MiB);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->getSize(), 0U);
    ASSERT_TRUE(file->write("short", 5));
    EXPECT_EQ(file->getSize(), 5U);
    EXPECT_EQ(file->getPosition(), 5U);
    EXPECT_GE(allocatedBytes(at("a.mov")), 4 * MiB);
    file.reset();
    EXPECT_EQ(test::readBytes(at("a.mov")), "short");
    EXPECT_LT(allocatedBytes(at("a.mov")), MiB) << "what was not needed is given back";
}

TEST_F(AnnouncedFiles, OneThatFitsNoDiskIsNotOpenedAndLeavesNothingButALogLine) {
    for (std::uint64_t const length : {std::uint64_t{1} << 60, UINT64_MAX}) {
        EXPECT_FALSE(openAnnounced(at("a.mov"), length));
    }
    EXPECT_FALSE(std::filesystem::exists(at("a.mov")));
    EXPECT_EQ(notes(), 0U);
    EXPECT_EQ(log_.count("a.mov is not written: it takes"), 2);
    EXPECT_EQ(log_.lines().size(), 2U);
}

TEST_F(AnnouncedFiles, AnOldFileStaysWhereTheNewOneDoesNotFit) {
    test::writeBytes(at("a.mov"), "the old film");
    EXPECT_FALSE(openAnnounced(at("a.mov"), std::uint64_t{1} << 60));
    EXPECT_EQ(test::readBytes(at("a.mov")), "the old film");
    EXPECT_EQ(notes(), 0U);
}

TEST_F(AnnouncedFiles, AnOldFileThatTheNewOneReplacesIsEmptied) {
    test::writeBytes(at("a.mov"), "the old film");
    Zq::Ptr<iFile> const file = openAnnounced(at("a.mov"), MiB);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->getSize(), 0U);
    EXPECT_GE(allocatedBytes(at("a.mov")), MiB);
}

TEST_F(AnnouncedFiles, AFolderThatIsNotThereOrCannotBeWrittenGivesNoFile) {
    std::filesystem::create_directories(at("closed"));
    std::filesystem::create_directories(journal_);
    std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
    std::filesystem::permissions(journal_, std::filesystem::perms::all);
    std::filesystem::permissions(at("closed"), std::filesystem::perms(0555));
    // The superuser may write everywhere: be someone else for a moment.
    bool const isRoot = ::geteuid() == 0;
    if (isRoot) {
        ASSERT_EQ(::seteuid(65534), 0);
    }
    Zq::Ptr<iFile> const file = openAnnounced(at("closed/a.mov"), MiB);
    if (isRoot) {
        ASSERT_EQ(::seteuid(0), 0);
    }
    EXPECT_FALSE(file);
    EXPECT_FALSE(openAnnounced(at("gone/a.mov"), MiB));
    EXPECT_EQ(notes(), 0U);
    EXPECT_EQ(log_.count("closed/a.mov cannot be written: Permission denied"), 1);
}

TEST(DiskSpace, ALengthThatNoFileCanHaveIsNotReserved) {
    test::TemporaryFolder const folder;
    engine::FileDescriptor const file(
        ::open((folder.path() / "a").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    EXPECT_FALSE(engine::reserveSpace(file.get(), UINT64_MAX));
    EXPECT_FALSE(engine::reserveSpace(file.get(), std::uint64_t{1} << 62));
    EXPECT_TRUE(engine::reserveSpace(file.get(), 0));
}

TEST(DiskSpace, WhatCannotReserveReservesNothing) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    engine::FileDescriptor const out(ends[0]);
    engine::FileDescriptor const in(ends[1]);
    EXPECT_TRUE(engine::reserveSpace(in.get(), MiB));
}

// A disk of 32 MiB of its own; only the superuser can have one.
class SmallDisk : public AnnouncedFiles {
protected:
    void SetUp() override {
        std::filesystem::create_directory(disk_);
        if (::mount("tmpfs", disk_.c_str(), "tmpfs", 0, "size=32m") != 0) {
            GTEST_SKIP() << "no disk of its own: " << std::strerror(errno);
        }
        mounted_ = true;
    }
    void TearDown() override {
        if (mounted_) {
            ::umount2(disk_.c_str(), MNT_DETACH);
        }
    }
    [[nodiscard]] std::uint64_t freeBytes() const {
        struct statvfs disk {};
        EXPECT_EQ(::statvfs(disk_.c_str(), &disk), 0);
        return std::uint64_t{disk.f_bavail} * disk.f_frsize;
    }
    void fill(char const* name, std::uint64_t bytes) const {
        test::writeBytes(disk_ / name, std::string(bytes, 'x'));
    }

    std::filesystem::path const disk_ = folder_.path() / "disk";

private:
    bool mounted_ = false;
};

TEST_F(SmallDisk, ALittleIsLeftForOthers) {
    EXPECT_FALSE(openAnnounced(disk_ / "a.mov", 25 * MiB));
    EXPECT_FALSE(std::filesystem::exists(disk_ / "a.mov"));
    Zq::Ptr<iFile> const file = openAnnounced(disk_ / "a.mov", 23 * MiB);
    ASSERT_TRUE(file);
    EXPECT_LE(freeBytes(), 9 * MiB) << "two transfers do not count on the same room";
    EXPECT_FALSE(openAnnounced(disk_ / "b.mov", 2 * MiB));
}

TEST_F(SmallDisk, WhatAFailedTransferReservedIsFreeAgain) {
    std::uint64_t const before = freeBytes();
    openAnnounced(disk_ / "a.mov", 20 * MiB).reset();
    EXPECT_GE(freeBytes() + MiB, before);
}

TEST_F(SmallDisk, TheRoomOfAnOldFileCountsForTheOneThatReplacesIt) {
    fill("a.mov", 20 * MiB);
    Zq::Ptr<iFile> const file = openAnnounced(disk_ / "a.mov", 22 * MiB);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->getSize(), 0U);
    std::string const bytes(22 * MiB, 'y');
    EXPECT_TRUE(file->write(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
}

TEST_F(SmallDisk, ReservingMoreThanThereIsFailsAndKeepsWhatIsThere) {
    fill("a.mov", MiB);
    engine::FileDescriptor const file(::open((disk_ / "a.mov").c_str(), O_RDWR | O_CLOEXEC));
    std::uint64_t const before = freeBytes();
    EXPECT_FALSE(engine::reserveSpace(file.get(), 40 * MiB));
    engine::releaseBehindEnd(file.get());
    EXPECT_GE(freeBytes() + MiB, before);
    EXPECT_EQ(std::filesystem::file_size(disk_ / "a.mov"), MiB);
}

} // namespace
