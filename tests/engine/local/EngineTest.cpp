#include "host/engine/Engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/engine/files/LocalPath.h"
#include "host/files/iCacheStore.h"
#include "host/files/iFileManager.h"
#include "host/log/Log.h"
#include "host/network/OSPrivate.h"
#include "host/os/OS.h"
#include "host/os/getTime32.h"
#include "host/os/iShell.h"
#include "host/preferences/EditorPreferences.h"
#include "host/preferences/config_int.h"
#include "host/resources/resourceStr.h"
#include "host/tasks/BackgroundTaskQueueBase.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/EnvironmentVariable.h"
#include "tests/engine/local/OtherProcess.h"
#include "tests/fake_host/FakeMemory.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Engine : public testing::Test {
protected:
    [[nodiscard]] engine::EngineOptions options() const {
        engine::EngineOptions options;
        options.home = home_;
        options.language = "en";
        return options;
    }
    [[nodiscard]] std::string log() const { return test::readBytes(home_ / "logs/host.log"); }

    test::TemporaryFolder folder_;
    std::filesystem::path const home_ = folder_.path() / "home";
};

TEST_F(Engine, PutsAServiceBehindEveryDoor) {
    auto const engine = engine::Engine::start(options());
    ASSERT_TRUE(engine) << engine.error();
    HostServices const& services = installedHost();
    EXPECT_NE(services.files, nullptr);
    EXPECT_NE(services.shell, nullptr);
    EXPECT_NE(services.security, nullptr);
    EXPECT_NE(services.network, nullptr);
    EXPECT_NE(services.preferences, nullptr);
    EXPECT_NE(services.configuration, nullptr);
    EXPECT_NE(services.strings, nullptr);
    EXPECT_NE(services.log, nullptr);
    EXPECT_NE(services.json, nullptr);
    EXPECT_NE(services.clock, nullptr);
    EXPECT_NE(services.cache, nullptr);
    EXPECT_NE(services.images, nullptr);
    EXPECT_NE(services.tasks, nullptr);
}

