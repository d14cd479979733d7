#include "repository/SearchResultCache.h"

#include <gtest/gtest.h>

#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

SearchResultCache::Key keyOf(wchar_t const* words) {
    SearchResultCache::Key key;
    key.text = words;
    key.page = 1;
    key.pageSize = 25;
    return key;
}

// Ids of the page under the key, or "none".
WideString firstIdAt(SearchResultCache& cache, SearchResultCache::Key const& key) {
    std::optional<SearchResults> const page = cache.find(key);
    return page && !page->assets.empty() ? page->assets.front().id : WideString(L"none");
}

void keep(SearchResultCache& cache, wchar_t const* words) {
    cache.store(keyOf(words), pageOf(words, 1), cache.generation());
}

TEST(SearchResultCache, ANewOneHoldsNothing) {
    SearchResultCache cache;
    EXPECT_TRUE(cache.empty());
    EXPECT_EQ(cache.size(), 0U);
    EXPECT_FALSE(cache.find(keyOf(L"sea")).has_value());
}

TEST(SearchResultCache, AStoredPageIsFoundWhole) {
    SearchResultCache cache;
    SearchResults stored = pageOf(L"sea", 3);
    stored.pageCount = 7;
    stored.totalCount = 161;
    cache.store(keyOf(L"sea"), stored, cache.generation());
    std::optional<SearchResults> const found = cache.find(keyOf(L"sea"));
    ASSERT_TRUE(found.has_value());
    ASSERT_EQ(found->assets.size(), 3U);
    EXPECT_EQ(found->assets[2].id, L"sea-2");
    EXPECT_EQ(found->pageCount, 7);
    EXPECT_EQ(found->totalCount, 161);
    EXPECT_FALSE(cache.empty());
}

TEST(SearchResultCache, EveryMemberOfTheKeyTellsPagesApart) {
    using Change = void (*)(SearchResultCache::Key&);
    constexpr Change changes[] = {
        [](SearchResultCache::Key& key) { key.kind = SearchResultCache::Kind::place; },
        [](SearchResultCache::Key& key) { key.text = L"lake"; },
        [](SearchResultCache::Key& key) { key.page = 2; },
        [](SearchResultCache::Key& key) { key.pageSize = 50; },
        [](SearchResultCache::Key& key) { key.user = L"ada"; },
        [](SearchResultCache::Key& key) { key.connection = 1; },
        [](SearchResultCache::Key& key) { key.purchases = 1; },
        [](SearchResultCache::Key& key) { key.preferences = 1; },
    };
    SearchResultCache cache;
    keep(cache, L"sea");
    for (std::size_t i = 0; i < std::size(changes); ++i) {
        SearchResultCache::Key other = keyOf(L"sea");
        changes[i](other);
        EXPECT_FALSE(cache.find(other).has_value()) << "change " << i;
    }
    EXPECT_TRUE(cache.find(keyOf(L"sea")).has_value());
}

TEST(SearchResultCache, StoringUnderAKnownKeyReplacesThePage) {
    SearchResultCache cache;
    keep(cache, L"sea");
    cache.store(keyOf(L"sea"), pageOf(L"newer", 1), cache.generation());
    EXPECT_EQ(cache.size(), 1U);
    EXPECT_EQ(firstIdAt(cache, keyOf(L"sea")), L"newer-0");
}

TEST(SearchResultCache, BeyondItsCapacityThePageUsedLongestAgoGoes) {
    SearchResultCache cache(3);
    keep(cache, L"a");
    keep(cache, L"b");
    keep(cache, L"c");
    ASSERT_TRUE(cache.find(keyOf(L"a")).has_value()); // now b is the oldest
    keep(cache, L"d");
    EXPECT_EQ(cache.size(), 3U);
    EXPECT_EQ(firstIdAt(cache, keyOf(L"b")), L"none");
    EXPECT_EQ(firstIdAt(cache, keyOf(L"a")), L"a-0");
    EXPECT_EQ(firstIdAt(cache, keyOf(L"c")), L"c-0");
    EXPECT_EQ(firstIdAt(cache, keyOf(L"d")), L"d-0");
}

TEST(SearchResultCache, AReplacedPageCountsAsUsed) {
    SearchResultCache cache(2);
    keep(cache, L"a");
    keep(cache, L"b");
    keep(cache, L"a");
    keep(cache, L"c");
    EXPECT_EQ(firstIdAt(cache, keyOf(L"a")), L"a-0");
    EXPECT_EQ(firstIdAt(cache, keyOf(L"b")), L"none");
}

TEST(SearchResultCache, ItStaysWithinItsCapacityHoweverManyPagesCome) {
    SearchResultCache cache;
    for (std::uint16_t page = 0; page < 1000; ++page) {
        SearchResultCache::Key key = keyOf(L"sea");
        key.page = page;
        cache.store(key, pageOf(L"sea", 1), cache.generation());
    }
    EXPECT_EQ(cache.size(), 64U);
}

TEST(SearchResultCache, OneWithoutRoomKeepsNothing) {
    SearchResultCache cache(0);
    keep(cache, L"sea");
    EXPECT_TRUE(cache.empty());
}

TEST(SearchResultCache, ClearForgetsEveryPage) {
    SearchResultCache cache;
    keep(cache, L"a");
    keep(cache, L"b");
    cache.clear();
    EXPECT_TRUE(cache.empty());
    EXPECT_FALSE(cache.find(keyOf(L"a")).has_value());
    keep(cache, L"a");
    EXPECT_EQ(cache.size(), 1U);
}

TEST(SearchResultCache, APageWhoseSearchBeganBeforeAClearIsNotKept) {
    SearchResultCache cache;
    std::uint64_t const before = cache.generation();
    cache.clear();
    cache.store(keyOf(L"sea"), pageOf(L"sea", 1), before);
    EXPECT_TRUE(cache.empty());
}

TEST(SearchResultCache, APageKeepsThePayloadOfItsAssetsAndClearLetsGo) {
    struct Payload : iObject {
        explicit Payload(bool& gone) : gone_(gone) {}
        ~Payload() override { gone_ = true; }
        bool& gone_;
    };
    bool gone = false;
    SearchResultCache cache;
    SearchResults page = pageOf(L"sea", 1);
    page.assets.front().payload = Zq::makeShared<Payload>(gone);
    cache.store(keyOf(L"sea"), page, cache.generation());
    page = {};
    EXPECT_FALSE(gone);
    cache.clear();
    EXPECT_TRUE(gone);
}

} // namespace
} // namespace repository_tests
