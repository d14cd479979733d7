// Stores on disk: damaged ones, those of other processes, and what goes when there is too much.

#include <fstream>

#include "host/engine/streaming/Crc32c.h"
#include "host/engine/streaming/DiskBlockStore.h"
#include "host/engine/streaming/MemoryBlockStore.h"
#include "tests/engine/local/OtherProcess.h"
#include "tests/engine/streaming/StreamingFixture.h"

namespace {

using test::same;

class StreamStore : public test::StreamingFixture {
protected:
    StreamStore() : bytes(test::mediaBytes(2 * mib + 5, 8)) { media.put("/clip.mov", {bytes}); }
    void damage(std::filesystem::path const& path, std::uint64_t place) {
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(place));
        file << "damaged";
    }

    std::string const bytes;
};

TEST(Crc32c, TheValuesOfTheStandardComeOut) {
    EXPECT_EQ(engine::crc32c("123456789"), 0xe3069283u);
    EXPECT_EQ(engine::crc32c(std::string(32, '\0')), 0x8a9136aau);
    EXPECT_EQ(engine::crc32c(std::string(32, '\xff')), 0x62a8ab43u);
    EXPECT_EQ(engine::crc32c(""), 0u);
}

TEST(StoreHeader, WhatIsWrittenIsRead) {
    engine::StoreHeader header;
    header.remoteName = "/7_main_xl.mp4";
    header.identity = std::string(64, 'a');
    header.content = {123'456'789, {engine::Validator::Kind::strongETag, "\"tag\""}, false};
    header.generation = 3;
    header.validatedAt_s = 1'700'000'000;
    header.indexInFront = true;
    std::string bytes = header.encode();
    ASSERT_EQ(bytes.size(), engine::StoreHeader::size_bytes);
    auto const read = engine::StoreHeader::decode(bytes);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->remoteName, header.remoteName);
    EXPECT_EQ(read->identity, header.identity);
    EXPECT_TRUE(read->content.isSameFile(header.content));
    EXPECT_FALSE(read->content.ranges);
    EXPECT_EQ(read->generation, 3u);
    EXPECT_EQ(read->validatedAt_s, 1'700'000'000);
    EXPECT_TRUE(read->indexInFront);
    for (std::size_t const place : {0u, 8u, 20u, 100u, 4095u}) {
        std::string damaged = bytes;
        damaged[place] = static_cast<char>(damaged[place] ^ 1);
        EXPECT_FALSE(engine::StoreHeader::decode(damaged)) << place;
    }
    EXPECT_FALSE(engine::StoreHeader::decode(bytes.substr(1)));
}

TEST(MemoryBlockStore, KeepsNoMoreThanItsBound) {
    engine::MemoryBlockStore store(4 * engine::block_bytes);
    for (std::uint64_t block = 0; block < 100; ++block) {
        EXPECT_TRUE(store.put(block, std::string(engine::block_bytes, 'x')));
    }
    std::vector<bool> const present = store.presence(0, 100);
    EXPECT_EQ(std::ranges::count(present, true), 4);
    EXPECT_TRUE(present[99] && present[96]);
}

TEST_F(StreamStore, ATornBlockCountsAsAbsent) {
    ASSERT_TRUE(same(readAll(open("clip.mov")), bytes));
    restart();
    damage(cachePath(), mib + 3);
    damage(cachePath(), 2 * mib);
    std::size_t const before = media.requests().size();
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    EXPECT_GT(media.requests().size(), before);
    restart();
    std::size_t const mended = media.requests().size();
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    EXPECT_EQ(media.requests().size(), mended);
}

