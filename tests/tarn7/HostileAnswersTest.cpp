#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

// Whatever a service answers becomes a page: the answer goes the whole way of a search.
class HostileAnswers : public Tarn7Test {
protected:
    void expectEmptyPage(std::string const& answer) {
        SearchResults const page = pageOf(answer);
        EXPECT_TRUE(page.assets.empty()) << answer.substr(0, 80);
        EXPECT_EQ(page.pageCount, 0) << answer.substr(0, 80);
        EXPECT_EQ(page.totalCount, 0) << answer.substr(0, 80);
    }
    RemoteAsset assetOf(std::string const& item) {
        SearchResults const page = pageOf(foundItems("[" + item + "]"));
        EXPECT_EQ(page.assets.size(), 1U) << item;
        return page.assets.empty() ? RemoteAsset() : page.assets.front();
    }
    std::string idOf(std::string const& number) { return utf8(assetOf(R"({"id":)" + number + "}").id); }
    static std::string repeated(std::string_view text, std::size_t count) {
        std::string result;
        for (std::size_t i = 0; i < count; ++i) {
            result += text;
        }
        return result;
    }
};

constexpr char good[] = R"({"e":false,"commands":[{"icon_base":"i","flv_base":"p","tot_nbr_rows":1,)"
                        R"("items":[{"id":1,"n":"A","fps_real":"25","dur":"1000"}]}]})";

TEST_F(HostileAnswers, AnEmptyBodyGivesAnEmptyPage) {
    expectEmptyPage("");
}

TEST_F(HostileAnswers, ABodyThatIsCutAnywhereGivesAnEmptyPage) {
    std::string const whole = good;
    ASSERT_EQ(pageOf(whole).assets.size(), 1U);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        expectEmptyPage(whole.substr(0, length));
    }
}

TEST_F(HostileAnswers, WhatIsNotJsonGivesAnEmptyPage) {
    for (std::string const answer : {"<html></html>", "{", "}", "{]", "nul", "{\"e\":}", "\xff\xfe",
                                     "\"\\ud800\"x", "{} {}", "[1,]", "\x01", " "}) {
        expectEmptyPage(answer);
    }
}

TEST_F(HostileAnswers, ATopLevelThatIsNoObjectGivesAnEmptyPage) {
    for (std::string const answer : {"[]", "[1,2]", "5", "\"text\"", "true", "null", "[[[]]]"}) {
        expectEmptyPage(answer);
    }
    expectEmptyPage(std::string("[") + good + "]");
}

TEST_F(HostileAnswers, MembersOfTheTopWithOtherTypesGiveAnEmptyPage) {
    expectEmptyPage(R"({"commands":null})");
    expectEmptyPage(R"({"commands":5})");
    expectEmptyPage(R"({"commands":"items"})");
    expectEmptyPage(R"({"commands":[null,5,"x",true]})");
    expectEmptyPage(R"({"commands":[[]]})");
    expectEmptyPage(R"({"commands":{"items":[]}})");
    expectEmptyPage(R"({"e":true,"commands":[{"items":[{"id":1}]}]})");
}

TEST_F(HostileAnswers, AnErrorFlagThatIsNoBooleanIsNone) {
    for (std::string const flag : {R"("true")", "1", "null", "[true]", R"({"e":true})"}) {
        SearchResults const page = pageOf(R"({"e":)" + flag + R"(,"commands":[{"items":[{"id":1}]}]})");
        EXPECT_EQ(page.assets.size(), 1U) << flag;
    }
}

TEST_F(HostileAnswers, ItemsThatAreNoListGiveAnEmptyPage) {
    for (std::string const items : {"null", "5", "true", R"("x")"}) {
        expectEmptyPage(answerOf({R"({"tot_nbr_rows":9,"items":)" + items + "}"}));
    }
}

TEST_F(HostileAnswers, ItemsThatAreAnObjectAreItsChildren) {
    SearchResults const page = pageOf(foundItems(R"({"a":{"id":1,"fps_real":"25"},"b":5,"c":[]})"));
    ASSERT_EQ(page.assets.size(), 2U);
    EXPECT_EQ(utf8(page.assets[0].id), "1");
    EXPECT_EQ(utf8(page.assets[1].id), "-1");
}

TEST_F(HostileAnswers, ItemsThatAreArraysAreItemsWithoutMembers) {
    SearchResults const page = pageOf(foundItems(R"([[],[1,2],["id",7],[{"id":7}]])"));
    ASSERT_EQ(page.assets.size(), 4U);
    for (RemoteAsset const& asset : page.assets) {
        EXPECT_EQ(utf8(asset.id), "-1");
    }
}

