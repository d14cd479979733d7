#include <gtest/gtest.h>

#include "host/preferences/EditorPreferences.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

class Search : public testing::Test {
protected:
    SearchResults search(wchar_t const* words, std::uint16_t page = 1, std::uint16_t pageSize = 25) {
        SearchQuery query;
        query.words = words;
        query.page = page;
        query.pageSize = pageSize;
        return repository.search(query);
    }
    SearchResults browse(wchar_t const* path, bool refresh, std::uint16_t page = 1) {
        BrowseQuery query;
        query.path = path;
        query.page = page;
        return repository.getFiles(query, refresh);
    }
    [[nodiscard]] std::size_t asked() const { return repository.searches.size(); }

    fake::Host host;
    TestRepository repository;
};

TEST_F(Search, TheSameSearchTwiceAsksOnce) {
    SearchResults const first = search(L"sea");
    SearchResults const second = search(L"sea");
    EXPECT_EQ(asked(), 1U);
    ASSERT_EQ(second.assets.size(), 1U);
    EXPECT_EQ(second.assets.front().id, L"sea-0");
    EXPECT_EQ(second.totalCount, first.totalCount);
}

TEST_F(Search, BlanksAroundTheWordsMakeNoOtherSearch) {
    (void)search(L"sea");
    (void)search(L"  sea\t");
    EXPECT_EQ(asked(), 1U);
}

TEST_F(Search, TheQueryReachesTheResourceAsItIs) {
    (void)search(L" sea ", 3, 40);
    ASSERT_EQ(asked(), 1U);
    EXPECT_EQ(repository.searches[0].words, L" sea ");
    EXPECT_EQ(repository.searches[0].page, 3);
    EXPECT_EQ(repository.searches[0].pageSize, 40);
}

TEST_F(Search, OtherWordsAnotherPageOrAnotherPageSizeAskAgain) {
    (void)search(L"sea");
    (void)search(L"lake");
    (void)search(L"sea", 2);
    (void)search(L"sea", 1, 50);
    EXPECT_EQ(asked(), 4U);
}

TEST_F(Search, AnotherUserAsksAgain) {
    (void)search(L"sea");
    repository.signedInUser = L"ada";
    (void)search(L"sea");
    EXPECT_EQ(asked(), 2U);
}

TEST_F(Search, APurchaseAsksAgain) {
    (void)search(L"sea");
    repository.purchasedIds = {L"12", L"3"};
    (void)search(L"sea");
    EXPECT_EQ(asked(), 2U);
    repository.purchasedIds = {L"1", L"23"};
    (void)search(L"sea");
    EXPECT_EQ(asked(), 3U);
}

TEST_F(Search, AnotherConnectionAsksAgain) {
    ASSERT_EQ(repository.connect(serverNamed(L"one.test"), {}), 0);
    (void)search(L"sea");
    ASSERT_EQ(repository.connect(serverNamed(L"two.test"), {}), 0);
    (void)search(L"sea");
    EXPECT_EQ(asked(), 2U);
}

TEST_F(Search, AConnectThatLeavesTheConnectionAloneKeepsThePages) {
    ASSERT_EQ(repository.connect(serverNamed(L"one.test"), {}), 0);
    (void)search(L"sea");
    ASSERT_EQ(repository.connect(serverNamed(L""), {}), 0);
    (void)search(L"sea");
    EXPECT_EQ(asked(), 1U);
}

TEST_F(Search, AChangedPreferenceAsksAgain) {
    (void)search(L"sea");
    prefs().setPreference("T7 Price", 2);
    (void)search(L"sea");
    EXPECT_EQ(asked(), 2U);
}

TEST_F(Search, APreferenceThatChangesDuringASearchMakesThatPageUnusable) {
    repository.answer = [](SearchQuery const&) {
        SearchResults const page = pageOf(L"old", 1);
        prefs().setPreference("T7 Price", 2);
        return page;
    };
    (void)search(L"sea");
    repository.answer = [](SearchQuery const&) { return pageOf(L"new", 1); };
    EXPECT_EQ(search(L"sea").assets.front().id, L"new-0");
}

TEST_F(Search, AnEmptyPageIsAskedForEachTime) {
    repository.answer = [](SearchQuery const&) { return SearchResults(); };
    EXPECT_TRUE(search(L"sea").assets.empty());
    EXPECT_TRUE(search(L"sea").assets.empty());
    EXPECT_EQ(asked(), 2U);
    EXPECT_TRUE(repository.searchResultCache.empty());
}

TEST_F(Search, APageBehindTheLastOneIsKept) {
    repository.answer = [](SearchQuery const&) {
        SearchResults results;
        results.totalCount = 5;
        results.pageCount = 1;
        return results;
    };
    (void)search(L"sea", 9);
    EXPECT_EQ(search(L"sea", 9).totalCount, 5);
    EXPECT_EQ(asked(), 1U);
}

TEST_F(Search, ClearingTheCacheReachesTheServiceAgain) {
    (void)search(L"sea");
    repository.searchResultCache.clear();
    (void)search(L"sea");
    EXPECT_EQ(asked(), 2U);
}

TEST_F(Search, APageIsNotKeptWhenTheCacheWasClearedDuringItsSearch) {
    repository.answer = [this](SearchQuery const&) {
        repository.searchResultCache.clear();
        return pageOf(L"old", 1);
    };
    EXPECT_EQ(search(L"sea").assets.size(), 1U);
    EXPECT_TRUE(repository.searchResultCache.empty());
}