TEST_F(StreamStore, ADamagedOrCutIndexCostsTheBlocksAlone) {
    for (std::uint64_t const place : {std::uint64_t{0}, std::uint64_t{60}, std::uint64_t{4096 + 8}}) {
        ASSERT_TRUE(same(readAll(open("clip.mov")), bytes));
        restart();
        damage(cachePath("clip.partial.idx"), place);
        EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
        restart();
    }
    std::filesystem::resize_file(cachePath("clip.partial.idx"), 4096 + 10);
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    restart();
    std::filesystem::resize_file(cachePath(), 100'000);
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    restart();
    std::filesystem::remove(cachePath());
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
}

TEST_F(StreamStore, AStoreThatIsCutWhileItIsOpenIsFetchedAgain) {
    auto const file = open("clip.mov");
    ASSERT_TRUE(same(readAll(file), bytes));
    std::filesystem::resize_file(cachePath(), 0);
    EXPECT_TRUE(same(readAll(file), bytes));
}

TEST_F(StreamStore, WhatWasCutIsNotServedAsZerosAfterALaterBlockCame) {
    engine::StoreHeader header;
    header.content.total_bytes = 4 * engine::block_bytes;
    auto const store = engine::DiskBlockStore::open(cachePath());
    ASSERT_TRUE(store && store->reset(header));
    std::string const block(engine::block_bytes, 'x');
    ASSERT_TRUE(store->put(0, block));
    std::filesystem::resize_file(cachePath(), 0);
    ASSERT_TRUE(store->put(2, block));
    std::string got(engine::block_bytes, '\0');
    EXPECT_EQ(store->read(0, got), 0u);
    EXPECT_EQ(store->read(2 * engine::block_bytes, got), got.size());
    EXPECT_TRUE(same(got, block));
}

TEST_F(StreamStore, AnotherFileLeavesAStoreAloneWhoseIndexWasRemovedWhileItIsOpen) {
    std::string const other = test::mediaBytes(bytes.size(), 99);
    media.put("/other.mov", {other});
    auto const file = open("clip.mov");
    ASSERT_TRUE(same(readAll(file), bytes));
    std::filesystem::remove(cachePath("clip.partial.idx"));
    EXPECT_TRUE(same(readAll(open("other.mov")), other));
    EXPECT_TRUE(same(readAll(file), bytes));
}

TEST(StoreHeader, AValidatorThatNoServerCanHaveSentIsNotRead) {
    engine::StoreHeader header;
    header.content = {1, {engine::Validator::Kind::strongETag, "\"a\"\r\nX: \"b\""}, true};
    EXPECT_FALSE(engine::StoreHeader::decode(header.encode()));
    header.content.validator.text = "\"a\"";
    EXPECT_TRUE(engine::StoreHeader::decode(header.encode()));
}

TEST_F(StreamStore, FilesOfAnotherProgramAreNotRemoved) {
    for (char const* const name : {"else.partial", "else.partial.idx"}) {
        std::ofstream(cachePath(name)) << std::string(10'000, 'p');
    }
    limit_bytes = 1;
    ASSERT_TRUE(same(readAll(open("clip.mov")), bytes));
    restart();
    EXPECT_TRUE(std::filesystem::exists(cachePath("else.partial")));
    EXPECT_TRUE(std::filesystem::exists(cachePath("else.partial.idx")));
}

TEST_F(StreamStore, ALinkInTheStoresPlaceIsNotFollowed) {
    std::filesystem::path const victim = folder.path() / "victim";
    std::ofstream(victim) << "precious";
    std::filesystem::create_symlink(victim, cachePath());
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    EXPECT_EQ(std::filesystem::file_size(victim), 8u);
}

TEST_F(StreamStore, TheFilesOnDiskAreSparse) {
    ASSERT_TRUE(same(read(open("clip.mov"), 0, 64 * kib), bytes.substr(0, 64 * kib)));
    restart();
    EXPECT_EQ(std::filesystem::file_size(cachePath()), bytes.size());
    EXPECT_EQ(std::filesystem::file_size(cachePath("clip.partial.idx")), 4096 + 4 * 65u);
}

TEST_F(StreamStore, ASecondProcessReadsWithoutTheStore) {
    test::OtherProcess other({"hold", media.name(), "clip.mov", cachePath().string()});
    ASSERT_EQ(other.readLine(), "open");
    std::size_t const before = media.requests().size();
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    EXPECT_GT(media.requests().size(), before);
    other.kill();
    (void)other.wait();
    restart();
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
    EXPECT_GT(streams().statistics().bytesFromStore, 0u);
}

TEST_F(StreamStore, WhatWasUsedLongestAgoGoesFirstAndWhatIsOpenNever) {
    limit_bytes = 5 * mib;
    for (char const* const name : {"a.partial", "b.partial"}) {
        ASSERT_TRUE(same(readAll(open("clip.mov", name)), bytes));
        restart();
    }
    auto const held = open("clip.mov", "a.partial"); // used again, and open
    ASSERT_TRUE(same(readAll(held), bytes));
    ASSERT_TRUE(same(readAll(open("clip.mov", "c.partial")), bytes));
    restart();
    EXPECT_TRUE(std::filesystem::exists(cachePath("a.partial")));
    EXPECT_FALSE(std::filesystem::exists(cachePath("b.partial")));
    EXPECT_FALSE(std::filesystem::exists(cachePath("b.partial.idx")));
    EXPECT_TRUE(std::filesystem::exists(cachePath("c.partial")));
    limit_bytes = 1;
    ASSERT_TRUE(same(readAll(open("clip.mov", "d.partial")), bytes));
    restart();
    EXPECT_TRUE(std::filesystem::exists(cachePath("a.partial")));
    EXPECT_FALSE(std::filesystem::exists(cachePath("c.partial")));
}

TEST_F(StreamStore, ALostOrDamagedCatalogueIsMadeAnewFromTheFolder) {
    ASSERT_TRUE(same(readAll(open("clip.mov", "a.partial")), bytes));
    restart();
    for (char const* const part : {"catalogue-wal", "catalogue-shm"}) {
        std::filesystem::remove(folder.path() / part);
    }
    std::ofstream(folder.path() / "catalogue") << std::string(5000, 'x');
    limit_bytes = 3 * mib;
    ASSERT_TRUE(same(readAll(open("clip.mov", "b.partial")), bytes));
    restart();
    EXPECT_FALSE(std::filesystem::exists(cachePath("a.partial")));
    EXPECT_TRUE(std::filesystem::exists(cachePath("b.partial")));
}

} // namespace
