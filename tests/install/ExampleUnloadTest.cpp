// The example's module really leaves, also after its operations have run.

#include <gmock/gmock.h>

#include <fstream>

#include "host/engine/modules/ModuleLoader.h"
#include "host/text/Unicode.h"
#include "repository/iMediaFileRepository.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/support/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

bool isMapped(std::string const& fileName) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        if (line.find(fileName) != std::string::npos) {
            return true;
        }
    }
    return false;
}

TEST(ExampleModule, LeavesTheProcessOnEachUnload) {
    test::TemporaryFolder const footage;
    std::ofstream{footage.path() / "clip.mov"};
    fake::Host host;
    host.preferences.write("FO Folder", fromUTF8(footage.path().c_str()));
    fs::path const module = fs::path(ZQ_TEST_MODULES) / "folder.zqd";
    for (int round = 0; round < 50; ++round) {
        engine::ModuleLoader loader;
        loader.loadFiles(std::vector{module});
        ASSERT_EQ(loader.reports().front().error, "");
        ASSERT_EQ(loader.repositories().size(), 1U);
        iMediaFileRepository& repository = *loader.repositories().front();
        EXPECT_EQ(repository.connect({}, LoggerHandle()), 0);
        SearchResults const page = repository.search({});
        ASSERT_EQ(page.assets.size(), 1U);
        EXPECT_FALSE(repository.openEdit(page.assets[0], iMediaFileRepository::eOpenNormally).isEmpty());
        EXPECT_EQ(repository.getSearchOptions().size(), 1U);
        EXPECT_EQ(repository.getLogAttributes().size(), 4U);
        EXPECT_TRUE(isMapped(module.filename()));
        loader.unload();
        ASSERT_FALSE(isMapped(module.filename())) << "round " << round;
    }
}

TEST(ExampleModule, AFolderThatIsNotThereConnectsToNothing) {
    fake::Host host;
    host.preferences.write("FO Folder", WideString(L"/nowhere/at all"));
    engine::ModuleLoader loader;
    loader.loadFiles(std::vector{fs::path(ZQ_TEST_MODULES) / "folder.zqd"});
    ASSERT_EQ(loader.repositories().size(), 1U);
    iMediaFileRepository& repository = *loader.repositories().front();
    EXPECT_EQ(repository.connect({}, LoggerHandle()), 11);
    EXPECT_FALSE(repository.isConnected());
    EXPECT_TRUE(repository.search({}).assets.empty());
    EXPECT_TRUE(repository.getPurchasedAssets().empty());
    EXPECT_TRUE(repository.getStatusText().startsWith(L"the folder /nowhere/at all cannot be read"));
    EXPECT_TRUE(repository.openEdit({}, iMediaFileRepository::eOpenNormally).isEmpty());
    EXPECT_FALSE(repository.getThumbnail({}));
    SearchQuery nothing;
    nothing.page = 0;
    nothing.pageSize = 0;
    EXPECT_EQ(repository.search(nothing).pageCount, 0);
}

} // namespace
