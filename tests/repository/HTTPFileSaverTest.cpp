#include "repository/HTTPFileSaver.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"

namespace repository_tests {
namespace {

constexpr wchar_t target[] = L"/media/Tarn7/7.mov";

// With its members laid open.
class Saver : public HTTPFileSaver {
public:
    using HTTPFileSaver::file;
    using HTTPFileSaver::HTTPFileSaver;
    using HTTPFileSaver::logger;
    using HTTPFileSaver::path;
    using HTTPFileSaver::progress;
    using HTTPFileSaver::totalBytes;
};

static_assert(std::is_base_of_v<iHTTPServer::iDataReceiver, HTTPFileSaver>);
static_assert(!std::is_base_of_v<iObject, HTTPFileSaver>);

// A disk that can be full, and tells how its files are opened and whether they are closed.
class WatchedDisk final : public iFileManager {
public:
    explicit WatchedDisk(iFileManager& disk) : disk_(disk) {}

    Zq::Ptr<iFile> openForWrite(WideString const& path, int access, int sharing, int hint,
                                int further) override {
        opened.push_back({access, sharing, hint, further});
        Zq::Ptr<iFile> const file = disk_.openForWrite(path, access, sharing, hint, further);
        return file ? Zq::makeShared<File>(*this, file) : Zq::Ptr<iFile>();
    }
    bool fileExists(WideString const& path) override { return disk_.fileExists(path); }
    bool deleteFile(WideString const& path) override { return disk_.deleteFile(path); }
    bool createDirectory(WideString const& path) override { return disk_.createDirectory(path); }
    Zq::Ptr<iFile> openForRead(WideString const& path) override { return disk_.openForRead(path); }
    eCopyRC copyFile(WideString const& source, WideString const& destination, bool overwrite,
                     ProgressCallback progress) override {
        return disk_.copyFile(source, destination, overwrite, progress);
    }
    wchar_t pathSeparator() const override { return disk_.pathSeparator(); }
    WideString getHostName() const override { return disk_.getHostName(); }
    void registerProvider(iFileProvider& provider) override { disk_.registerProvider(provider); }
    void forgetProvidersOf(ZqComponentBase& component) override { disk_.forgetProvidersOf(component); }
    void forgetProvider(iFileProvider const& provider) noexcept override { disk_.forgetProvider(provider); }
    iFileProvider* findProvider(WideString const& path) override { return disk_.findProvider(path); }

    std::vector<std::vector<int>> opened;
    std::vector<std::uint32_t> written; // sizes
    int open = 0;
    bool full = false;

private:
    class File final : public iFile {
    public:
        File(WatchedDisk& disk, Zq::Ptr<iFile> file) : disk_(disk), file_(std::move(file)) { ++disk_.open; }
        ~File() override { --disk_.open; }
        bool write(void const* bytes, std::uint32_t size) override {
            disk_.written.push_back(size);
            return !disk_.full && file_->write(bytes, size);
        }
        std::int64_t read(void* bytes, std::uint32_t size) override { return file_->read(bytes, size); }
        bool setPosition(std::uint64_t position) override { return file_->setPosition(position); }
        std::uint64_t getPosition() override { return file_->getPosition(); }
        std::uint64_t getSize() override { return file_->getSize(); }

    private:
        WatchedDisk& disk_;
        Zq::Ptr<iFile> file_;
    };

    iFileManager& disk_;
};

class FileSaver : public testing::Test {
protected:
    FileSaver() {
        HostServices services = installedHost();
        services.files = &disk;
        before_ = installHost(services);
    }
    ~FileSaver() override { installHost(before_); }

    static Zq::Ptr<iMemHolder> block(std::string bytes) {
        return Zq::makeShared<fake::MemHolder>(std::move(bytes));
    }
    [[nodiscard]] bool exists() { return host.files.fileExists(target); }
    [[nodiscard]] std::string content() { return exists() ? host.files.disk->files[target] : "none"; }
    // A transfer of the body by the host's server, in blocks of four bytes.
    int transfer(std::string body) {
        host.network.answerWith(std::move(body));
        host.network.setBlockSize(4);
        HTTPConnectionInfo info;
        info.server = L"files.test";
        return host.network.createHTTPServer(info)->httpGetToReceiver(L"/7.mov", saver);
    }

