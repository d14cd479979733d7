#include "host/json/NumberMembers.h"
#include "tests/framequarry/FrameQuarryFixture.h"
#include "tests/repository/DefaultAsset.h"

namespace framequarry_tests {
namespace {

class Results : public FrameQuarryTest {
protected:
    Zq::FrameRate rateOf(std::string const& entry) {
        return assetOf(R"({"download_format_details":[)" + entry + "]}").frameRate;
    }
    Zq::FrameRate rateFor(std::string const& figure) { return rateOf(R"({"frame_rate":)" + figure + "}"); }
};

constexpr char wholeItem[] =
    R"({"id":123,"title":"Sunset \u00e9","duration":12.48,"thumbnail_url":"https://m.test/t/123.jpg",)"
    R"("preview_url":"https://m.test/p/123.mp4?sig=1","download_format_details":)"
    R"([{"frame_rate":25,"name":"HD"},{"frame_rate":50}]})";

TEST_F(Results, AnItemBecomesAnAssetMemberByMember) {
    RemoteAsset asset = assetOf(wholeItem);
    EXPECT_EQ(utf8(asset.id), "123");
    EXPECT_EQ(utf8(asset.mediaExtension), "mp4");
    EXPECT_EQ(utf8(asset.proxyLocation), "Virtual:FQ https://m.test/p/123.mp4?sig=1");
    EXPECT_EQ(asset.frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(asset.assetKind, 1);
    ASSERT_NE(asset.payload, nullptr);
    // Everything else, the extension of the preview among it, is as it was before anybody wrote to it.
    asset.id.clear();
    asset.mediaExtension.clear();
    asset.proxyLocation.clear();
    asset.frameRate = Zq::FrameRate::unknown;
    asset.payload = {};
    asset.logAttributes = {};
    repository_tests::expectDefaults(asset);
}

TEST_F(Results, TheAttributesThatStayAreAddedInTheirOrder) {
    RemoteAsset const asset = assetOf(wholeItem);
    std::vector<int> types;
    for (auto const& entry : asset.logAttributes.entries()) {
        types.push_back(entry.type);
    }
    EXPECT_EQ(types, (std::vector<int>{1, 23, 6}));
    EXPECT_EQ(logText(asset, LogAttribute::eName), "Sunset \u00e9");
    EXPECT_EQ(logText(asset, LogAttribute::eClipId), "FQ123");
    EXPECT_EQ(logText(asset, LogAttribute::eSource), "FrameQuarry");
    EXPECT_EQ(utf8(resource.getAttribute(asset, LogAttribute(LogAttribute::eName))), "Sunset \u00e9");
    EXPECT_EQ(utf8(resource.getAttribute(asset, LogAttribute(LogAttribute::ePrice))), "");
}

TEST_F(Results, NoColumnHasAText) {
    EXPECT_TRUE(assetOf(wholeItem).displayAttributes.isEmpty());
}

TEST_F(Results, NothingIsKnownOfTheChannels) {
    RemoteAsset const asset = assetOf(wholeItem);
    EXPECT_EQ(asset.videoChannels, 0);
    EXPECT_EQ(asset.audioChannels, 0);
}

TEST_F(Results, AnItemWithoutFormatsIsLeftOutAndStillCounted) {
    SearchResults const page = pageOf(answerOf(R"([{"id":1,"title":"no key"},)"
                                               R"({"id":2,"download_format_details":[]},)"
                                               R"({"id":3,"download_format_details":null},)"
                                               R"({"id":4,"download_format_details":25},)"
                                               R"({"id":5,"download_format_details":"HD"},)"
                                               R"({"id":6,"download_format_details":[25,"HD",null]},)"
                                               R"({"id":7,"download_format_details":[{}]}])",
                                               R"(,"totalSearchResults":7)"));
    ASSERT_EQ(page.assets.size(), 1U);
    EXPECT_EQ(utf8(page.assets[0].id), "7");
    EXPECT_EQ(page.totalCount, 7);
    EXPECT_EQ(page.pageCount, 1);
}

TEST_F(Results, FormatsThatAreAnObjectAreItsChildren) {
    EXPECT_EQ(assetOf(R"({"download_format_details":{"hd":{"frame_rate":50}}})").frameRate,
              Zq::FrameRate::f50);
}

TEST_F(Results, AnItemWithoutANumberAsItsIdHasTheIdOfMinusOne) {
    for (char const* const members : {"", R"("id":"7")", R"("id":null)", R"("id":[7])", R"("ID":7)"}) {
        RemoteAsset const asset = assetOf(itemWith(members));
        EXPECT_EQ(utf8(asset.id), "-1") << members;
        EXPECT_EQ(logText(asset, LogAttribute::eClipId), "FQ-1") << members;
    }
}

TEST_F(Results, TwoItemsWithoutAnIdHaveTheSameOne) {
    SearchResults const page = pageOf(answerOf("[" + itemWith("") + "," + itemWith("") + "]"));
    ASSERT_EQ(page.assets.size(), 2U);
    EXPECT_EQ(page.assets[0].id, page.assets[1].id);
    EXPECT_NE(page.assets[0].payload, page.assets[1].payload);
}

TEST_F(Results, ThePreviewOfAnItemWithoutAnAddressIsTheVirtualPathOfNone) {
    EXPECT_EQ(utf8(assetOf(itemWith("")).proxyLocation), "Virtual:FQ ");
    EXPECT_EQ(utf8(assetOf(itemWith(R"("preview_url":7)")).proxyLocation), "Virtual:FQ ");
}

TEST_F(Results, AnItemWithoutATitleHasAnEmptyName) {
    RemoteAsset const asset = assetOf(itemWith(R"("title":7)"));
    ASSERT_EQ(asset.logAttributes.entries().size(), 3U);
    EXPECT_EQ(asset.logAttributes.entries()[0].type, LogAttribute::eName);
    EXPECT_TRUE(asset.logAttributes.entries()[0].value.isEmpty());
}

TEST_F(Results, WholeRatesAreThemselves) {
    EXPECT_EQ(rateFor("24"), Zq::FrameRate::f24);
    EXPECT_EQ(rateFor("25"), Zq::FrameRate::f25);
    EXPECT_EQ(rateFor("30"), Zq::FrameRate::f30);
    EXPECT_EQ(rateFor("50.0"), Zq::FrameRate::f50);
    EXPECT_EQ(rateFor("60"), Zq::FrameRate::f60);
}

TEST_F(Results, TheHostIsAskedForTheRateWithoutItsFraction) {
    // 29 and 23: the host knows which rates they were cut short from.
    EXPECT_EQ(rateFor("29.97"), Zq::getEquivalentZqFrameRate(29));
    EXPECT_EQ(rateFor("29.97"), Zq::FrameRate::f29_97);
    EXPECT_EQ(rateFor("23.976"), Zq::getEquivalentZqFrameRate(23));
    EXPECT_EQ(rateFor("23.976"), Zq::FrameRate::f23_976);
    // The nearest rate of each figure is the one above.
    EXPECT_EQ(rateFor("59.9999"), Zq::FrameRate::f59_94);
    EXPECT_EQ(rateFor("29.9999"), Zq::FrameRate::f29_97);
    EXPECT_EQ(rateFor("24.9999"), Zq::FrameRate::f24);
    // Those without a whole number below that means a rate.
    EXPECT_EQ(rateFor("99.9999"), Zq::FrameRate::unknown);
    EXPECT_EQ(rateFor("30.9"), Zq::FrameRate::f30);
}

TEST_F(Results, ARateThatIsMissingIsUnknown) {
    EXPECT_EQ(rateOf("{}"), Zq::FrameRate::unknown);
    EXPECT_EQ(rateFor(R"("25")"), Zq::FrameRate::unknown);
    EXPECT_EQ(rateFor("null"), Zq::FrameRate::unknown);
    EXPECT_EQ(rateFor("[25]"), Zq::FrameRate::unknown);
    EXPECT_EQ(rateOf("[25]"), Zq::FrameRate::unknown);
}

TEST_F(Results, ARateThatIsNoneIsUnknown) {
    for (char const* const figure : {"0", "0.9", "-25", "-1", "26", "1e9", "1e300", "-1e300", "1e-9"}) {
        EXPECT_EQ(rateFor(figure), Zq::FrameRate::unknown) << figure;
    }
}

TEST_F(Results, OnlyTheFirstFormatIsAskedForItsRate) {
    EXPECT_EQ(rateOf(R"({"frame_rate":50},{"frame_rate":25})"), Zq::FrameRate::f50);
    EXPECT_EQ(rateOf(R"({},{"frame_rate":25})"), Zq::FrameRate::unknown);
    // A format that is no object is no entry.
    EXPECT_EQ(rateOf(R"(50,{"frame_rate":25})"), Zq::FrameRate::f25);
    EXPECT_EQ(rateOf(R"({"frame_rate":50,"frame_rate":25})"), Zq::FrameRate::f50);
}

TEST_F(Results, TheItemOutlivesItsAnswerAndIsSharedByCopies) {
    RemoteAsset copy;
    {
        RemoteAsset const asset = assetOf(wholeItem);
        copy = asset;
        EXPECT_EQ(copy.payload, asset.payload);
    }
    (void)pageOf(answerOf("[]"));
    resource.disconnect();
    auto const item = Zq::dynamicCast<JSON::Element>(copy.payload);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->getString("title"), "Sunset \u00e9");
    EXPECT_EQ(JSON::findNumber(*item, "duration"), 12.48);
    EXPECT_EQ(utf8(resource.getRemoteLocation(copy, TestResource::eThumbnail)), "https://m.test/t/123.jpg");
}

TEST_F(Results, TheItemsKeepTheOrderOfTheAnswer) {
    SearchResults const page = pageOf(answerOf("[" + itemWith(R"("id":3)") + "," + itemWith(R"("id":1)") +
                                               R"(,{"id":9},)" + itemWith(R"("id":2)") + "]"));
    std::vector<std::string> ids;
    for (RemoteAsset const& asset : page.assets) {
        ids.push_back(utf8(asset.id));
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"3", "1", "2"}));
}

TEST_F(Results, NothingOfASearchStaysInTheClient) {
    (void)assetOf(wholeItem);
    RemoteAsset bare;
    bare.id = L"123";
    EXPECT_EQ(utf8(resource.getRemoteLocation(bare, TestResource::ePreview)), "");
    EXPECT_TRUE(resource.searchResultCache.empty());
    EXPECT_TRUE(host.preferences.writes().empty());
}

TEST_F(Results, TheFurtherMembersOfThePageStayEmpty) {
    SearchResults const page = pageOf(answerOf(std::string("[") + wholeItem + "]"));
    EXPECT_EQ(page.firstIndex, 0);
    EXPECT_TRUE(page.nextPage.isEmpty());
    EXPECT_TRUE(page.message.isEmpty());
    EXPECT_EQ(page.status, 0);
}

} // namespace
} // namespace framequarry_tests
