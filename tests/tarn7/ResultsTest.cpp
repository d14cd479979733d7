#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class Results : public Tarn7Test {
protected:
    RemoteAsset firstOf(std::string answer) {
        SearchResults const page = pageOf(std::move(answer));
        EXPECT_FALSE(page.assets.empty());
        return page.assets.empty() ? RemoteAsset() : page.assets.front();
    }
    RemoteAsset assetOf(std::string const& members) { return firstOf(foundItems("[{" + members + "}]")); }
    static std::string logText(RemoteAsset const& asset, int type) {
        return std::string(
            asset.logAttributes.find(LogAttribute(static_cast<LogAttribute::eType>(type))).view());
    }
    static std::string shown(RemoteAsset const& asset, int type) {
        return std::string(
            asset.displayAttributes.find(LogAttribute(static_cast<LogAttribute::eType>(type))).view());
    }
    static std::string shownDuration(RemoteAsset const& asset) {
        return std::string(asset.displayAttributes.find(Tarn7Resource::getDurationAttribute()).view());
    }
    static std::vector<int> typesOf(LogAttributeMap const& map) {
        std::vector<int> types;
        for (auto const& entry : map.entries()) {
            types.push_back(entry.type);
        }
        return types;
    }
};

constexpr char wholeItem[] =
    R"("id":123,"n":"Sunset","pr":"79","coda":"aac","fps_real":"29.97","dur":"65000",)"
    R"("fps":"30","vs":4,"ox":1920,"oy":1080,"ar":"16:9","codg":"H.264")";

TEST_F(Results, AnItemBecomesAnAssetMemberByMember) {
    RemoteAsset const asset = assetOf(wholeItem);
    EXPECT_EQ(utf8(asset.id), "123");
    EXPECT_EQ(asset.assetKind, 1);
    EXPECT_EQ(asset.status, 1);
    EXPECT_EQ(utf8(asset.mediaExtension), "mov");
    EXPECT_EQ(utf8(asset.proxyExtension), "mov");
    EXPECT_EQ(utf8(asset.proxyLocation), "Virtual:T7 https://cdn.test/p/000000123.mov");
    EXPECT_TRUE(asset.mediaLocation.isEmpty());
    EXPECT_TRUE(asset.auxiliaryText.isEmpty());
    EXPECT_EQ(asset.mediaSize, 0U);
    EXPECT_EQ(asset.proxySize, 0U);
    EXPECT_EQ(asset.videoChannels, 1);
    EXPECT_EQ(asset.audioChannels, 2);
    EXPECT_EQ(static_cast<int>(asset.frameRate), 4);
    EXPECT_EQ(asset.cookie, Cookie());
}

TEST_F(Results, TheAttributesThatStayAreAddedInTheirOrder) {
    RemoteAsset const asset = assetOf(wholeItem);
    EXPECT_EQ(typesOf(asset.logAttributes), (std::vector<int>{1, 23, 6, 59}));
    EXPECT_EQ(logText(asset, 1), "Sunset");
    EXPECT_EQ(logText(asset, 23), "T7123");
    EXPECT_EQ(logText(asset, 6), "Tarn7");
    EXPECT_EQ(logText(asset, 59), "$79");
    EXPECT_EQ(utf8(resource.getAttribute(asset, LogAttribute(LogAttribute::eName))), "Sunset");
}

TEST_F(Results, TheColumnsAreAddedInTheirOrder) {
    RemoteAsset const asset = assetOf(wholeItem);
    EXPECT_EQ(typesOf(asset.displayAttributes), (std::vector<int>{45, 18, 59, 1003}));
    EXPECT_EQ(shown(asset, 45), "1080p, H.264");
    EXPECT_EQ(shown(asset, 18), "29.97");
    EXPECT_EQ(shown(asset, 59), "$79");
    EXPECT_EQ(shownDuration(asset), "1:05");
}

