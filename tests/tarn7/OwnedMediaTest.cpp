#include "tests/tarn7/ScriptedService.h"

namespace tarn7_tests {
namespace {

constexpr char list[] = "get_downloads_formatted";
constexpr char lookup[] = "get_clip_data";

class OwnedMedia : public ScriptedServiceTest {
protected:
    // The account owns these items.
    void owns(std::string const& items) {
        reply(list, R"({"flv_base":"https://cdn.test/p","icon_base":"https://cdn.test/i","items":[)" + items +
                        "]}");
    }
    // An item with these versions, each given by its members.
    static std::string item(std::string const& bid, std::vector<std::string> const& versions) {
        std::string text = R"({"bid":")" + bid + R"(","versions":[)";
        for (std::string const& version : versions) {
            text += (text.ends_with('[') ? "{" : ",{") + version + "}";
        }
        return text + "]}";
    }
    // The name of the version that is chosen from an item with these.
    std::string chosen(std::vector<std::string> const& versions) {
        owns(item("1", versions));
        LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
        EXPECT_EQ(assets.size(), 1U);
        return assets.size() == 1 ? name(assets[0]) : std::string();
    }
    static std::string name(RemoteAsset const& asset) {
        return std::string(asset.logAttributes.find(LogAttribute(LogAttribute::eName)).view());
    }
    static std::string column(RemoteAsset const& asset, LogAttribute const& attribute) {
        return std::string(asset.displayAttributes.find(attribute).view());
    }
    static std::vector<int> types(LogAttributeMap const& attributes) {
        std::vector<int> result;
        for (LogAttributeMap::Entry const& entry : attributes.entries()) {
            result.push_back(entry.type);
        }
        return result;
    }
    bool isOwned(wchar_t const* id) {
        RemoteAsset asset;
        asset.id = id;
        return resource.isPurchased(asset);
    }
};

TEST_F(OwnedMedia, AnAssetHasWhatTheItemAndItsVersionSay) {
    owns(R"({"bid":"123","n":"of the item","versions":[{"ext":"mxf","n":"Sea & sky","tr":"t1","v":"v1",)"
         R"("fps":"25","dur":"65000","vs":4,"codg":"DV","pr":"79","coda":"no snd"}]})");
    LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
    ASSERT_EQ(assets.size(), 1U);
    RemoteAsset const& asset = assets[0];
    EXPECT_EQ(utf8(asset.id), "123");
    EXPECT_EQ(utf8(asset.mediaExtension), "mxf");
    EXPECT_EQ(asset.assetKind, 1);
    EXPECT_EQ(utf8(asset.proxyLocation), "Virtual:T7 https://cdn.test/p/000000123.mov");
    EXPECT_EQ(asset.frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(name(asset), "Sea & sky");
    EXPECT_EQ(asset.logAttributes.find(LogAttribute(LogAttribute::eClipId)), "T7123");
    EXPECT_EQ(types(asset.logAttributes), (std::vector<int>{1, 23}));
    auto const payload = Zq::dynamicCast<JSON::Element>(asset.payload);
    ASSERT_TRUE(payload);
    EXPECT_EQ(payload->getString("tr"), "t1");
    EXPECT_EQ(payload->getString("v"), "v1");
}

TEST_F(OwnedMedia, WhatTheListDoesNotSayStaysAtItsDefault) {
    owns(item("123", {R"("fps":"25","pr":"79","coda":"no snd")"}));
    RemoteAsset const asset = resource.getPurchasedAssets().at(0);
    RemoteAsset const none;
    EXPECT_TRUE(asset.proxyExtension.isEmpty());
    EXPECT_TRUE(asset.mediaLocation.isEmpty());
    EXPECT_EQ(asset.videoChannels, none.videoChannels);
    EXPECT_EQ(asset.audioChannels, none.audioChannels);
    EXPECT_EQ(asset.status, none.status);
}

TEST_F(OwnedMedia, TheColumnsAreTheFormatTheRateTheOwnedWordAndTheLength) {
    owns(item("1", {R"("fps":"25","dur":"65000","vs":3,"ar":"4:3","codg":"DV","pr":"79")"}));
    host.strings.texts[13477] = L"Gekauft";
    RemoteAsset const asset = resource.getPurchasedAssets().at(0);
    LogAttribute const duration = Tarn7Resource::getDurationAttribute();
    EXPECT_EQ(types(asset.displayAttributes), (std::vector<int>{45, 18, 59, duration.getType()}));
    EXPECT_EQ(column(asset, LogAttribute(LogAttribute::eFormat)), "576i 4:3, DV");
    EXPECT_EQ(column(asset, LogAttribute(LogAttribute::eFrameRate)), "25");
    EXPECT_EQ(column(asset, LogAttribute(LogAttribute::ePrice)), "Gekauft");
    EXPECT_EQ(column(asset, duration), "1:05");
}

TEST_F(OwnedMedia, ARateThatStaysUnknownIsAnEmptyColumn) {
    owns(item("1", {"", ""}));
    RemoteAsset const asset = resource.getPurchasedAssets().at(0);
    EXPECT_EQ(asset.frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(column(asset, LogAttribute(LogAttribute::eFrameRate)), "");
    EXPECT_EQ(types(asset.displayAttributes).size(), 4U);
}

TEST_F(OwnedMedia, TheLastOfThreeIsTakenWhenTheOthersHaveAnOffset) {
    EXPECT_EQ(chosen({R"("n":"a","bitoffset":1)", R"("n":"b","bitoffset":0)", R"("n":"c")"}), "c");
}

TEST_F(OwnedMedia, TheOnlyVersionIsTakenWithItsOffset) {
    EXPECT_EQ(chosen({R"("n":"a","bitoffset":1)"}), "a");
}

TEST_F(OwnedMedia, TheFirstWithoutAnOffsetIsTaken) {
    EXPECT_EQ(chosen({R"("n":"a")", R"("n":"b")"}), "a");
    EXPECT_EQ(chosen({R"("n":"a","bitoffset":1)", R"("n":"b")", R"("n":"c")"}), "b");
}

TEST_F(OwnedMedia, TheLastIsTakenWhenAllHaveAnOffset) {
    EXPECT_EQ(chosen({R"("n":"a","bitoffset":1)", R"("n":"b","bitoffset":2)"}), "b");
}

TEST_F(OwnedMedia, AnOffsetThatIsNoNumberIsNone) {
    for (std::string const offset : {R"("1")", "null", "true", "[1]", R"({"bitoffset":1})"}) {
        EXPECT_EQ(chosen({R"("n":"a","bitoffset":)" + offset, R"("n":"b")"}), "a") << offset;
    }
}

TEST_F(OwnedMedia, AnItemWithoutVersionsGivesNoAsset) {
    owns(R"({"bid":"1"},{"bid":"2","versions":[]},{"bid":"3","versions":null},{"bid":"4","versions":5},)"
         R"({"bid":"5","versions":"x"},{"bid":"6","versions":[null,5,"x",true]},)" +
         item("7", {R"("fps":"25")"}));
    LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
    ASSERT_EQ(assets.size(), 1U);
    EXPECT_EQ(utf8(assets[0].id), "7");
    EXPECT_EQ(resource.purchasedIds, std::set<WideString>{L"7"});
}

TEST_F(OwnedMedia, AssetsStandInTheOrderOfTheItems) {
    owns(item("9", {R"("fps":"25")"}) + "," + item("10", {R"("fps":"25")"}) + "," +
         item("1", {R"("fps":"25")"}));
    std::vector<std::string> ids;
    for (RemoteAsset const& asset : resource.getPurchasedAssets()) {
        ids.push_back(utf8(asset.id));
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"9", "10", "1"}));
}

TEST_F(OwnedMedia, AClipThatWasBoughtTwiceIsTwoAssetsAndOneEntry) {
    owns(item("7", {R"("n":"a","fps":"25")"}) + "," + item("7", {R"("n":"b","fps":"25")"}));
    LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
    ASSERT_EQ(assets.size(), 2U);
    EXPECT_EQ(name(assets[0]), "a");
    EXPECT_EQ(name(assets[1]), "b");
    EXPECT_EQ(resource.purchasedIds.size(), 1U);
    EXPECT_TRUE(isOwned(L"7"));
    EXPECT_FALSE(isOwned(L"8"));
}

TEST_F(OwnedMedia, UnknownRatesAreAskedForInOneRequestAndRemembered) {
    owns(item("1", {""}) + "," + item("2", {R"("fps":"50")"}) + "," + item("3", {R"("fps":"30")"}));
    answer(lookup, answerOf({R"({"clip_data":{"pim_aut_fps_real":"29.97","pim_aut_duration_ms":"1500"}})",
                             R"({"clip_data":{"pim_aut_fps_real":"24","pim_aut_duration_ms":"2500"}})"}));
    LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
    EXPECT_EQ(sent(), (std::vector<std::string>{R"([{"command":"get_downloads_formatted"}])",
                                                R"([{"command":"get_clip_data","itemid":"1"},)"
                                                R"({"command":"get_clip_data","itemid":"3"}])"}));
    ASSERT_EQ(assets.size(), 3U);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::f50);
    EXPECT_EQ(assets[2].frameRate, Zq::FrameRate::f24);
    EXPECT_EQ(column(assets[0], LogAttribute(LogAttribute::eFrameRate)), "29.97");
    EXPECT_EQ(resource.getClipDuration(assets[0]), 1.5);

