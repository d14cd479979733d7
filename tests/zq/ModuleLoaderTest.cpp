// Loading and unloading of modules, good ones and broken ones.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <vector>

#include "host/engine/modules/ModuleLoader.h"
#include "host/text/Unicode.h"
#include "repository/iMediaFileRepository.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using engine::ModuleLoader;
using engine::ModuleReport;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

fs::path module(std::string const& name) {
    return fs::path(ZQ_TEST_MODULES) / (name + ".zqd");
}

bool isMapped(fs::path const& file) {
    void* const handle = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
    if (handle != nullptr) {
        ::dlclose(handle);
    }
    return handle != nullptr;
}

class Loader : public testing::Test {
protected:
    std::vector<ModuleReport> load(std::vector<fs::path> const& files) {
        loader.loadFiles(files);
        return {loader.reports().begin(), loader.reports().end()};
    }
    // The one report of a file that does not load, after which nothing of it is left.
    std::string refusalOf(fs::path const& file) {
        std::vector<ModuleReport> const reports = load({file});
        EXPECT_THAT(reports, SizeIs(1));
        EXPECT_EQ(reports.front().path, file);
        EXPECT_FALSE(reports.front().loaded);
        EXPECT_THAT(reports.front().repositories, IsEmpty());
        EXPECT_FALSE(isMapped(file));
        return reports.front().error;
    }

    fake::Host host;
    test::TemporaryFolder folder;
    ModuleLoader loader;
};

TEST_F(Loader, LoadsTheModulesOfAFolderInTheOrderOfTheirNames) {
    fs::copy_file(module("life_a"), folder.path() / "2.zqd");
    fs::copy_file(module("life_b"), folder.path() / "1.zqd");
    fs::copy_file(module("life_b"), folder.path() / "other.so");
    loader.loadFolders(std::vector{folder.path()});
    EXPECT_THAT(host.log.lines(), ElementsAre("b loaded", "a loaded", "b enumerated", "a enumerated"));
    ASSERT_THAT(loader.reports(), SizeIs(2));
    EXPECT_TRUE(loader.reports()[0].loaded);
    EXPECT_EQ(loader.reports()[0].name, "b");
    EXPECT_EQ(loader.reports()[0].version, "1.2");
    EXPECT_EQ(loader.reports()[0].error, "");
}

TEST_F(Loader, UnloadsInReverseAndForGood) {
    static_cast<void>(load({module("life_a"), module("life_b")}));
    loader.unload();
    std::vector<std::string> const lines = host.log.lines();
    EXPECT_THAT(std::vector(lines.begin() + 4, lines.end()),
                ElementsAre("b unloading", "b gone", "a unloading", "a gone"));
    EXPECT_FALSE(isMapped(module("life_a")));
    EXPECT_FALSE(isMapped(module("life_b")));
    EXPECT_THAT(loader.reports(), IsEmpty());
}

TEST_F(Loader, GivesTheRepositoriesOfAModule) {
    std::vector<ModuleReport> const reports = load({module("life_a"), module("fixed")});
    EXPECT_THAT(reports[0].repositories, IsEmpty());
    ASSERT_THAT(loader.repositories(), SizeIs(1));
    EXPECT_EQ(loader.repositories().front()->getShortName(), L"FX");
}

TEST_F(Loader, OffersARepositoryOfHigherPriorityFirst) {
    static_cast<void>(load({module("life_a"), module("fixed"), module("fixed_first")}));
    ASSERT_THAT(loader.repositories(), SizeIs(2));
    EXPECT_EQ(loader.repositories()[0]->getShortName(), L"FF");
    EXPECT_EQ(loader.repositories()[1]->getShortName(), L"FX");
}

TEST_F(Loader, RefusesAFileWithoutTheEntry) {
    EXPECT_EQ(refusalOf(module("no_entry")), "the module has no entry zqPluginInstance");
}

TEST_F(Loader, RefusesAModuleThatRefusesToBeAttached) {
    EXPECT_EQ(refusalOf(module("refusing")), "the module refused to be attached");
    EXPECT_THAT(host.log.lines(), ElementsAre(HasSubstr("refused to be attached")));
}

