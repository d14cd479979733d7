#include "tests/framequarry/FrameQuarryFixture.h"
#include "tests/support/golden.h"

namespace framequarry_tests {
namespace {

class SearchRequest : public FrameQuarryTest {
protected:
    void SetUp() override { connect(); }

    static SearchQuery queryFor(WideString const& words, std::uint16_t page = 1,
                                std::uint16_t pageSize = 25) {
        SearchQuery query;
        query.words = words;
        query.page = page;
        query.pageSize = pageSize;
        return query;
    }
    // The path and query that a search for it asks for.
    std::string sentFor(SearchQuery const& query) {
        (void)resource.searchInternal(query);
        return host.network.lastRequest().path;
    }
    // The value of the words in a request, as it is sent.
    std::string sentWords(WideString const& words) {
        std::string const sent = sentFor(queryFor(words));
        std::string const before = "/api/v1/stock-items/search/?keywords=";
        EXPECT_TRUE(sent.starts_with(before)) << sent;
        return sent.substr(before.size(), sent.find('&') - before.size());
    }
    // The whole request against the file of that name.
    void expectRequest(std::string const& name, SearchQuery const& query) {
        (void)resource.searchInternal(query);
        ASSERT_EQ(host.network.requestCount(), 1U);
        fake::Request const request = host.network.lastRequest();
        EXPECT_EQ(request.method, fake::Request::Method::get);
        EXPECT_EQ(request.server, utf8(FrameQuarryServer));
        EXPECT_TRUE(request.secure);
        EXPECT_EQ(request.body, "");
        test::expectGolden(FRAMEQUARRY_GOLDEN_FOLDER "/" + name + ".txt", "GET " + request.path);
    }
};

TEST_F(SearchRequest, OfAWord) {
    expectRequest("search", queryFor(L"sunset"));
}

TEST_F(SearchRequest, OfASecondPageOfFifty) {
    expectRequest("search_second_page", queryFor(L"sunset", 2, 50));
}

TEST_F(SearchRequest, WithoutWordsStillHasItsKeywords) {
    expectRequest("search_without_words", queryFor(L""));
}

TEST_F(SearchRequest, OfWordsThatMeanSomethingInAQuery) {
    expectRequest("search_query_signs", queryFor(L"rock & roll + a=b?c#d/e%20;page=9"));
}

TEST_F(SearchRequest, OfWordsBeyondAscii) {
    expectRequest("search_beyond_ascii", queryFor(wide("M\u00e4rchen \u4e16\u754c \U0001f3ac ~x")));
}

TEST_F(SearchRequest, OfTheLargestFigures) {
    expectRequest("search_largest_figures", queryFor(L"x", 65535, 65535));
}

TEST_F(SearchRequest, OfPageZeroAndNoAssets) {
    expectRequest("search_zeros", queryFor(L"x", 0, 0));
}

TEST_F(SearchRequest, UnreservedCharactersStayAndAllOthersAreEncoded) {
    std::string const unreserved = "ABCXYZabcxyz0189-._~";
    EXPECT_EQ(sentWords(wide(unreserved)), unreserved);
    EXPECT_EQ(sentWords(L"a!\"#$%&'()*+,/:;<=>?@[\\]^`{|}b"),
              "a%21%22%23%24%25%26%27%28%29%2A%2B%2C%2F%3A%3B%3C%3D%3E%3F%40%5B%5C%5D%5E%60%7B%7C%7Db");
    EXPECT_EQ(sentWords(L"a\r\nHost: x\x7f z"), "a%0D%0AHost%3A%20x%7F%20z");
}

TEST_F(SearchRequest, HalvesOfCharactersAreReplaced) {
    WideString words(L"a");
    for (wchar_t const unit : {L'\xd800', L'b', L'\xdfac', L'\xd83c', L'\xdfac'}) {
        words += unit;
    }
    EXPECT_EQ(sentWords(words), "a%EF%BF%BDb%EF%BF%BD%F0%9F%8E%AC");
}

TEST_F(SearchRequest, BlanksAtTheEndsAreNotPartOfTheWords) {
    EXPECT_EQ(sentWords(L"  red  car \t"), "red%20%20car");
    EXPECT_EQ(sentWords(L" \t\n "), "");
}

TEST_F(SearchRequest, TheTimeOfARequestIsTheMomentInWhichItIsMade) {
    for (std::uint32_t const now : {0U, 1U, 1'700'000'000U, 2'147'483'648U, 4'294'967'295U}) {
        host.clock.now = now;
        EXPECT_NE(sentFor(queryFor(L"x")).find("&EXPIRES=" + std::to_string(now) + "&HMAC="),
                  std::string::npos);
    }
}

TEST_F(SearchRequest, ThePrivateKeyIsNeverSent) {
    std::string const sent = sentFor(queryFor(L"x"));
    EXPECT_NE(sent.find("&APIKEY=" + utf8(FrameQuarryPublicKey) + "&"), std::string::npos);
    EXPECT_EQ(sent.find(utf8(FrameQuarryPrivateKey)), std::string::npos);
}

TEST_F(SearchRequest, NeitherAUserNorAPreferenceChangesIt) {
    std::string const sent = sentFor(queryFor(L"x"));
    resource.signedInUser = L"ada";
    host.preferences.write("T7 Price", 5);
    host.preferences.write("FQ User", WideString(L"ada"));
    EXPECT_EQ(sentFor(queryFor(L"x")), sent);
}

TEST_F(SearchRequest, NothingIsAskedButThePage) {
    host.network.answerWith(answerOf("[" +
                                     itemWith(R"("id":1,"duration":5,"preview_url":"https://m.test/1.mp4",)"
                                              R"("thumbnail_url":"https://m.test/1.jpg")") +
                                     "]"));
    SearchResults const page = resource.searchInternal(queryFor(L"x"));
    ASSERT_EQ(page.assets.size(), 1U);
    (void)resource.getRemoteLocation(page.assets[0], TestResource::ePreview);
    (void)resource.openEdit(page.assets[0], iMediaFileRepository::eOpenNormally);
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(SearchRequest, AnAnswerThatFailsIsNotAskedForAgain) {
    SearchResults const page = resource.searchInternal(queryFor(L"x"));
    EXPECT_TRUE(page.assets.empty());
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(SearchRequest, WithoutAServerNothingIsSentAndThePageIsEmpty) {
    resource.disconnect();
    SearchResults const page = resource.searchInternal(queryFor(L"x"));
    EXPECT_TRUE(page.assets.empty());
    EXPECT_EQ(page.totalCount, 0);
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(SearchRequest, APageThatTheHostHasIsNotAskedForAgain) {
    host.network.answerWith(answerOf("[" + itemWith(R"("id":1)") + "]"));
    EXPECT_EQ(resource.search(queryFor(L"x")).assets.size(), 1U);
    ++host.clock.now;
    EXPECT_EQ(resource.search(queryFor(L" x ")).assets.size(), 1U);
    EXPECT_EQ(host.network.requestCount(), 1U);
    (void)resource.search(queryFor(L"x", 2));
    EXPECT_EQ(host.network.requestCount(), 2U);
}

TEST_F(SearchRequest, TheRootOfTheBrowserIsASearchWithoutWords) {
    (void)resource.getFiles({}, false);
    EXPECT_TRUE(host.network.lastRequest().path.starts_with(
        "/api/v1/stock-items/search/?keywords=&page=1&num_results=25&APIKEY="));
}

} // namespace
} // namespace framequarry_tests