    host.network.forgetRequests();
    EXPECT_EQ(resource.getPurchasedAssets().at(0).frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(OwnedMedia, AnEmptyListIsOneRequest) {
    resource.purchasedIds = {L"1"};
    owns("");
    EXPECT_TRUE(resource.getPurchasedAssets().empty());
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_TRUE(resource.purchasedIds.empty());
}

TEST_F(OwnedMedia, TheFirstAnswerSetsTheAddressesAndLaterOnesDoNot) {
    owns("");
    (void)resource.getPurchasedAssets();
    EXPECT_EQ(utf8(resource.previewBase), "https://cdn.test/p");
    EXPECT_EQ(utf8(resource.iconBase), "https://cdn.test/i");
    reply(list, R"({"flv_base":"https://other.test/p","icon_base":"https://other.test/i","items":[)" +
                    item("1", {R"("fps":"25")"}) + "]}");
    LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
    EXPECT_EQ(utf8(resource.previewBase), "https://cdn.test/p");
    EXPECT_EQ(utf8(resource.iconBase), "https://cdn.test/i");
    EXPECT_EQ(utf8(assets.at(0).proxyLocation), "Virtual:T7 https://cdn.test/p/000000001.mov");
}

TEST_F(OwnedMedia, OnlyTheAddressOfPreviewsSaysWhetherBothAreSet) {
    resource.iconBase = L"https://kept.test/i";
    owns("");
    (void)resource.getPurchasedAssets();
    EXPECT_EQ(utf8(resource.iconBase), "https://cdn.test/i");

    resource.previewBase = L"https://kept.test/p";
    resource.iconBase.clear();
    (void)resource.getPurchasedAssets();
    EXPECT_EQ(utf8(resource.previewBase), "https://kept.test/p");
    EXPECT_TRUE(resource.iconBase.isEmpty());
}

TEST_F(OwnedMedia, WithoutAnAddressOfPreviewsTheVirtualPathIsEmpty) {
    reply(list, R"({"items":[)" + item("1", {R"("fps":"25")"}) + "]}");
    EXPECT_EQ(utf8(resource.getPurchasedAssets().at(0).proxyLocation), "Virtual:T7 ");
}

TEST_F(OwnedMedia, AFailureEmptiesWhatIsKnownToBeOwned) {
    std::string const reply = R"({"flv_base":"p","items":[)" + item("7", {R"("fps":"25")"}) + "]";
    for (std::string const& failure : {R"({"e":true,"commands":[)" + reply + "}]}",
                                       R"({"commands":[)" + reply + R"(,"s":"not signed in"}]})"}) {
        owns(item("7", {R"("fps":"25")"}));
        ASSERT_EQ(resource.getPurchasedAssets().size(), 1U);
        ASSERT_TRUE(isOwned(L"7"));
        answer(list, failure);
        EXPECT_TRUE(resource.getPurchasedAssets().empty()) << failure;
        EXPECT_TRUE(resource.purchasedIds.empty()) << failure;
        EXPECT_FALSE(isOwned(L"7"));
    }
    owns(item("7", {R"("fps":"25")"}));
    EXPECT_EQ(resource.getPurchasedAssets().size(), 1U);
    EXPECT_TRUE(isOwned(L"7"));
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(OwnedMedia, AFailureSetsNoAddress) {
    answer(list, R"({"commands":[{"s":"no","flv_base":"https://cdn.test/p","icon_base":"i"}]})");
    (void)resource.getPurchasedAssets();
    EXPECT_TRUE(resource.previewBase.isEmpty());
    EXPECT_TRUE(resource.iconBase.isEmpty());
}

TEST_F(OwnedMedia, WithoutAnAnswerNothingIsOwned) {
    resource.purchasedIds = {L"1"};
    EXPECT_TRUE(resource.getPurchasedAssets().empty());
    EXPECT_TRUE(resource.purchasedIds.empty());
    resource.disconnect();
    resource.purchasedIds = {L"1"};
    EXPECT_TRUE(resource.getPurchasedAssets().empty());
    EXPECT_TRUE(resource.purchasedIds.empty());
}

TEST_F(OwnedMedia, TheReplysOwnFlagDoesNotMakeTheListFail) {
    reply(list, R"({"e":true,"items":[)" + item("7", {R"("fps":"25")"}) + "]}");
    EXPECT_EQ(resource.getPurchasedAssets().size(), 1U);
}

TEST_F(OwnedMedia, AnOwnedClipShowsAsOwnedInASearch) {
    owns(item("7", {R"("fps":"25")"}));
    ASSERT_EQ(resource.getPurchasedAssets().size(), 1U);
    SearchResults const page = pageOf(foundItems(R"([{"id":7,"pr":"79","fps_real":"25"},)"
                                                 R"({"id":8,"pr":"79","fps_real":"25"}])"));
    ASSERT_EQ(page.assets.size(), 2U);
    EXPECT_EQ(column(page.assets[0], LogAttribute(LogAttribute::ePrice)), "#13477");
    EXPECT_EQ(column(page.assets[1], LogAttribute(LogAttribute::ePrice)), "$79");
}

TEST_F(OwnedMedia, ASignOutForgetsWhatIsOwned) {
    signIn();
    host.network.answerWith(answerOf({R"({"items":[)" + item("7", {R"("fps":"25")"}) + "]}"}));
    ASSERT_EQ(resource.getPurchasedAssets().size(), 1U);
    resource.logout();
    EXPECT_TRUE(resource.purchasedIds.empty());
}

TEST_F(OwnedMedia, AnAssetOutlivesTheAnswerAndTheNextList) {
    owns(item("7", {R"("fps":"25","tr":"t7")"}));
    LightweightVector<RemoteAsset> const first = resource.getPurchasedAssets();
    owns("");
    (void)resource.getPurchasedAssets();
    EXPECT_EQ(Zq::dynamicCast<JSON::Element>(first.at(0).payload)->getString("tr"), "t7");
}

TEST_F(OwnedMedia, AnswersWithoutSenseGiveNothing) {
    for (std::string const& senseless : senselessAnswers()) {
        resource.purchasedIds = {L"1"};
        answer(list, senseless);
        EXPECT_TRUE(resource.getPurchasedAssets().empty()) << senseless;
        EXPECT_TRUE(resource.purchasedIds.empty()) << senseless;
    }
}

TEST_F(OwnedMedia, ItemsThatAreNoListGiveNothing) {
    for (std::string const items : {"null", "5", "true", R"("x")", "[]", "{}", "[null,5,true]", "[[],[1]]"}) {
        reply(list, R"({"items":)" + items + "}");
        EXPECT_TRUE(resource.getPurchasedAssets().empty()) << items;
    }
}

TEST_F(OwnedMedia, MembersOfOtherTypesReadAsMissing) {
    for (std::string const value : {"null", "5", "true", "[]", R"({"a":1})"}) {
        std::string version = R"({"fps":)" + value;
        for (std::string const key : {"ext", "n", "tr", "v", "dur", "codg", "ar"}) {
            version += ",\"" + key + "\":" + value;
        }
        reply(list, R"({"flv_base":)" + value + R"(,"icon_base":)" + value + R"(,"items":[{"bid":)" + value +
                        R"(,"versions":[)" + version + "}]}]}");
        LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
        ASSERT_EQ(assets.size(), 1U) << value;
        EXPECT_TRUE(assets[0].id.isEmpty()) << value;
        EXPECT_TRUE(assets[0].mediaExtension.isEmpty()) << value;
        EXPECT_EQ(name(assets[0]), "") << value;
        EXPECT_EQ(assets[0].logAttributes.find(LogAttribute(LogAttribute::eClipId)), "T7") << value;
        EXPECT_EQ(column(assets[0], LogAttribute(LogAttribute::eFormat)), "-1x-1") << value;
        EXPECT_EQ(column(assets[0], Tarn7Resource::getDurationAttribute()), "") << value;
        EXPECT_TRUE(resource.previewBase.isEmpty()) << value;
    }
}

TEST_F(OwnedMedia, VersionsThatAreAnObjectAreItsChildren) {
    owns(R"({"bid":"1","versions":{"a":{"n":"first","bitoffset":1},"b":5,"c":{"n":"second","fps":"25"}}})");
    LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
    ASSERT_EQ(assets.size(), 1U);
    EXPECT_EQ(name(assets[0]), "second");
}

TEST_F(OwnedMedia, FiftyThousandClipsAreTwoRequests) {
    constexpr int count = 50000;
    std::string items;
    std::string replies = R"({"commands":[)";
    for (int i = 0; i < count; ++i) {
        items += (i == 0 ? "" : ",") + item(std::to_string(i), {R"("n":"x","bitoffset":1)", R"("n":"y")"});
        replies += (i == 0 ? "" : ",") + std::string(R"({"clip_data":{"pim_aut_fps_real":"25",)") +
                   R"("pim_aut_duration_ms":")" + std::to_string(i) + R"("}})";
    }
    owns(items);
    answer(lookup, replies + "]}");
    LightweightVector<RemoteAsset> const assets = resource.getPurchasedAssets();
    ASSERT_EQ(assets.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(host.network.requestCount(), 2U);
    EXPECT_EQ(resource.purchasedIds.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(utf8(assets.back().id), "49999");
    EXPECT_EQ(name(assets.back()), "y");
    EXPECT_EQ(assets.back().frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(resource.getClipDuration(assets.back()), 49.999);
}

TEST_F(OwnedMedia, AListLongerThanItsCountEndsWithTheCount) {
    std::string const one = R"({"bid":"1","versions":[{"fps":"25"}]})";
    std::string items = one;
    for (int i = 1; i < 70000; ++i) {
        items += "," + one;
    }
    owns(items);
    EXPECT_EQ(resource.getPurchasedAssets().size(), 65535U);
    EXPECT_EQ(resource.purchasedIds.size(), 1U);
}

} // namespace
} // namespace tarn7_tests
