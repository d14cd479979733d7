#include "host/engine/files/DiskCache.h"

#include <gtest/gtest.h>

#include <chrono>

#include "host/engine/crypto/Digest.h"
#include "host/engine/files/LocalPath.h"
#include "host/text/Unicode.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/OtherProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace {

class DiskCache : public testing::Test {
protected:
    static WideString store(engine::DiskCache& cache, std::string const& key, std::string const& bytes) {
        return cache.store(fromUTF8(std::string_view(key)), bytes.data(), bytes.size());
    }
    static WideString find(engine::DiskCache& cache, std::string const& key) {
        return cache.find(fromUTF8(std::string_view(key)));
    }
    [[nodiscard]] std::filesystem::path fetched() const { return folder_.path() / "fetched"; }
    // Makes the entry look as if it was used that many hours ago.
    static void age(WideString const& path, int hours) {
        std::filesystem::last_write_time(engine::localPath(path),
                                         std::filesystem::file_time_type::clock::now() -
                                             std::chrono::hours(hours));
    }
    [[nodiscard]] std::uintmax_t total() const {
        std::uintmax_t bytes = 0;
        for (auto const& entry : std::filesystem::directory_iterator(fetched())) {
            bytes += entry.file_size();
        }
        return bytes;
    }

    test::TemporaryFolder folder_;
};

TEST_F(DiskCache, WhatWasStoredIsFoundUnderItsKeyAlone) {
    engine::DiskCache cache(folder_.path(), 1 << 20);
    WideString const path = store(cache, "https://a.example/1.jpg", "bytes");
    EXPECT_EQ(test::readBytes(engine::localPath(path)), "bytes");
    EXPECT_EQ(find(cache, "https://a.example/1.jpg"), path);
    EXPECT_TRUE(find(cache, "https://a.example/2.jpg").isEmpty());
}

TEST_F(DiskCache, TheNextProgramFindsItToo) {
    { ASSERT_FALSE(engine::DiskCache(folder_.path(), 1 << 20).store(L"key", "bytes", 5).isEmpty()); }
    engine::DiskCache cache(folder_.path(), 1 << 20);
    EXPECT_FALSE(cache.find(L"key").isEmpty());
}

TEST_F(DiskCache, StoringAgainReplacesTheBytes) {
    engine::DiskCache cache(folder_.path(), 1 << 20);
    store(cache, "key", "old and longer");
    WideString const path = store(cache, "key", "new");
    EXPECT_EQ(test::readBytes(engine::localPath(path)), "new");
    EXPECT_EQ(total(), 3U);
}

