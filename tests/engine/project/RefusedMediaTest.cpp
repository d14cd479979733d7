#include <filesystem>
#include <fstream>

#include "host/engine/files/WholeFile.h"
#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

using enum Zq::FrameRate;
namespace fs = std::filesystem;

class RefusedMedia : public ProjectTest {
protected:
    bool use(Cookie const& clip, WideString const& path) {
        EditPtr const edit(project().open(clip));
        return project().useMedia(*edit, path);
    }
    // How many files the folder has whose names begin so.
    std::ptrdiff_t countOf(std::string const& prefix) {
        return std::distance(begin(fs::directory_iterator(folder.path())), end(fs::directory_iterator())) -
               std::ranges::count_if(fs::directory_iterator(folder.path()), [&prefix](auto const& entry) {
                   return !entry.path().filename().native().starts_with(prefix);
               });
    }
};

TEST_F(RefusedMedia, AGoodFileIsUsed) {
    Cookie const clip = makeClip(1, L"x");
    WideString const path = makeMedia("good.mov", facts(f25, 250));
    EXPECT_TRUE(use(clip, path));
    EXPECT_EQ(mediaOf(clip), path);
    EXPECT_TRUE(*project().lastRelink(clip));
    EXPECT_EQ(countOf("good.mov"), 1);
}

TEST_F(RefusedMedia, IsSetAsideSoThatItIsFetchedAnew) {
    Cookie const clip = makeClip(1, L"x");
    WideString const path = makeFile("bad.mov");

    EXPECT_FALSE(use(clip, path));

    EXPECT_FALSE(fs::exists(engine::localPath(path)));
    EXPECT_EQ(engine::readWholeFile(folder.path() / "bad.mov.refused", 100), "bytes of bad.mov");
    EXPECT_TRUE(mediaOf(clip).isEmpty());
    EXPECT_EQ(log.count("A media file is not used: "), 1);
    EXPECT_EQ(log.count("bad.mov.refused"), 1);
    EXPECT_EQ(project().lastRelink(clip)->error(),
              engine::localPath(path).native() + ": no decoder opens it");
}

TEST_F(RefusedMedia, EveryRefusedFileIsKeptUnderANameOfItsOwn) {
    Cookie const clip = makeClip(1, L"x");
    for (int i = 0; i < 3; ++i) {
        WideString const path = makeFile("bad.mov");
        std::ofstream(engine::localPath(path), std::ios::app) << i;
        EXPECT_FALSE(use(clip, path));
    }
    EXPECT_EQ(engine::readWholeFile(folder.path() / "bad.mov.refused", 100), "bytes of bad.mov0");
    EXPECT_EQ(engine::readWholeFile(folder.path() / "bad.mov.refused-2", 100), "bytes of bad.mov1");
    EXPECT_EQ(engine::readWholeFile(folder.path() / "bad.mov.refused-3", 100), "bytes of bad.mov2");
}

TEST_F(RefusedMedia, AFileThatIsTheEditsPreviewAsWellStaysWhereItsOwnerPutIt) {
    Cookie const clip = makeClip(1, L"x");
    WideString const path = makeFile("own.mov");
    EditPtr(project().open(clip))->setPreviewLocation(path);

    EXPECT_FALSE(use(clip, path));

    EXPECT_EQ(countOf("own.mov"), 1);
    EXPECT_TRUE(fs::exists(engine::localPath(path)));
    EXPECT_EQ(log.count("A media file is not used: "), 1);
}

TEST_F(RefusedMedia, WhatIsNoRegularFileStays) {
    Cookie const clip = makeClip(1, L"x");
    fs::create_directory(folder.path() / "folder.mov");
    fs::create_symlink(folder.path() / "folder.mov", folder.path() / "link.mov");
    for (char const* const name : {"folder.mov", "link.mov", "missing.mov"}) {
        EXPECT_FALSE(use(clip, engine::wideText(folder.path() / name)));
    }
    EXPECT_FALSE(use(clip, L"Virtual:T7 https://host/a.mov"));
    EXPECT_TRUE(fs::is_directory(folder.path() / "folder.mov"));
    EXPECT_TRUE(fs::is_symlink(folder.path() / "link.mov"));
    EXPECT_EQ(countOf("link.mov"), 1);
    EXPECT_EQ(countOf("folder.mov"), 1);
    EXPECT_EQ(countOf("missing.mov"), 0);
}

TEST_F(RefusedMedia, AFileThatTheProjectCouldNotRecordStaysForTheNextTime) {
    Cookie const clip = makeKeptClip(1, L"x");
    WideString const good = makeMedia("good.mov", facts(f25, 250));
    WideString const bad = makeFile("bad.mov");
    auto const reader = openAnother();
    EditPtr const edit(reader->open(clip));

    EXPECT_FALSE(reader->useMedia(*edit, good));
    EXPECT_FALSE(reader->useMedia(*edit, bad));

    EXPECT_EQ(countOf("good.mov"), 1);
    EXPECT_TRUE(fs::exists(engine::localPath(good)));
    EXPECT_TRUE(fs::exists(engine::localPath(bad)));
    EXPECT_EQ(shelf.looks(), 0);
}

TEST_F(RefusedMedia, ALookThatWasCancelledSaysNothingAboutTheFile) {
    fake::TaskContext tasks;
    tasks.status = iBackgroundTask::eCancelling;
    HostServices services = installedHost();
    services.tasks = &tasks;
    HostServices const before = installHost(services);
    Cookie const clip = makeClip(1, L"x");
    WideString const path = makeFile("unseen.mov");
    EXPECT_FALSE(use(clip, path));
    installHost(before);
    EXPECT_TRUE(fs::exists(engine::localPath(path)));
}

} // namespace
} // namespace test