TEST_F(Engine, TheDoorsWork) {
    std::filesystem::create_directories(home_);
    test::writeBytes(home_ / "host.toml", "name = \"Cutting Room\"\n[config]\nt7 = 0\n");
    auto const engine = engine::Engine::start(options());
    ASSERT_TRUE(engine) << engine.error();
    EXPECT_EQ(config_int("t7", 1), 0);
    EXPECT_EQ(resourceStrW(10663), WideString(L"Name"));
    prefs().setPreference("T7 Price", 20);
    EXPECT_EQ(prefs().getPreference("T7 Price", 0), 20);
    EXPECT_TRUE(std::filesystem::exists(home_ / "preferences.sqlite"));
    EXPECT_EQ(OS().fileManager().getHostName(), WideString(L"Cutting Room"));
    EXPECT_EQ(OS().shell().getStandardFolder(5), engine::wideText(home_ / "media") + L"/");
    EXPECT_EQ(OSPrivate().security().getHash()->computeHash("", 0).length(), 64U);
    EXPECT_EQ(OSPrivate().network().encodeUrlComponent(L"a b"), WideString(L"a%20b"));
    EXPECT_EQ(installedHost().cache->partialFolder(), engine::wideText(home_ / "cache/partial"));
    EXPECT_GT(getTime32(), 1'700'000'000U);
    EXPECT_EQ(BackgroundTaskQueueBase::getCurrentTaskStatus(), iBackgroundTask::eRunning);
    Log("%s", "a line for the log");
    EXPECT_THAT(log(), HasSubstr("a line for the log"));
}

TEST_F(Engine, PutsTheRecordBeforeBackAndKeepsItsMemory) {
    fake::Memory memory;
    HostServices mine;
    mine.memory = &memory;
    HostServices const outer = installHost(mine);
    {
        auto const engine = engine::Engine::start(options());
        ASSERT_TRUE(engine) << engine.error();
        EXPECT_EQ(installedHost().memory, &memory);
        EXPECT_NE(installedHost().files, nullptr);
    }
    EXPECT_EQ(installedHost().memory, &memory);
    EXPECT_EQ(installedHost().files, nullptr);
    EXPECT_EQ(memory.liveAllocations(), 0);
    (void)installHost(outer);
}

TEST_F(Engine, TheLanguageComesFromTheOptionThenTheFileThenTheEnvironment) {
    test::EnvironmentVariable const all("LC_ALL", "ja_JP.UTF-8");
    engine::EngineOptions asked = options();
    asked.language.clear();
    EXPECT_EQ((*engine::Engine::start(asked))->language(), "ja");
    test::writeBytes(home_ / "host.toml", "language = \"de\"\n");
    {
        auto const engine = engine::Engine::start(asked);
        ASSERT_TRUE(engine) << engine.error();
        EXPECT_EQ(resourceStrW(20059), WideString(L"Preis"));
    }
    asked.language = "en";
    auto const engine = engine::Engine::start(asked);
    ASSERT_TRUE(engine) << engine.error();
    EXPECT_EQ(resourceStrW(20059), WideString(L"Price"));
}

TEST_F(Engine, AFailedStartInstallsNothingAndSaysWhy) {
    std::filesystem::create_directories(home_);
    HostServices const before = installedHost();
    auto const expectFailure = [&before](engine::EngineOptions const& wrong, char const* reason) {
        auto const engine = engine::Engine::start(wrong);
        ASSERT_FALSE(engine);
        EXPECT_THAT(engine.error(), HasSubstr(reason));
        EXPECT_EQ(installedHost().log, before.log);
        EXPECT_EQ(installedHost().files, before.files);
    };
    engine::EngineOptions wrong = options();
    wrong.home = "/proc/zq";
    expectFailure(wrong, "/proc/zq");
    wrong = options();
    wrong.language = "tlh";
    expectFailure(wrong, "there are: de en ja");
    wrong = options();
    wrong.programFolder = folder_.path();
    expectFailure(wrong, "no folder with the host's texts");
    test::writeBytes(home_ / "host.toml", "[config]\nt7 = true\n");
    expectFailure(options(), "host.toml:2:6: ");
}

TEST_F(Engine, ModulesAreSearchedBesideTheProgramUnlessTheFileSaysWhere) {
    engine::EngineOptions asked = options();
    asked.programFolder = ZQ_PROGRAM_FOLDER;
    EXPECT_THAT((*engine::Engine::start(asked))->moduleFolders(), ElementsAre(ZQ_PROGRAM_FOLDER));
    test::writeBytes(home_ / "host.toml", "[modules]\npath = [\"/a\", \"/b\"]\n");
    EXPECT_THAT((*engine::Engine::start(asked))->moduleFolders(), ElementsAre("/a", "/b"));
}

TEST_F(Engine, AnInstalledProgramsModulesLieInTheLibraryFolder) {
    engine::EngineOptions asked = options();
    asked.programFolder = folder_.path() / "bin";
    asked.stringsFolder = ZQ_PROGRAM_FOLDER "/strings";
    EXPECT_THAT((*engine::Engine::start(asked))->moduleFolders(), ElementsAre(asked.programFolder));
    std::filesystem::path const modules = folder_.path() / "lib/zq/modules";
    std::filesystem::create_directories(modules);
    EXPECT_THAT((*engine::Engine::start(asked))->moduleFolders(), ElementsAre(asked.programFolder, modules));
}

TEST_F(Engine, ADownloadThatWasCutShortIsGoneAfterTheStart) {
    std::filesystem::create_directories(home_);
    std::filesystem::path const target = folder_.path() / "a.mov";
    {
        test::OtherProcess other({"download", home_ / "unfinished", target});
        ASSERT_EQ(other.readLine(), "open");
        other.kill();
        (void)other.wait();
    }
    ASSERT_TRUE(std::filesystem::exists(target));
    auto const engine = engine::Engine::start(options());
    ASSERT_TRUE(engine) << engine.error();
    EXPECT_FALSE(std::filesystem::exists(target));
    EXPECT_THAT(log(), HasSubstr(target.native()));
}

TEST_F(Engine, ALogFolderThatCannotBeWrittenDoesNotKeepItFromStarting) {
    std::filesystem::create_directories(home_);
    test::writeBytes(home_ / "logs", "in the way");
    auto const engine = engine::Engine::start(options());
    ASSERT_TRUE(engine) << engine.error();
}

TEST_F(Engine, ADamagedPreferencesFileIsInTheLog) {
    std::filesystem::create_directories(home_);
    test::writeBytes(home_ / "preferences.sqlite", "damaged from end to end");
    auto const engine = engine::Engine::start(options());
    ASSERT_TRUE(engine) << engine.error();
    EXPECT_THAT(log(), HasSubstr("preferences.sqlite.damaged-"));
}

} // namespace
