// Whole remote files on the disk: all of one, or what was there before.

#include <fstream>

#include "host/engine/files/WholeFile.h"
#include "tests/engine/streaming/StreamingFixture.h"

namespace {

using test::same;

class StreamSave : public test::StreamingFixture {
protected:
    StreamSave() : bytes(test::mediaBytes(5 * mib + 99, 6)), other(test::mediaBytes(5 * mib + 99, 7)) {
        media.put("/clip.mov", {bytes});
        std::filesystem::create_directory(folder.path() / "out");
    }
    iFileManager::eCopyRC save(Zq::Ptr<StreamingFile> const& file, bool overwrite = false,
                               iFileManager::ProgressCallback progress = {}) {
        return file->saveAs(fromUTF8(std::string_view(target().native())), overwrite, progress);
    }
    [[nodiscard]] std::filesystem::path target() const { return folder.path() / "out" / "clip.mov"; }
    [[nodiscard]] std::string saved() const {
        return engine::readWholeFile(target(), 64 * mib).value_or("(nothing)");
    }
    // Files in the folder of the destination.
    [[nodiscard]] std::ptrdiff_t count() const {
        return std::distance(std::filesystem::directory_iterator(folder.path() / "out"),
                             std::filesystem::directory_iterator());
    }

    std::string const bytes;
    std::string const other;
};

TEST_F(StreamSave, TheWholeFileIsWrittenAndItsProgressTold) {
    struct Told {
        std::uint64_t done = 0;
        std::uint64_t total = 0;
        bool rising = true;
    } told;
    auto const progress = [](void* context, std::uint64_t done, std::uint64_t total) {
        auto* const record = static_cast<Told*>(context);
        record->rising = record->rising && done > record->done;
        record->done = done;
        record->total = total;
    };
    EXPECT_EQ(save(open("clip.mov"), false, {progress, &told}), iFileManager::eCopied);
    EXPECT_TRUE(same(saved(), bytes));
    EXPECT_TRUE(told.rising);
    EXPECT_EQ(told.done, bytes.size());
    EXPECT_EQ(told.total, bytes.size());
    EXPECT_EQ(count(), 1);
}

TEST_F(StreamSave, WhatTheStoreHoldsIsNotFetchedAgain) {
    auto const file = open("clip.mov");
    ASSERT_TRUE(same(readAll(file), bytes));
    std::uint64_t const before = streams().statistics().requests;
    EXPECT_EQ(save(file), iFileManager::eCopied);
    EXPECT_TRUE(same(saved(), bytes));
    EXPECT_EQ(streams().statistics().requests, before);
}

TEST_F(StreamSave, AnOldFileStaysUnlessItIsToBeReplaced) {
    std::ofstream(target()) << "old";
    EXPECT_EQ(save(open("clip.mov")), iFileManager::eDestinationNotWritten);
    EXPECT_EQ(saved(), "old");
    EXPECT_EQ(save(open("clip.mov"), true), iFileManager::eCopied);
    EXPECT_TRUE(same(saved(), bytes));
}

TEST_F(StreamSave, AMissingFileIsNotOpened) {
    EXPECT_EQ(save(open("nothing.mov")), iFileManager::eSourceNotOpened);
    EXPECT_EQ(count(), 0);
}

TEST_F(StreamSave, AFolderThatIsNotThereIsNotWritten) {
    auto const file = open("clip.mov");
    EXPECT_EQ(file->saveAs(L"/no-such-folder/clip.mov", true, {}), iFileManager::eDestinationNotWritten);
    EXPECT_EQ(file->saveAs(L"", true, {}), iFileManager::eDestinationNotWritten);
}

TEST_F(StreamSave, AFileThatChangesOnTheWayIsBegunAnewOnce) {
    auto const file = open("clip.mov");
    ASSERT_TRUE(same(read(file, 0, 100), bytes.substr(0, 100)));
    media.put("/clip.mov", {other, "\"two\""});
    EXPECT_EQ(save(file), iFileManager::eCopied);
    EXPECT_TRUE(same(saved(), other));
}

TEST_F(StreamSave, AFileThatKeepsChangingFailsAndLeavesTheOldOne) {
    std::ofstream(target()) << "old";
    auto const version = std::make_shared<std::atomic<int>>(0);
    media.setFault([this, version](test::RawConnection&, test::RawRequest const& request) {
        std::string const range = request.header("Range");
        if (range != "bytes=0-524287" && range != "bytes=-65536") {
            media.put("/clip.mov", {other, '"' + std::to_string(++*version) + '"'});
        }
        return false;
    });
    EXPECT_EQ(save(open("clip.mov"), true), iFileManager::eTransferFailed);
    EXPECT_EQ(saved(), "old");
    EXPECT_EQ(count(), 1);
}

TEST_F(StreamSave, ACancelledSaveLeavesTheOldOne) {
    std::ofstream(target()) << "old";
    auto const cancel = [](void* context, std::uint64_t, std::uint64_t) {
        static_cast<test::OneTask*>(context)->cancel();
    };
    EXPECT_EQ(save(open("clip.mov"), true, {cancel, &task}), iFileManager::eCancelled);
    EXPECT_EQ(saved(), "old");
    EXPECT_EQ(count(), 1);
}

} // namespace