TEST_F(HostileAnswers, ItemsThatAreScalarsAreNone) {
    SearchResults const page = pageOf(foundItems(R"([null,5,"x",true,{"id":1,"fps_real":"25"},1e5])"));
    ASSERT_EQ(page.assets.size(), 1U);
    EXPECT_EQ(utf8(page.assets[0].id), "1");
}

TEST_F(HostileAnswers, EveryMemberOfAnItemWithEveryOtherTypeReadsAsMissing) {
    std::vector<std::string> const texts = {"n", "pr", "coda", "fps_real", "dur", "fps", "ar", "codg"};
    std::vector<std::string> const numbers = {"id", "vs", "ox", "oy"};
    for (std::string const value : {"null", "true", "false", "[]", "{}", R"([{"a":1}])", R"({"a":[1]})"}) {
        std::string item;
        for (auto const& key : texts) {
            item += "\"" + key + "\":" + value + ",";
        }
        for (auto const& key : numbers) {
            item += "\"" + key + "\":" + value + ",";
        }
        item.pop_back();
        RemoteAsset const asset = assetOf("{" + item + "}");
        EXPECT_EQ(utf8(asset.id), "-1") << value;
        EXPECT_EQ(asset.audioChannels, 2) << value;
        EXPECT_EQ(asset.frameRate, Zq::FrameRate::unknown) << value;
        EXPECT_EQ(asset.logAttributes.find(LogAttribute(LogAttribute::eName)), "") << value;
        EXPECT_EQ(asset.logAttributes.find(LogAttribute(LogAttribute::ePrice)), "$") << value;
        EXPECT_EQ(asset.displayAttributes.find(LogAttribute(LogAttribute::eFormat)), "-1x-1") << value;
        EXPECT_EQ(asset.displayAttributes.find(Tarn7Resource::getDurationAttribute()), "") << value;
    }
}