    fake::Host host;
    WatchedDisk disk{host.files};
    Zq::Ptr<fake::ImportLog> log = Zq::makeShared<fake::ImportLog>();
    Saver saver{target, LoggerHandle(log)};

private:
    HostServices before_;
};

TEST_F(FileSaver, ANewOneHasItsPathAndNothingElse) {
    EXPECT_EQ(saver.path, target);
    EXPECT_FALSE(saver.file);
    EXPECT_EQ(saver.totalBytes, 0U);
    EXPECT_EQ(saver.progress.function, nullptr);
    EXPECT_EQ(saver.progress.context, nullptr);
    EXPECT_FALSE(exists());
    EXPECT_TRUE(disk.opened.empty());
}

TEST_F(FileSaver, ItsMembersStandInTheirOrder) {
    void const* const members[] = {&saver.file, &saver.path, &saver.logger, &saver.totalBytes,
                                   &saver.progress};
    EXPECT_TRUE(std::is_sorted(std::begin(members), std::end(members), std::less<>()));
}

TEST_F(FileSaver, TheBeginningOpensTheFileForWriting) {
    EXPECT_TRUE(saver.beginReceive(12));
    EXPECT_EQ(saver.totalBytes, 12U);
    EXPECT_TRUE(saver.file);
    EXPECT_EQ(disk.opened, (std::vector<std::vector<int>>{{2, 1, 0, 0}}));
    EXPECT_EQ(content(), "");
}

TEST_F(FileSaver, AnOldFileIsEmptied) {
    host.files.disk->files[target] = "something longer";
    EXPECT_TRUE(saver.beginReceive(1));
    EXPECT_TRUE(saver.receiveData(0, block("x")));
    EXPECT_EQ(content(), "x");
}

TEST_F(FileSaver, AFileThatCannotBeWrittenStopsTheTransfer) {
    host.files.refuseWriting = true;
    EXPECT_EQ(transfer("some bytes"), 0);
    EXPECT_FALSE(exists());
    EXPECT_EQ(saver.totalBytes, 10U);
    EXPECT_TRUE(disk.written.empty());
    EXPECT_TRUE(log->progress.empty());
}

TEST_F(FileSaver, BlocksAreWrittenInTheirOrderAndEachIsReported) {
    EXPECT_EQ(transfer("0123456789"), 200);
    EXPECT_EQ(content(), "0123456789");
    EXPECT_EQ(disk.written, (std::vector<std::uint32_t>{4, 4, 2}));
    EXPECT_EQ(log->progress, (std::vector<double>{0.4, 0.8, 1.0}));
    EXPECT_TRUE(log->lines.empty());
}

TEST_F(FileSaver, TheOffsetOfABlockIsNotRead) {
    EXPECT_TRUE(saver.beginReceive(4));
    EXPECT_TRUE(saver.receiveData(1000, block("ab")));
    EXPECT_TRUE(saver.receiveData(0, block("cd")));
    EXPECT_EQ(content(), "abcd");
}

TEST_F(FileSaver, WithoutAnAnnouncedLengthTheFileIsWrittenAndNothingReported) {
    int calls = 0;
    saver.progress = {[](void* context, std::uint64_t, std::uint64_t) { ++*static_cast<int*>(context); },
                      &calls};
    EXPECT_TRUE(saver.beginReceive(0));
    EXPECT_TRUE(saver.receiveData(0, block("abc")));
    EXPECT_TRUE(saver.receiveData(3, block("def")));
    saver.endReceive();
    EXPECT_EQ(content(), "abcdef");
    EXPECT_TRUE(log->progress.empty());
    EXPECT_EQ(calls, 0);
}

TEST_F(FileSaver, AReceiverOfProgressTakesTheLogsPlace) {
    std::vector<std::uint64_t> told;
    saver.progress = {[](void* context, std::uint64_t done, std::uint64_t total) {
                          auto& list = *static_cast<std::vector<std::uint64_t>*>(context);
                          list.push_back(done);
                          list.push_back(total);
                      },
                      &told};
    EXPECT_EQ(transfer("0123456789"), 200);
    EXPECT_EQ(told, (std::vector<std::uint64_t>{4, 10, 8, 10, 10, 10}));
    EXPECT_TRUE(log->progress.empty());
}

TEST_F(FileSaver, ACancelledTaskStopsAtTheNextBlockWhichIsNotWritten) {
    EXPECT_TRUE(saver.beginReceive(6));
    EXPECT_TRUE(saver.receiveData(0, block("abc")));
    host.tasks.status = iBackgroundTask::eCancelling;
    EXPECT_FALSE(saver.receiveData(3, block("def")));
    EXPECT_EQ(content(), "abc");
    EXPECT_EQ(log->progress, std::vector<double>{0.5});
}

TEST_F(FileSaver, OnlyACancelledTaskStops) {
    EXPECT_TRUE(saver.beginReceive(0));
    for (auto const status :
         {iBackgroundTask::eWaiting, iBackgroundTask::eRunning, iBackgroundTask::eFinished}) {
        host.tasks.status = status;
        EXPECT_TRUE(saver.receiveData(0, block("x")));
    }
    EXPECT_EQ(content(), "xxx");
}

TEST_F(FileSaver, AWriteThatFailsStopsWithoutAReport) {
    EXPECT_TRUE(saver.beginReceive(6));
    EXPECT_TRUE(saver.receiveData(0, block("abc")));
    disk.full = true;
    EXPECT_FALSE(saver.receiveData(3, block("def")));
    EXPECT_EQ(content(), "abc");
    EXPECT_EQ(log->progress, std::vector<double>{0.5});
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(FileSaver, ATransferThatStopsLeavesWhatItGot) {
    saver.progress = {[](void* context, std::uint64_t done, std::uint64_t) {
                          static_cast<WatchedDisk*>(context)->full = done == 8;
                      },
                      &disk};
    EXPECT_EQ(transfer("0123456789ab"), 0);
    EXPECT_EQ(content(), "01234567");
    EXPECT_FALSE(saver.file);
}

TEST_F(FileSaver, TheEndClosesTheFile) {
    EXPECT_TRUE(saver.beginReceive(3));
    EXPECT_EQ(disk.open, 1);
    saver.endReceive();
    EXPECT_EQ(disk.open, 0);
    EXPECT_FALSE(saver.file);
    saver.endReceive();
    EXPECT_EQ(disk.open, 0);
}

TEST_F(FileSaver, ItsOwnEndClosesTheFileAndLetsTheLogGo) {
    {
        Saver other(L"/other", LoggerHandle(log));
        EXPECT_TRUE(other.beginReceive(3));
        EXPECT_EQ(disk.open, 1);
    }
    EXPECT_EQ(disk.open, 0);
    EXPECT_EQ(log->refCount().owners, 2U); // the test's own and that of the saver beside it
}

TEST_F(FileSaver, WithoutALogItWritesAllTheSame) {
    Saver silent(target, LoggerHandle());
    EXPECT_TRUE(silent.beginReceive(3));
    EXPECT_TRUE(silent.receiveData(0, block("abc")));
    silent.endReceive();
    EXPECT_EQ(content(), "abc");
}

TEST_F(FileSaver, AnEmptyBlockIsABlock) {
    EXPECT_TRUE(saver.beginReceive(4));
    EXPECT_TRUE(saver.receiveData(0, block("")));
    EXPECT_EQ(disk.written, std::vector<std::uint32_t>{0});
    EXPECT_EQ(log->progress, std::vector<double>{0.0});
}

TEST_F(FileSaver, ABlockWithoutAnOpenFileStopsTheTransfer) {
    EXPECT_FALSE(saver.receiveData(0, block("abc")));
    EXPECT_TRUE(saver.beginReceive(3));
    EXPECT_FALSE(saver.receiveData(0, {}));
    saver.endReceive();
    EXPECT_FALSE(saver.receiveData(0, block("abc")));
    EXPECT_EQ(content(), "");
}

TEST_F(FileSaver, BytesOfEveryKindPass) {
    std::string bytes;
    for (int i = 0; i < 1024; ++i) {
        bytes += static_cast<char>(i);
    }
    EXPECT_EQ(transfer(bytes), 200);
    EXPECT_EQ(content(), bytes);
}

} // namespace
} // namespace repository_tests
