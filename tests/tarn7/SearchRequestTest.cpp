#include <nlohmann/json.hpp>

#include "repository/SearchOptions.h"
#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class SearchRequest : public Tarn7Test {
protected:
    void SetUp() override { connect(); }
    static SearchQuery queryFor(wchar_t const* words, std::uint16_t page = 1, std::uint16_t pageSize = 25) {
        SearchQuery query;
        query.words = words;
        query.page = page;
        query.pageSize = pageSize;
        return query;
    }
    // The list of commands that a search for it sends.
    std::string sentFor(SearchQuery const& query) {
        (void)resource.runSearch(query);
        return nlohmann::json::parse(lastBody().substr(4))["commands_json"];
    }
    std::string queryTextFor(wchar_t const* words) {
        return nlohmann::json::parse(sentFor(queryFor(words)))[0]["query"];
    }
    Tarn7Resource::Response answered(std::string answer) {
        host.network.answerWith(std::move(answer));
        return resource.runSearch(queryFor(L"cat"));
    }
    void filterBy(std::int32_t price, std::int32_t height, std::int32_t length) {
        host.preferences.write("T7 Price", price);
        host.preferences.write("T7 Height", height);
        host.preferences.write("T7 Len", length);
    }
};

TEST_F(SearchRequest, TheMembersStandInTheirOrder) {
    EXPECT_EQ(sentFor(queryFor(L"cat")),
              R"([{"command":"search","query":"cat","p":0,"col":251,"sb":1,"no":25,"bm":15}])");
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(SearchRequest, TheSecondPageOfFiftyWithEveryFirstFilter) {
    filterBy(5, 720, 5);
    EXPECT_EQ(sentFor(queryFor(L"sunset", 2, 50)),
              R"([{"command":"search","query":"sunset pricelt:5 linesgt:719 durationgt:5",)"
              R"("p":1,"col":251,"sb":1,"no":50,"bm":15}])");
}

TEST_F(SearchRequest, EveryEntryOfEveryListHasItsWord) {
    for (int const price : {5, 10, 20, 50, 100}) {
        filterBy(price, 0, 0);
        EXPECT_EQ(queryTextFor(L"cat"), "cat pricelt:" + std::to_string(price));
    }
    for (auto const& [height, sent] :
         {std::pair(720, "719"), std::pair(1080, "1079"), std::pair(2160, "2159")}) {
        filterBy(0, height, 0);
        EXPECT_EQ(queryTextFor(L"cat"), std::string("cat linesgt:") + sent);
    }
    for (int const length : {5, 10, 20, 30, 45, 60}) {
        filterBy(0, 0, length);
        EXPECT_EQ(queryTextFor(L"cat"), "cat durationgt:" + std::to_string(length));
    }
}

TEST_F(SearchRequest, FiltersThatAreOffLeaveNoBlanks) {
    filterBy(0, 0, 20);
    EXPECT_EQ(queryTextFor(L"cat"), "cat durationgt:20");
    filterBy(10, 0, 20);
    EXPECT_EQ(queryTextFor(L"cat"), "cat pricelt:10 durationgt:20");
    filterBy(0, 0, 0);
    EXPECT_EQ(queryTextFor(L"cat"), "cat");
}

TEST_F(SearchRequest, AnEmptyPatternIsSentEmpty) {
    EXPECT_EQ(sentFor(queryFor(L"")),
              R"([{"command":"search","query":"","p":0,"col":251,"sb":1,"no":25,"bm":15}])");
}

TEST_F(SearchRequest, AnEmptyPatternWithFiltersBeginsWithTheFirstWord) {
    filterBy(5, 720, 0);
    EXPECT_EQ(queryTextFor(L""), "pricelt:5 linesgt:719");
    filterBy(0, 0, 30);
    EXPECT_EQ(queryTextFor(L""), "durationgt:30");
}

TEST_F(SearchRequest, AStoredValueOfNoListIsUsedAsItStands) {
    filterBy(15, 1, -7);
    EXPECT_EQ(queryTextFor(L"cat"), "cat pricelt:15 linesgt:0 durationgt:-7");
    filterBy(0, -2147483647 - 1, 0);
    EXPECT_EQ(queryTextFor(L"cat"), "cat linesgt:-2147483649");
}

TEST_F(SearchRequest, ChoosingFourKFiltersTheNextSearch) {
    resource.handleSizeChange(2);
    EXPECT_EQ(queryTextFor(L"cat"), "cat linesgt:2159");
    resource.handleSizeChange(-1);
    EXPECT_EQ(queryTextFor(L"cat"), "cat");
}

TEST_F(SearchRequest, ThePreferencesAreReadAnewOnEverySearch) {
    EXPECT_EQ(queryTextFor(L"cat"), "cat");
    host.preferences.write("T7 Price", 50);
    EXPECT_EQ(queryTextFor(L"cat"), "cat pricelt:50");
}

TEST_F(SearchRequest, PagesAreCountedFromZeroAndPageZeroIsOneBefore) {
    EXPECT_NE(sentFor(queryFor(L"cat", 1)).find(R"("p":0,)"), std::string::npos);
    EXPECT_NE(sentFor(queryFor(L"cat", 0)).find(R"("p":-1,)"), std::string::npos);
    EXPECT_NE(sentFor(queryFor(L"cat", 65535)).find(R"("p":65534,)"), std::string::npos);
}

TEST_F(SearchRequest, ThePageSizeIsSentAsItIs) {
    EXPECT_NE(sentFor(queryFor(L"cat", 1, 0)).find(R"("no":0,)"), std::string::npos);
    EXPECT_NE(sentFor(queryFor(L"cat", 1, 65535)).find(R"("no":65535,)"), std::string::npos);
}

TEST_F(SearchRequest, TheFirstReplyIsTheResult) {
    auto const reply = answered(answerOf({R"({"n":1})", R"({"n":2})"}));
    ASSERT_NE(reply, nullptr);
    EXPECT_EQ(reply->getInt("n", 0), 1);
}

TEST_F(SearchRequest, NoServerAndNoAnswerGiveNull) {
    EXPECT_EQ(resource.runSearch(queryFor(L"cat")), nullptr);
    resource.disconnect();
    host.network.forgetRequests();
    EXPECT_EQ(resource.runSearch(queryFor(L"cat")), nullptr);
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(SearchRequest, AFailedAnswerGivesNullAndSaysNothing) {
    EXPECT_EQ(answered(R"({"e":true,"s":"maintenance","commands":[{"items":[]}]})"), nullptr);
    EXPECT_EQ(answered(R"({"e":false,"commands":[{"s":"no","items":[{"id":1}]}]})"), nullptr);
    EXPECT_EQ(answered("no JSON"), nullptr);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(SearchRequest, AnAnswerWithoutCommandsOrWithNoneInThemGivesNull) {
    EXPECT_EQ(answered(R"({"e":false})"), nullptr);
    EXPECT_EQ(answered(R"({"e":false,"commands":[]})"), nullptr);
}

TEST_F(SearchRequest, ATextAtTheTopAloneIsNoFailure) {
    EXPECT_NE(answered(R"({"s":"note","commands":[{}]})"), nullptr);
}

// The cache of whole results, which the base keeps.
class CachedSearch : public SearchRequest {
protected:
    std::size_t askedFor(wchar_t const* words, std::uint16_t page = 1) {
        host.network.forgetRequests();
        found = resource.search(queryFor(words, page));
        return host.network.requestCount();
    }
    SearchResults found;
};

TEST_F(CachedSearch, TheSameSearchTwiceAsksOnce) {
    host.network.answerWith(foundItems(R"([{"id":7,"fps_real":"25"}])"));
    EXPECT_EQ(askedFor(L"cat"), 1U);
    EXPECT_EQ(askedFor(L"cat"), 0U);
    ASSERT_EQ(found.assets.size(), 1U);
    EXPECT_EQ(utf8(found.assets[0].id), "7");
    EXPECT_EQ(askedFor(L"cat", 2), 1U);
    EXPECT_EQ(askedFor(L"dog"), 1U);
}

TEST_F(CachedSearch, EachFilterMakesTheNextSearchAskAgainAlsoForAnEqualValue) {
    host.network.answerWith(foundItems(R"([{"id":7,"fps_real":"25"}])"));
    for (auto const handler : {&Tarn7Resource::handlePriceChange, &Tarn7Resource::handleSizeChange,
                               &Tarn7Resource::handleLengthChange}) {
        (resource.*handler)(1);
        EXPECT_EQ(askedFor(L"cat"), 1U);
        EXPECT_EQ(askedFor(L"cat"), 0U);
        (resource.*handler)(1);
        EXPECT_EQ(askedFor(L"cat"), 1U);
    }
}

TEST_F(CachedSearch, AnOptionThatIsChosenFiltersTheNextSearch) {
    host.network.answerWith(foundItems(R"([{"id":7,"fps_real":"25"}])"));
    auto const groups = resource.getSearchOptions();
    EXPECT_EQ(askedFor(L"cat"), 1U);
    ASSERT_EQ(setSearchOption(groups, 0, 0, L"3"), SearchOptionResult::set);
    ASSERT_EQ(setSearchOption(groups, 0, 1, L"1"), SearchOptionResult::set);
    ASSERT_EQ(setSearchOption(groups, 0, 2, L"0"), SearchOptionResult::set);
    EXPECT_EQ(askedFor(L"cat"), 1U);
    EXPECT_NE(lastBody().find("cat pricelt:50 linesgt:1079 durationgt:5"), std::string::npos);
    EXPECT_EQ(askedFor(L"cat"), 0U);
}

TEST_F(CachedSearch, SigningInAndOutMakeTheNextSearchAskAgain) {
    host.network.answerWith(foundItems(R"([{"id":7,"fps_real":"25"}])"));
    EXPECT_EQ(askedFor(L"cat"), 1U);
    signIn();
    host.network.answerWith(foundItems(R"([{"id":7,"fps_real":"25"}])"));
    EXPECT_EQ(askedFor(L"cat"), 1U);
    resource.logout();
    EXPECT_EQ(askedFor(L"cat"), 1U);
}

TEST_F(CachedSearch, AFailureIsNotKept) {
    host.network.answerWith(R"({"e":true})");
    EXPECT_EQ(askedFor(L"cat"), 1U);
    EXPECT_EQ(askedFor(L"cat"), 1U);
    EXPECT_TRUE(found.assets.empty());
}

} // namespace
} // namespace tarn7_tests