TEST_F(DiskCache, AHostileKeyBecomesAPlainNameInTheFolder) {
    engine::DiskCache cache(folder_.path(), 1 << 20);
    for (std::string const& key :
         {std::string("../../etc/passwd"), std::string("/etc/passwd"), std::string(), std::string("a\0b", 3),
          std::string(100'000, 'x'), std::string("\n; rm -rf ~")}) {
        std::filesystem::path const path = engine::localPath(store(cache, key, "bytes"));
        EXPECT_EQ(path.parent_path(), fetched());
        EXPECT_EQ(path.filename(), engine::sha256Hex(toUTF8(fromUTF8(std::string_view(key))).view()));
    }
}

TEST_F(DiskCache, WhatWasUsedLongestAgoGoesFirst) {
    engine::DiskCache cache(folder_.path(), 3000);
    std::string const bytes(1000, 'x');
    age(store(cache, "oldest", bytes), 3);
    age(store(cache, "middle", bytes), 2);
    age(store(cache, "newest", bytes), 1);
    EXPECT_FALSE(find(cache, "oldest").isEmpty()) << "which counts as a use";
    store(cache, "one more", bytes);
    EXPECT_TRUE(find(cache, "middle").isEmpty());
    EXPECT_FALSE(find(cache, "oldest").isEmpty());
    EXPECT_FALSE(find(cache, "one more").isEmpty());
    EXPECT_LE(total(), 3000U);
}

TEST_F(DiskCache, TheFolderNeverGrowsBeyondItsBound) {
    engine::DiskCache cache(folder_.path(), 10'000);
    for (int i = 0; i < 200; ++i) {
        store(cache, std::to_string(i), std::string(static_cast<std::size_t>(100 + i * 7), 'x'));
        ASSERT_LE(total(), 10'000U);
    }
    EXPECT_FALSE(find(cache, "199").isEmpty());
}

TEST_F(DiskCache, WhatAnEarlierProgramLeftCountsTowardsTheBound) {
    {
        engine::DiskCache before(folder_.path(), 100'000);
        for (int i = 0; i < 50; ++i) {
            age(store(before, std::to_string(i), std::string(1000, 'x')), 1);
        }
    }
    engine::DiskCache cache(folder_.path(), 5000);
    store(cache, "new", "bytes");
    EXPECT_LE(total(), 5000U);
    EXPECT_FALSE(find(cache, "new").isEmpty());
}

TEST_F(DiskCache, NothingAndTooMuchAreNotStored) {
    engine::DiskCache cache(folder_.path(), 1000);
    store(cache, "kept", "bytes");
    EXPECT_TRUE(store(cache, "empty", "").isEmpty());
    EXPECT_TRUE(store(cache, "large", std::string(1001, 'x')).isEmpty());
    EXPECT_TRUE(find(cache, "empty").isEmpty());
    EXPECT_TRUE(find(cache, "large").isEmpty());
    EXPECT_FALSE(find(cache, "kept").isEmpty());
}

TEST_F(DiskCache, AnEntryThatAPowerCutEmptiedIsNoEntry) {
    engine::DiskCache cache(folder_.path(), 1 << 20);
    std::filesystem::resize_file(engine::localPath(store(cache, "key", "bytes")), 0);
    EXPECT_TRUE(find(cache, "key").isEmpty());
}

TEST_F(DiskCache, ForeignFilesInTheFolderAreLeftAlone) {
    engine::DiskCache cache(folder_.path(), 1000);
    test::writeBytes(fetched() / "notes.txt", std::string(5000, 'x'));
    store(cache, "a", std::string(600, 'x'));
    store(cache, "b", std::string(600, 'x'));
    EXPECT_TRUE(std::filesystem::exists(fetched() / "notes.txt"));
    EXPECT_TRUE(find(cache, "a").isEmpty());
    EXPECT_FALSE(find(cache, "b").isEmpty());
}

TEST_F(DiskCache, WhatAKilledProgramLeftUnfinishedGoesInTime) {
    engine::DiskCache cache(folder_.path(), 1000);
    test::writeBytes(fetched() / ".unfinished-old", "half");
    test::writeBytes(fetched() / ".unfinished-new", "half");
    std::filesystem::last_write_time(fetched() / ".unfinished-old",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(2));
    store(cache, "a", "bytes");
    EXPECT_FALSE(std::filesystem::exists(fetched() / ".unfinished-old"));
    EXPECT_TRUE(std::filesystem::exists(fetched() / ".unfinished-new")) << "its writer may live";
}

TEST_F(DiskCache, TwoProcessesKeepTheBoundTogether) {
    engine::DiskCache cache(folder_.path(), 50'000);
    test::OtherProcess other({"cache", folder_.path(), "50000", "theirs", "200"});
    for (int i = 0; i < 200; ++i) {
        ASSERT_FALSE(store(cache, "ours" + std::to_string(i), std::string(1000, 'y')).isEmpty());
    }
    ASSERT_EQ(other.wait(), 0);
    store(cache, "last", std::string(1000, 'y'));
    // Each process looks again at the latest after a sixteenth of the bound.
    EXPECT_LE(total(), 50'000U + 50'000U / 16 + 1000U);
    for (auto const& entry : std::filesystem::directory_iterator(fetched())) {
        EXPECT_EQ(entry.file_size(), 1000U) << "an entry is whole or not there";
    }
}

TEST_F(DiskCache, TheFolderForPartsExists) {
    engine::DiskCache cache(folder_.path(), 1000);
    EXPECT_EQ(cache.partialFolder(), engine::wideText(folder_.path() / "partial"));
    EXPECT_TRUE(std::filesystem::is_directory(folder_.path() / "partial"));
}

TEST_F(DiskCache, WithoutAFolderToWriteToNothingIsFoundAndNothingIsStored) {
    test::writeBytes(folder_.path() / "file", "");
    engine::DiskCache cache(folder_.path() / "file", 1000);
    EXPECT_TRUE(store(cache, "key", "bytes").isEmpty());
    EXPECT_TRUE(find(cache, "key").isEmpty());
    EXPECT_TRUE(cache.partialFolder().isEmpty());
}

} // namespace
