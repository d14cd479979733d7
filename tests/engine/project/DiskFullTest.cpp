#include <csignal>

#include <sys/resource.h>

#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using enum Zq::FrameRate;
using testing::IsEmpty;
using testing::StartsWith;

// No file of this process grows beyond the size, as on a disk that is full, while this stands.
class FullDisk {
public:
    explicit FullDisk(std::uintmax_t size_bytes) : ignored_(::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = size_bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        ::signal(SIGXFSZ, ignored_);
    }
    FullDisk(FullDisk const&) = delete;
    FullDisk& operator=(FullDisk const&) = delete;

private:
    rlimit before_{};
    void (*ignored_)(int);
};

class DiskFull : public ProjectTest {
protected:
    // The project's writes go to the log beside it, which has grown larger than the memory map by then.
    [[nodiscard]] std::uintmax_t present() {
        for (std::uint8_t number = 200; std::filesystem::file_size(file().native() + "-wal") < 70'000;
             ++number) {
            makeKeptClip(number, L"filling");
        }
        return std::filesystem::file_size(file().native() + "-wal");
    }
};

TEST_F(DiskFull, WhatCannotBeWrittenIsRefusedAndLeavesAllAsItWas) {
    Cookie const clip = makeClip(1, L"temporary");
    Cookie const placed = makeClip(2, L"placed");
    WideString const media = makeMedia("a.mov", facts(f25, 250));
    ASSERT_TRUE(project().place("S", placed, {}, {}));
    std::size_t const edits = [&] {
        (void)present();
        return project().edits().size();
    }();
    {
        FullDisk const full(present());
        for (std::string const& error :
             {project().place("S", clip, {}, {}).error(), project().place("new", placed, {}, {}).error(),
              project().relink(placed, media).error(), project().relink(clip, media).error(),
              project().undo().error()}) {
            EXPECT_THAT(error, StartsWith("the project cannot be written: "));
        }
        EditPtr(project().open(placed))->setLogAttributes(named(L"renamed"));
        EditPtr(project().open(clip))->setTemporary(false);
        project().associate(placed, L"T7", L"1");
        EXPECT_EQ(log.count("renamed: its changes are not kept: "), 1);
        EXPECT_EQ(log.count("temporary: its changes are not kept: "), 1);
        EXPECT_EQ(log.count("is not kept: "), 1);

        EXPECT_EQ(project().edits().size(), edits);
        EXPECT_EQ(project().sequenceNames(), std::vector<std::string>{"S"});
        EXPECT_EQ(project().sequence("S").value().placements.size(), 1U);
        EXPECT_TRUE(mediaOf(placed).isEmpty());
        EXPECT_EQ(project().edit(placed).value().name(), L"placed");
        EXPECT_EQ(project().edit(clip).value().name(), L"temporary");
        EXPECT_TRUE(project().edit(clip).value().temporary);
        EXPECT_TRUE(project().find(placed, L"T7").isEmpty());
    }
    ASSERT_TRUE(project().place("S", clip, {}, {}));
    ASSERT_TRUE(project().relink(placed, media));
    reopen();
    EXPECT_EQ(project().sequence("S").value().placements.size(), 2U);
    EXPECT_EQ(mediaOf(placed), media);
    EXPECT_EQ(*project().undo(), "relinking \"placed\"");
    EXPECT_EQ(*project().undo(), "placing \"temporary\" in \"S\"");
    EXPECT_EQ(*project().undo(), "placing \"placed\" in \"S\"");
    EXPECT_FALSE(project().undo());
}

TEST_F(DiskFull, AGoodFileIsNotSetAsideBecauseTheProjectIsFull) {
    Cookie const clip = makeClip(1, L"x");
    WideString const media = makeMedia("a.mov", facts(f25, 250));
    std::uintmax_t const size = present();
    FullDisk const full(size);
    EditPtr const edit(project().open(clip));
    EXPECT_FALSE(project().useMedia(*edit, media));
    EXPECT_TRUE(std::filesystem::exists(engine::localPath(media)));
}

TEST_F(DiskFull, AProjectThatCannotBeMadeIsAFailureAndTheNextTryMakesIt) {
    std::filesystem::path const fresh = folder.path() / "fresh.sqlite";
    {
        FullDisk const full(4096);
        auto const opened = engine::Project::open(fresh, nullptr);
        ASSERT_FALSE(opened);
        EXPECT_THAT(opened.error(), testing::HasSubstr("cannot be opened"));
    }
    auto const opened = engine::Project::open(fresh, nullptr);
    ASSERT_TRUE(opened) << opened.error();
    EXPECT_TRUE((*opened)->canWrite());
    EXPECT_EQ(log.count("damaged"), 0);
}

} // namespace
} // namespace test