TEST_F(HostileAnswers, TextsForNumbersAndNumbersForTextsReadAsMissing) {
    RemoteAsset const asset = assetOf(R"({"id":"7","vs":"4","ox":"1920","oy":"1080","n":5,"pr":79,"coda":0,)"
                                      R"("fps_real":25,"dur":1000,"fps":25,"ar":4,"codg":264})");
    EXPECT_EQ(utf8(asset.id), "-1");
    EXPECT_EQ(asset.frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(asset.logAttributes.find(LogAttribute(LogAttribute::eName)), "");
    EXPECT_EQ(asset.logAttributes.find(LogAttribute(LogAttribute::ePrice)), "$");
    EXPECT_EQ(asset.displayAttributes.find(LogAttribute(LogAttribute::eFormat)), "-1x-1");
}

TEST_F(HostileAnswers, MembersOfTheReplyWithOtherTypesReadAsMissing) {
    for (std::string const value : {"null", "true", "5", "[]", "{}"}) {
        SearchResults const page = pageOf(answerOf({R"({"items":[{"id":1,"fps_real":"25"}],"icon_base":)" +
                                                    value + R"(,"flv_base":)" + value + "}"}));
        ASSERT_EQ(page.assets.size(), 1U);
        EXPECT_EQ(utf8(page.assets[0].proxyLocation), "Virtual:T7 ") << value;
        EXPECT_TRUE(resource.iconBase.isEmpty());
        EXPECT_EQ(page.totalCount, 6875) << value;
    }
}

TEST_F(HostileAnswers, IdsOfEveryKindBecomeNumbersOf32Bits) {
    EXPECT_EQ(idOf("0"), "0");
    EXPECT_EQ(idOf("-5"), "-5");
    EXPECT_EQ(idOf("7.9"), "7");
    EXPECT_EQ(idOf("-7.9"), "-7");
    EXPECT_EQ(idOf("2147483647"), "2147483647");
    EXPECT_EQ(idOf("2147483648"), "-2147483648");
    EXPECT_EQ(idOf("4294967303"), "7");
    EXPECT_EQ(idOf("1e99"), "-1");
    EXPECT_EQ(idOf("-1e99"), "0");
    EXPECT_EQ(idOf("1e999"), "-1");
    EXPECT_EQ(idOf(R"("7")"), "-1");
    EXPECT_EQ(idOf("18446744073709551616"), "-1");
}

TEST_F(HostileAnswers, TheFirstOfTwoMembersOfOneNameWins) {
    RemoteAsset const asset = assetOf(
        R"({"id":1,"id":2,"n":"A","n":"B","fps_real":"25","fps_real":"50","dur":"1000","dur":"9000"})");
    EXPECT_EQ(utf8(asset.id), "1");
    EXPECT_EQ(asset.logAttributes.find(LogAttribute(LogAttribute::eName)), "A");
    EXPECT_EQ(asset.frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(resource.clipCache.at(1).duration, 1.0);
    SearchResults const page = pageOf(
        R"({"e":false,"e":true,"commands":[{"items":[{"id":3}],"items":[]}],"commands":[{"s":"no"}]})");
    ASSERT_EQ(page.assets.size(), 1U);
    EXPECT_EQ(utf8(page.assets[0].id), "3");
}

TEST_F(HostileAnswers, AFirstIdOfAnotherTypeLeavesTheOneThatIsANumber) {
    EXPECT_EQ(utf8(assetOf(R"({"id":"7","id":null,"id":8})").id), "8");
}

TEST_F(HostileAnswers, TextsOfTheServiceStayTexts) {
    RemoteAsset const asset = assetOf(
        R"({"id":1,"fps_real":"25","n":"<b>%s%n ../../x\n\u0000 \ud83c\udfac \ud800","pr":"1\r\n2"})");
    EXPECT_EQ(std::string(asset.logAttributes.find(LogAttribute(LogAttribute::eName)).view()),
              std::string("<b>%s%n ../../x\n\0 \U0001f3ac \ufffd", 26));
    EXPECT_EQ(asset.logAttributes.find(LogAttribute(LogAttribute::ePrice)), "$1\r\n2");
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(HostileAnswers, AThousandItemsBecomeAThousandAssets) {
    std::string items;
    for (int i = 0; i < 1000; ++i) {
        items += (i == 0 ? "" : ",") + (R"({"id":)" + std::to_string(i)) + R"(,"fps_real":"25"})";
    }
    SearchResults const page = pageOf(foundItems("[" + items + "]", R"(,"tot_nbr_rows":70000)"), 1000);
    ASSERT_EQ(page.assets.size(), 1000U);
    EXPECT_EQ(utf8(page.assets[999].id), "999");
    EXPECT_EQ(page.totalCount, 4464);
    EXPECT_EQ(page.pageCount, 5);
}

TEST_F(HostileAnswers, MoreItemsThanAnIndexHoldsEndWithTheIndex) {
    std::string items = "[{}";
    items.reserve(70000 * 3);
    for (int i = 1; i < 70000; ++i) {
        items += ",{}";
    }
    // All of them are one clip without an id.
    resource.clipCache[0xffffffffU] = {Zq::FrameRate::f25, 1.0};
    SearchResults const page = pageOf(foundItems(items + "]"));
    EXPECT_EQ(page.assets.size(), 65535U);
    EXPECT_EQ(resource.clipCache.size(), 1U);
}

TEST_F(HostileAnswers, APageOfSizeZeroKeepsItsAssets) {
    SearchResults const page =
        pageOf(foundItems(R"([{"id":1,"fps_real":"25"}])", R"(,"tot_nbr_rows":60)"), 0);
    EXPECT_EQ(page.assets.size(), 1U);
    EXPECT_EQ(page.pageCount, 0);
    EXPECT_EQ(page.totalCount, 60);
}

TEST_F(HostileAnswers, DeepNestingIsReadOrRefused) {
    std::string const deep = repeated("[", 400) + repeated("]", 400);
    RemoteAsset const asset = assetOf(R"({"id":1,"fps_real":"25","x":)" + deep + "}");
    EXPECT_EQ(utf8(asset.id), "1");
    std::string const tooDeep = repeated("[", 100000) + repeated("]", 100000);
    expectEmptyPage(foundItems(R"([{"id":1,"x":)" + tooDeep + "}]"));
    expectEmptyPage(tooDeep);
}

TEST_F(HostileAnswers, SignInSurvivesEveryOneOfThem) {
    connect();
    for (std::string const answer :
         {"", "[]", "5", "null", "{\"commands\":[[]]}", "{\"commands\":{}}",
          R"({"commands":[{"cx":[],"cm":{}}]})", R"({"commands":[{"s":["no"]}]})"}) {
        host.network.answerWith(answer);
        EXPECT_EQ(resource.login(typedForm("ada", "secret")), 17) << answer;
        EXPECT_TRUE(resource.signedInUser.isEmpty());
    }
}

TEST_F(HostileAnswers, TheLookupOfClipsSurvivesEveryOneOfThem) {
    connect();
    for (std::string const answer :
         {"", "[]", "5", R"({"commands":[[]]})", R"({"commands":[{"clip_data":[1]}]})",
          R"({"commands":[{"clip_data":{"pim_aut_fps_real":[],"pim_aut_duration_ms":{}}}]})"}) {
        resource.clipCache.clear();
        host.network.answerWith(answer);
        LightweightVector<RemoteAsset> assets(1);
        assets[0].id = L"7";
        resource.getClipData(assets);
        EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::unknown) << answer;
    }
}

} // namespace
} // namespace tarn7_tests