TEST_F(Loader, RefusesAModuleWithoutAPlugin) {
    EXPECT_EQ(refusalOf(module("empty")), "zqPluginInstance gave no plug-in");
}

TEST_F(Loader, RefusesAModuleThatThrowsAndSaysWhat) {
    EXPECT_EQ(refusalOf(module("throwing")), "postLoadInitialization failed: no licence");
    EXPECT_THAT(host.log.lines(), ElementsAre("throwing loaded", "throwing error gone", "throwing unloading",
                                              "throwing gone", EndsWith("no licence")));
}

TEST_F(Loader, RefusesAModuleThatThrowsWhatIsNoException) {
    EXPECT_EQ(refusalOf(module("throwing_number")),
              "postLoadInitialization failed with an exception of an unknown type");
}

TEST_F(Loader, UnloadsAModuleThatThrowsWhenAllAreLoaded) {
    std::vector<ModuleReport> const reports = load({module("throwing_late"), module("life_a")});
    EXPECT_FALSE(reports[0].loaded);
    EXPECT_EQ(reports[0].error, "postEnumerationInitialization failed: no partner");
    EXPECT_TRUE(reports[1].loaded);
    EXPECT_FALSE(isMapped(module("throwing_late")));
    EXPECT_TRUE(isMapped(module("life_a")));
}

TEST_F(Loader, SurvivesAModuleThatThrowsAtItsEnd) {
    EXPECT_TRUE(load({module("throwing_at_end")}).front().loaded);
    loader.unload();
    EXPECT_FALSE(isMapped(module("throwing_at_end")));
    EXPECT_THAT(host.log.lines(), testing::Contains(HasSubstr("preUnloadDeinitialization failed: no end")));
}

TEST_F(Loader, RefusesWhatIsNoSharedObject) {
    fs::path const file = folder.path() / "text.zqd";
    std::ofstream(file) << "not a module";
    EXPECT_THAT(refusalOf(file), HasSubstr("text.zqd"));
    fs::path const empty = folder.path() / "empty.zqd";
    std::ofstream{empty};
    loader.unload();
    EXPECT_NE(refusalOf(empty), "");
}

TEST_F(Loader, RefusesAFolderAPipeAndAFileThatIsNotThere) {
    fs::create_directory(folder.path() / "folder.zqd");
    ASSERT_EQ(::mkfifo((folder.path() / "pipe.zqd").c_str(), 0600), 0);
    loader.loadFolders(std::vector{folder.path()});
    loader.loadFiles(std::vector{folder.path() / "missing.zqd"});
    ASSERT_THAT(loader.reports(), SizeIs(3));
    EXPECT_EQ(loader.reports()[0].error, "not a file");
    EXPECT_EQ(loader.reports()[1].error, "not a file");
    EXPECT_THAT(loader.reports()[2].error, HasSubstr("No such file"));
}

TEST_F(Loader, LoadsTheOthersBesideABrokenOne) {
    std::vector<ModuleReport> const reports = load({module("throwing"), module("no_entry"), module("fixed")});
    EXPECT_FALSE(reports[0].loaded);
    EXPECT_FALSE(reports[1].loaded);
    EXPECT_TRUE(reports[2].loaded);
}

TEST_F(Loader, LoadsAFileOnce) {
    fs::create_symlink(module("life_a"), folder.path() / "again.zqd");
    std::vector<ModuleReport> const reports =
        load({module("life_a"), module("life_a"), folder.path() / "again.zqd"});
    EXPECT_TRUE(reports[0].loaded);
    EXPECT_THAT(reports[1].error, HasSubstr("loaded already"));
    EXPECT_THAT(reports[2].error, HasSubstr("loaded already"));
    loader.unload();
    EXPECT_FALSE(isMapped(module("life_a")));
}

TEST_F(Loader, ReportsAFolderThatIsNotThere) {
    loader.loadFolders(std::vector{folder.path() / "missing"});
    ASSERT_THAT(loader.reports(), SizeIs(1));
    EXPECT_THAT(loader.reports()[0].error, HasSubstr("No such file"));
}

} // namespace