TEST_F(Search, ASearchMaySearchItself) {
    repository.answer = [this](SearchQuery const& query) {
        if (query.words == L"outer") {
            (void)search(L"inner");
        }
        return pageOf(query.words, 1);
    };
    EXPECT_EQ(search(L"outer").assets.front().id, L"outer-0");
    EXPECT_EQ(repository.searchResultCache.size(), 2U);
}

TEST_F(Search, DisconnectEndsTheConnectionAndForgetsThePages) {
    ASSERT_EQ(repository.connect(serverNamed(L"one.test"), {}), 0);
    EXPECT_TRUE(repository.isConnected());
    (void)search(L"sea");
    repository.disconnect();
    EXPECT_FALSE(repository.isConnected());
    EXPECT_FALSE(repository.ServiceConnection.hasServer());
    EXPECT_TRUE(repository.searchResultCache.empty());
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Search, ANewRepositoryIsNeitherConnectedNorSignedIn) {
    EXPECT_FALSE(repository.isConnected());
    EXPECT_TRUE(repository.signedInUser.isEmpty());
    EXPECT_TRUE(repository.purchasedIds.empty());
    EXPECT_TRUE(repository.searchResultCache.empty());
    EXPECT_TRUE(repository.partialFolder.isEmpty());
    EXPECT_EQ(repository.providerPointer, nullptr);
}

TEST_F(Search, ConnectWithoutAServerFailsUnlessAnOlderConnectionStays) {
    EXPECT_EQ(repository.connect(serverNamed(L""), {}), 11);
    EXPECT_FALSE(repository.isConnected());
    EXPECT_EQ(repository.connect(serverNamed(L"one.test"), {}), 0);
    EXPECT_EQ(repository.connect(serverNamed(L""), {}), 0);
    EXPECT_TRUE(repository.isConnected());
    repository.disconnect();
    EXPECT_EQ(repository.connect(serverNamed(L""), {}), 11);
}

TEST_F(Search, TheEndOfAProjectForgetsThePages) {
    (void)search(L"sea");
    ProjectListener& listener = repository;
    listener.handleProjectExit();
    EXPECT_TRUE(repository.searchResultCache.empty());
}

TEST_F(Search, TheEndOfARepositorySendsNothing) {
    {
        TestRepository other;
        ASSERT_EQ(other.connect(serverNamed(L"one.test"), {}), 0);
        other.signedInUser = L"ada";
    }
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Search, TheRootListsWhatASearchWithoutWordsFinds) {
    SearchResults const results = browse(L"", false, 4);
    ASSERT_EQ(asked(), 1U);
    EXPECT_TRUE(repository.searches[0].words.isEmpty());
    EXPECT_EQ(repository.searches[0].page, 4);
    EXPECT_EQ(repository.searches[0].pageSize, 25);
    EXPECT_EQ(results.assets.size(), 1U);
}

TEST_F(Search, AnotherPlaceThanTheRootIsEmptyAndAsksNobody) {
    SearchResults const results = browse(L"/etc", false);
    EXPECT_TRUE(results.assets.empty());
    EXPECT_EQ(results.totalCount, 0);
    EXPECT_EQ(asked(), 0U);
}

TEST_F(Search, BrowsingTwiceAsksOnceUnlessItIsToRefresh) {
    (void)browse(L"", false);
    (void)browse(L"", false);
    EXPECT_EQ(asked(), 1U);
    repository.answer = [](SearchQuery const&) { return pageOf(L"fresh", 1); };
    EXPECT_EQ(browse(L"", true).assets.front().id, L"fresh-0");
    EXPECT_EQ(asked(), 2U);
    EXPECT_EQ(browse(L"", false).assets.front().id, L"fresh-0");
    EXPECT_EQ(asked(), 2U);
}

TEST_F(Search, APlaceAndASearchOfTheSameTextAreTwoPages) {
    class Folders : public TestRepository {
    public:
        SearchResults getFilesInternal(BrowseQuery const& query) override {
            return pageOf(L"in " + query.path, 1);
        }
    } folders;
    BrowseQuery place;
    place.path = L"sea";
    SearchQuery words;
    words.words = L"sea";
    EXPECT_EQ(folders.getFiles(place, false).assets.front().id, L"in sea-0");
    EXPECT_EQ(folders.search(words).assets.front().id, L"sea-0");
    EXPECT_EQ(folders.getFiles(place, false).assets.front().id, L"in sea-0");
}

TEST_F(Search, WithoutAPreferenceStoreAPageIsStillKept) {
    HostServices const before = installHost({});
    (void)search(L"sea");
    (void)search(L"sea");
    EXPECT_EQ(asked(), 1U);
    repository.searchResultCache.clear();
    installHost(before);
}

WideString patternOf(wchar_t const* words) {
    SearchQuery query;
    query.words = words;
    return MediaFileRepositoryBase::getSearchPattern(query);
}

TEST(SearchPattern, BlanksAtBothEndsGo) {
    EXPECT_EQ(patternOf(L"  sea  "), L"sea");
    EXPECT_EQ(patternOf(L"\tsea\r\n"), L"sea");
    EXPECT_EQ(patternOf(L"\u00a0\u3000sea\u3000"), L"sea");
}

TEST(SearchPattern, NothingButBlanksIsEmpty) {
    EXPECT_EQ(patternOf(L""), L"");
    EXPECT_EQ(patternOf(L"   "), L"");
}

TEST(SearchPattern, AllElseStays) {
    EXPECT_EQ(patternOf(L"red  sea & \"lake\"=100% <b>"), L"red  sea & \"lake\"=100% <b>");
    EXPECT_EQ(patternOf(L"\xd83d\xde00 sea"), L"\xd83d\xde00 sea");
}

} // namespace
} // namespace repository_tests
