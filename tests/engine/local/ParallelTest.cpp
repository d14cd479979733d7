// The services that several threads use at once.
#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include "host/engine/files/DiskCache.h"
#include "host/engine/files/LocalFileManager.h"
#include "host/engine/files/LocalPath.h"
#include "host/engine/log/SpdlogSink.h"
#include "host/engine/os/TaskContext.h"
#include "host/engine/preferences/SqlitePreferences.h"
#include "host/modules/ZqComponentBase.h"
#include "host/text/Unicode.h"
#include "repository/iFileProvider.h"
#include "tests/engine/local/Bytes.h"
#include "tests/support/TemporaryFolder.h"

namespace {

void together(int count, std::function<void(int)> const& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(Parallel, PreferencesLoseNoWriteOfAnyThread) {
    test::TemporaryFolder const folder;
    engine::SqlitePreferences store(folder.path() / "preferences.sqlite");
    engine::SqlitePreferences other(folder.path() / "preferences.sqlite");
    together(4, [&](int number) {
        std::string const key = "key " + std::to_string(number);
        for (std::int32_t i = 1; i <= 20; ++i) {
            (number % 2 == 0 ? store : other).write(key.c_str(), i);
            (void)store.readInt("key 0");
            (void)other.revision();
        }
    });
    for (int number = 0; number < 4; ++number) {
        std::string const key = "key " + std::to_string(number);
        EXPECT_EQ(store.readInt(key.c_str()), 20);
        EXPECT_EQ(other.readInt(key.c_str()), 20);
    }
}

TEST(Parallel, ACacheThatIsTooSmallStillGivesWholeEntries) {
    test::TemporaryFolder const folder;
    engine::DiskCache cache(folder.path(), 20'000);
    together(4, [&](int number) {
        for (int i = 0; i < 100; ++i) {
            WideString const key = fromUTF8(std::string_view("key " + std::to_string((i + number) % 40)));
            std::string const bytes(1000, static_cast<char>('a' + number));
            EXPECT_FALSE(cache.store(key, bytes.data(), bytes.size()).isEmpty());
            WideString const path = cache.find(key);
            std::string const found =
                path.isEmpty() ? std::string() : test::readBytes(engine::localPath(path));
            if (!found.empty()) {
                EXPECT_EQ(found, std::string(1000, found.front()));
            }
        }
    });
}

TEST(Parallel, LogLinesStayWhole) {
    test::TemporaryFolder const folder;
    {
        engine::SpdlogSink sink(folder.path());
        together(4, [&](int number) {
            for (int i = 0; i < 100; ++i) {
                sink.write("line of " + std::to_string(number) + " end");
            }
        });
    }
    std::istringstream lines(test::readBytes(folder.path() / "host.log"));
    int count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
        EXPECT_NE(line.find("line of "), std::string::npos);
        EXPECT_TRUE(line.ends_with(" end"));
    }
    EXPECT_EQ(count, 400);
}

class Provider : public iFileProvider, public ZqComponentBase {
public:
    Zq::Ptr<iFile> openFile(WideString const&, int, int, int, int) override { return {}; }
    bool handlesFile(WideString const&) const override { return true; }
    iFileManager::eCopyRC copyFile(WideString const&, WideString const&, bool,
                                   iFileManager::ProgressCallback) override {
        return iFileManager::eSourceNotOpened;
    }
    WideString getProviderName() const override { return L"T7"; }
    WideString mapPath(WideString const& path) const override { return path; }
    bool isRemote() const override { return true; }
    WideString mapPathForReading(WideString const& path) const override { return path; }
    WideString mapPathForWriting(WideString const& path) const override { return path; }
};

TEST(Parallel, ProvidersComeAndGoWhileOthersLookForThem) {
    test::TemporaryFolder const folder;
    engine::LocalFileManager files(L"host", folder.path() / "journal");
    Zq::Ptr<Provider> const provider = Zq::makeShared<Provider>();
    together(4, [&](int number) {
        for (int i = 0; i < 500; ++i) {
            if (number == 0) {
                files.registerProvider(*provider);
                files.forgetProvidersOf(*provider);
            } else {
                iFileProvider* const found = files.findProvider(L"Virtual:T7 a");
                EXPECT_TRUE(found == nullptr || found == provider.get());
            }
        }
    });
    EXPECT_EQ(files.findProvider(L"Virtual:T7 a"), nullptr);
}

TEST(Parallel, FilesThatAreWrittenSideBySideLeaveNoNotes) {
    test::TemporaryFolder const folder;
    engine::LocalFileManager files(L"host", folder.path() / "journal");
    together(4, [&](int number) {
        for (int i = 0; i < 5; ++i) {
            WideString const path =
                engine::wideText(folder.path() / (std::to_string(number) + "-" + std::to_string(i)));
            Zq::Ptr<iFile> const file = files.openForWrite(path, 2, 1, 0, 0);
            ASSERT_TRUE(file);
            EXPECT_TRUE(file->write("bytes", 5));
            EXPECT_TRUE(files.journal().removeUnfinished().empty());
        }
    });
    EXPECT_TRUE(files.journal().removeUnfinished().empty());
}

TEST(Parallel, ATaskIsCancelledFromAnotherThread) {
    engine::TaskState state;
    engine::TaskContext context;
    std::thread worker([&] {
        engine::ScopedTask const task(state);
        while (context.currentTaskStatus() != iBackgroundTask::eCancelling) {
            std::this_thread::yield();
        }
    });
    state.cancel();
    worker.join();
    EXPECT_EQ(state.status(), iBackgroundTask::eCancelling);
}

} // namespace