TEST_F(Results, AnItemWithoutMembersHasADefaultForEach) {
    RemoteAsset const asset = assetOf("");
    EXPECT_EQ(utf8(asset.id), "-1");
    EXPECT_EQ(asset.audioChannels, 2);
    EXPECT_EQ(asset.frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(utf8(asset.proxyLocation), "Virtual:T7 https://cdn.test/p/0000000-1.mov");
    EXPECT_EQ(logText(asset, 1), "");
    EXPECT_EQ(logText(asset, 23), "T7-1");
    EXPECT_EQ(logText(asset, 59), "$");
    EXPECT_EQ(shown(asset, 45), "-1x-1");
    EXPECT_EQ(shown(asset, 18), "");
    EXPECT_EQ(shown(asset, 59), "$");
    EXPECT_EQ(shownDuration(asset), "");
    ASSERT_TRUE(resource.clipCache.contains(0xffffffffU));
    EXPECT_EQ(resource.clipCache.at(0xffffffffU).duration, 0.0);
}

TEST_F(Results, TwoItemsWithoutAnIdShareOneEntryOfTheCache) {
    SearchResults const page = pageOf(foundItems(R"([{"fps_real":"25","dur":"1000"},{"fps_real":"50"}])"));
    EXPECT_EQ(resource.clipCache.size(), 1U);
    ASSERT_EQ(page.assets.size(), 2U);
    EXPECT_EQ(page.assets[0].frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(page.assets[1].frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(resource.clipCache.at(0xffffffffU).duration, 1.0);
}

TEST_F(Results, NoSoundIsToldByOneExactText) {
    EXPECT_EQ(assetOf(R"("coda":"no snd")").audioChannels, 0);
    EXPECT_EQ(assetOf(R"("coda":"No snd")").audioChannels, 2);
    EXPECT_EQ(assetOf(R"("coda":"no snd ")").audioChannels, 2);
    EXPECT_EQ(assetOf(R"("coda":"")").audioChannels, 2);
}

TEST_F(Results, TheItemOutlivesItsAnswerAndIsSharedByCopies) {
    RemoteAsset const asset = assetOf(wholeItem);
    (void)pageOf(foundItems("[]"));
    RemoteAsset const copy = asset;
    EXPECT_EQ(copy.payload, asset.payload);
    auto const item = Zq::dynamicCast<JSON::Element>(copy.payload);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->getString("n"), "Sunset");
}

TEST_F(Results, TheItemsKeepTheOrderOfTheAnswer) {
    SearchResults const page =
        pageOf(foundItems(R"([{"id":3,"fps_real":"25"},{"id":1,"fps_real":"25"},{"id":2,"fps_real":"25"}])"));
    ASSERT_EQ(page.assets.size(), 3U);
    EXPECT_EQ(utf8(page.assets[0].id), "3");
    EXPECT_EQ(utf8(page.assets[1].id), "1");
    EXPECT_EQ(utf8(page.assets[2].id), "2");
}

TEST_F(Results, APageCostsOneRequestWhereEveryRateIsKnown) {
    (void)pageOf(foundItems(R"([{"id":1,"fps_real":"25"},{"id":2,"fps_real":"23.976"}])"));
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(Results, APageCostsOneFurtherRequestForAllRatesThatAreNot) {
    (void)pageOf(foundItems(R"([{"id":1},{"id":2},{"id":3,"fps_real":"25"}])"));
    ASSERT_EQ(host.network.requestCount(), 2U);
    EXPECT_NE(lastBody().find(R"([{\"command\":\"get_clip_data\",\"itemid\":\"1\"},)"
                              R"({\"command\":\"get_clip_data\",\"itemid\":\"2\"}])"),
              std::string::npos);
}

TEST_F(Results, AnUnknownRateOfASearchStaysUnknownWhateverTheServiceAnswers) {
    connect();
    host.network.answerWith([](fake::Request const& request) {
        bool const lookup = request.body.find("get_clip_data") != std::string::npos;
        return fake::Answer{
            lookup ? answerOf({R"({"clip_data":{"pim_aut_fps_real":"25","pim_aut_duration_ms":"9000"}})"})
                   : foundItems(R"([{"id":1,"fps":"25","dur":"2000"}])")};
    });
    for (int time = 0; time < 2; ++time) {
        host.network.forgetRequests();
        SearchResults const page = resource.searchInternal({});
        EXPECT_EQ(host.network.requestCount(), 2U);
        ASSERT_EQ(page.assets.size(), 1U);
        EXPECT_EQ(page.assets[0].frameRate, Zq::FrameRate::unknown);
        EXPECT_EQ(shown(page.assets[0], 18), "");
        EXPECT_EQ(resource.clipCache.at(1).duration, 2.0);
    }
}

TEST_F(Results, ALaterSearchKeepsTheRateAndLengthOfTheFirst) {
    (void)assetOf(R"("id":1,"fps_real":"25","dur":"2000")");
    RemoteAsset const again = assetOf(R"("id":1,"fps_real":"50","dur":"3000")");
    EXPECT_EQ(again.frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(resource.clipCache.at(1).frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(resource.clipCache.at(1).duration, 2.0);
    EXPECT_EQ(shownDuration(again), "0:03");
}

TEST_F(Results, AnOwnedClipShowsTheHostsWordAndKeepsItsPrice) {
    resource.purchasedIds = {L"123"};
    RemoteAsset const asset = assetOf(wholeItem);
    EXPECT_EQ(shown(asset, 59), "#13477");
    EXPECT_EQ(logText(asset, 59), "$79");
    EXPECT_EQ(utf8(resource.getPriceText(asset)), "#13477");
}

TEST_F(Results, APriceWithoutAPayloadIsTheSignAlone) {
    EXPECT_EQ(utf8(resource.getPriceText(RemoteAsset())), "$");
}

TEST_F(Results, AnEmptyPageStillSetsBothBaseAddresses) {
    SearchResults const page = pageOf(foundItems("[]", R"(,"tot_nbr_rows":0)"));
    EXPECT_TRUE(page.assets.empty());
    EXPECT_EQ(page.pageCount, 0);
    EXPECT_EQ(page.totalCount, 0);
    EXPECT_EQ(utf8(resource.iconBase), "https://cdn.test/i");
    EXPECT_EQ(utf8(resource.previewBase), "https://cdn.test/p");
}

TEST_F(Results, EmptyBaseAddressesReplaceTheOlderOnes) {
    (void)pageOf(foundItems("[]"));
    RemoteAsset const asset = firstOf(answerOf({R"({"icon_base":"","items":[{"id":5,"fps_real":"25"}]})"}));
    EXPECT_TRUE(resource.iconBase.isEmpty());
    EXPECT_TRUE(resource.previewBase.isEmpty());
    EXPECT_EQ(utf8(asset.proxyLocation), "Virtual:T7 ");
}

TEST_F(Results, WithoutItemsThePageIsEmptyAndTheBaseAddressesStay) {
    (void)pageOf(foundItems("[]"));
    SearchResults const page = pageOf(answerOf({R"({"icon_base":"x","flv_base":"y","tot_nbr_rows":9})"}));
    EXPECT_TRUE(page.assets.empty());
    EXPECT_EQ(page.pageCount, 0);
    EXPECT_EQ(page.totalCount, 0);
    EXPECT_EQ(utf8(resource.iconBase), "https://cdn.test/i");
    EXPECT_EQ(utf8(resource.previewBase), "https://cdn.test/p");
}

TEST_F(Results, AFailedSearchIsTheEmptyRecord) {
    SearchResults const page = pageOf(R"({"e":true})");
    EXPECT_TRUE(page.assets.empty());
    EXPECT_EQ(page.pageCount, 0);
    EXPECT_EQ(page.totalCount, 0);
    EXPECT_EQ(page.firstIndex, 0);
    EXPECT_TRUE(page.nextPage.isEmpty());
    EXPECT_TRUE(page.message.isEmpty());
    EXPECT_EQ(page.status, 0);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Results, APageLeavesTheFurtherFieldsAlone) {
    SearchResults const page = pageOf(foundItems(R"([{"id":1,"fps_real":"25"}])", R"(,"tot_nbr_rows":60)"));
    EXPECT_EQ(page.firstIndex, 0);
    EXPECT_TRUE(page.nextPage.isEmpty());
    EXPECT_TRUE(page.message.isEmpty());
    EXPECT_EQ(page.status, 0);
}

} // namespace
} // namespace tarn7_tests
