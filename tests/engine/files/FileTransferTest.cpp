#include "host/engine/files/FileTransfer.h"

#include <gmock/gmock.h>

#include "tests/engine/files/FilesFixture.h"
#include "tests/engine/local/Bytes.h"

namespace {

using engine::FileTransfer;
using testing::ElementsAre;
using testing::IsEmpty;

class FileTransfers : public test::FilesFixture {
protected:
    // A file of a transfer that goes on, closed.
    void writeAndClose(char const* name) { ASSERT_TRUE(open(at(name), transfer_)->write("bytes", 5)); }

    Zq::Ptr<FileTransfer> const transfer_ = Zq::makeShared<FileTransfer>(0U);
};

TEST_F(FileTransfers, AClosedFileStaysInTheJournalUntilTheTransferHasEndedWhole) {
    writeAndClose("a.mov");
    writeAndClose("b.mov");
    EXPECT_EQ(notes(), 2U);
    EXPECT_TRUE(transfer_->end(true));
    EXPECT_EQ(notes(), 0U);
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty());
    EXPECT_EQ(test::readBytes(at("a.mov")), "bytes");
}

TEST_F(FileTransfers, AFileOfAFailedTransferStaysInTheJournal) {
    writeAndClose("a.mov");
    EXPECT_FALSE(transfer_->end(false));
    EXPECT_EQ(notes(), 1U);
    EXPECT_THAT(engine::WriteJournal(journal_).removeUnfinished(), ElementsAre(at("a.mov")));
    EXPECT_FALSE(std::filesystem::exists(at("a.mov")));
}

TEST_F(FileTransfers, WithoutAnEndATransferIsNotWhole) {
    {
        Zq::Ptr<FileTransfer> const other = Zq::makeShared<FileTransfer>(0U);
        ASSERT_TRUE(open(at("a.mov"), other));
    }
    EXPECT_EQ(notes(), 1U);
}

TEST_F(FileTransfers, AFileThatIsClosedAfterTheEndGoesByIt) {
    Zq::Ptr<iFile> whole = open(at("whole.mov"), transfer_);
    EXPECT_TRUE(transfer_->end(true));
    EXPECT_EQ(notes(), 1U) << "it is still being written";
    whole.reset();
    EXPECT_EQ(notes(), 0U);

    Zq::Ptr<FileTransfer> const other = Zq::makeShared<FileTransfer>(0U);
    Zq::Ptr<iFile> cut = open(at("cut.mov"), other);
    EXPECT_FALSE(other->end(false));
    cut.reset();
    EXPECT_EQ(notes(), 1U);
}

TEST_F(FileTransfers, TheFirstEndHolds) {
    writeAndClose("a.mov");
    EXPECT_FALSE(transfer_->end(false));
    EXPECT_FALSE(transfer_->end(true));
    EXPECT_EQ(notes(), 1U);
}

TEST_F(FileTransfers, DeletingTheFileTakesItsNoteToo) {
    writeAndClose("a.mov");
    writeAndClose("b.mov");
    EXPECT_FALSE(transfer_->end(false));
    EXPECT_TRUE(remove(folder_.path() / "." / "a.mov"));
    EXPECT_EQ(notes(), 1U) << "that of the other file";
    EXPECT_TRUE(remove(at("b.mov")));
    EXPECT_EQ(notes(), 0U);
}

TEST_F(FileTransfers, DeletingWhatIsGoneAlreadyTakesTheNoteToo) {
    writeAndClose("a.mov");
    EXPECT_FALSE(transfer_->end(false));
    std::filesystem::remove(at("a.mov"));
    EXPECT_TRUE(remove(at("a.mov")));
    EXPECT_EQ(notes(), 0U);
}

TEST_F(FileTransfers, DeletingLeavesTheNoteOfAFileThatIsBeingWritten) {
    Zq::Ptr<iFile> const file = open(at("a.mov"));
    EXPECT_TRUE(remove(at("a.mov")));
    EXPECT_EQ(notes(), 1U);
}

TEST_F(FileTransfers, DeletingMakesNoJournal) {
    EXPECT_TRUE(remove(at("a.mov")));
    EXPECT_FALSE(std::filesystem::exists(journal_));
}

TEST_F(FileTransfers, AWholeCopyInThePlaceOfACutFileIsWhole) {
    writeAndClose("a.mov");
    EXPECT_FALSE(transfer_->end(false));
    test::writeBytes(at("source.mov"), "the whole film");
    EXPECT_EQ(files_.copyFile(engine::wideText(at("source.mov")), engine::wideText(at("a.mov")), true, {}),
              iFileManager::eCopied);
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty());
    EXPECT_EQ(test::readBytes(at("a.mov")), "the whole film");
}

TEST_F(FileTransfers, AFileThatIsWrittenAnewAfterAFailureIsWhole) {
    writeAndClose("a.mov");
    EXPECT_FALSE(transfer_->end(false));
    Zq::Ptr<FileTransfer> const second = Zq::makeShared<FileTransfer>(0U);
    ASSERT_TRUE(open(at("a.mov"), second)->write("again", 5));
    EXPECT_TRUE(second->end(true));
    EXPECT_EQ(notes(), 0U);
}

TEST_F(FileTransfers, ScopesNestAndAFileOutsideOfThemBelongsToNone) {
    EXPECT_FALSE(FileTransfer::current());
    Zq::Ptr<FileTransfer> const inner = Zq::makeShared<FileTransfer>(7U);
    {
        FileTransfer::Scope const one(transfer_);
        {
            FileTransfer::Scope const two(inner);
            EXPECT_EQ(FileTransfer::current()->announced_bytes(), 7U);
        }
        EXPECT_EQ(FileTransfer::current(), transfer_);
    }
    EXPECT_FALSE(FileTransfer::current());
    open(at("a.mov")).reset();
    EXPECT_EQ(notes(), 0U);
}

} // namespace
