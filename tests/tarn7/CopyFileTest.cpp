#include "host/os/OS.h"
#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

using CopyResult = iFileManager::eCopyRC;

constexpr wchar_t preview[] = L"Virtual:T7 https://cdn.test/p/000000123.mov";
constexpr wchar_t target[] = L"/out/a.mov";

class CopyFile : public Tarn7Test {
protected:
    CopyResult copy(bool overwrite = false, iFileManager::ProgressCallback progress = {}) {
        return resource.copyFile(preview, target, overwrite, progress);
    }
    // The content of the target, or "none".
    [[nodiscard]] std::string written() const {
        auto const found = host.files.disk->files.find(target);
        return found != host.files.disk->files.end() ? found->second : "none";
    }
};

TEST_F(CopyFile, TheFileThatWouldOpenIsWrittenToTheDestination) {
    host.streams.put("cdn.test", "000000123_prev_264.mov", "small");
    EXPECT_EQ(copy(), iFileManager::eCopied);
    EXPECT_EQ(written(), "small");
    host.streams.put("cdn.test", "000000123_main_xl.mp4", "large");
    EXPECT_EQ(copy(true), iFileManager::eCopied);
    EXPECT_EQ(written(), "large");
    EXPECT_EQ(host.streams.openCount(), 0);
}

TEST_F(CopyFile, ASourceThatDoesNotOpenIsOne) {
    EXPECT_EQ(static_cast<int>(resource.copyFile(L"/a.mov", target, true, {})), 1);
    host.streams.refuse("000000123_main_xl.mp4");
    host.streams.refuse("000000123_prev_264.mov");
    EXPECT_EQ(static_cast<int>(copy(true)), 1);
    EXPECT_EQ(written(), "none");
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(CopyFile, ASourceThatDoesNotStreamIsOne) {
    class Local : public TestResource {
    public:
        Zq::Ptr<iFile> openFile(WideString const&, int access, int sharing, int hint, int further) override {
            asked = {access, sharing, hint, further};
            return OS().fileManager().openForWrite(L"/plain", 2, 1, 0, 0);
        }
        std::vector<int> asked;
    } local;
    EXPECT_EQ(static_cast<int>(local.copyFile(preview, target, true, {})), 1);
    EXPECT_EQ(local.asked, (std::vector<int>{1, 0, 1, 0}));
    EXPECT_EQ(written(), "none");
}

TEST_F(CopyFile, WhetherAnOldFileGivesWayIsPassedOn) {
    host.streams.put("cdn.test", "000000123_main_xl.mp4", "large");
    host.files.disk->files[target] = "old";
    EXPECT_EQ(copy(false), iFileManager::eDestinationNotWritten);
    EXPECT_EQ(written(), "old");
    EXPECT_EQ(copy(true), iFileManager::eCopied);
    EXPECT_EQ(written(), "large");
}

TEST_F(CopyFile, TheReceiverOfProgressIsPassedOn) {
    host.streams.put("cdn.test", "000000123_main_xl.mp4", "large");
    std::vector<std::uint64_t> told;
    auto const tell = [](void* context, std::uint64_t done, std::uint64_t total) {
        *static_cast<std::vector<std::uint64_t>*>(context) = {done, total};
    };
    EXPECT_EQ(copy(false, {tell, &told}), iFileManager::eCopied);
    EXPECT_EQ(told, (std::vector<std::uint64_t>{5, 5}));
}

TEST_F(CopyFile, TheResultOfTheTransferIsPassedOn) {
    host.streams.put("cdn.test", "000000123_main_xl.mp4", "large");
    host.tasks.status = iBackgroundTask::eCancelling;
    EXPECT_EQ(copy(), iFileManager::eCancelled);
    host.tasks.status = iBackgroundTask::eRunning;
    host.files.refuseWriting = true;
    EXPECT_EQ(copy(), iFileManager::eDestinationNotWritten);
    EXPECT_EQ(written(), "none");
}

TEST_F(CopyFile, TheFileLayerCopiesAVirtualPathThroughTheClient) {
    host.streams.put("cdn.test", "000000123_main_xl.mp4", "large");
    EXPECT_EQ(host.files.copyFile(preview, target, false, {}), iFileManager::eCopied);
    EXPECT_EQ(written(), "large");
}

} // namespace
} // namespace tarn7_tests
