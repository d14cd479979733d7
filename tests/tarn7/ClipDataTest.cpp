#include <nlohmann/json.hpp>

#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class ClipData : public Tarn7Test {
protected:
    void SetUp() override { connect(); }

    static RemoteAsset asset(wchar_t const* id, std::string const& members = "") {
        RemoteAsset result;
        result.id = id;
        result.payload = parsed("{" + members + "}");
        return result;
    }
    static std::string clip(std::string const& rate, std::string const& length_ms) {
        return R"({"clip_data":{"pim_aut_fps_real":")" + rate + R"(","pim_aut_duration_ms":")" + length_ms +
               R"("}})";
    }
    // The ids that the last request asked for, in order.
    [[nodiscard]] std::vector<std::string> askedIds() const {
        std::string const list = nlohmann::json::parse(lastBody().substr(4))["commands_json"];
        std::vector<std::string> ids;
        for (auto const& command : nlohmann::json::parse(list)) {
            EXPECT_EQ(command["command"], "get_clip_data");
            EXPECT_EQ(command.size(), 2U);
            ids.push_back(command["itemid"]);
        }
        return ids;
    }
    static int trusted(std::string const& members) {
        return static_cast<int>(Tarn7Resource::getTrustedFrameRate(*parsed("{" + members + "}")));
    }
};

TEST_F(ClipData, OnlyThreeCoarseRatesAreBelieved) {
    EXPECT_EQ(trusted(R"("fps":"25")"), 3);
    EXPECT_EQ(trusted(R"("fps":"50")"), 8);
    EXPECT_EQ(trusted(R"("fps":"100")"), 43);
    EXPECT_EQ(trusted(R"("fps":"25.00")"), 3);
    for (char const* const rate : {"23", "24", "29.97", "30", "48", "59", "60", "72", "120", "12", "15"}) {
        EXPECT_EQ(trusted(std::string(R"("fps":")") + rate + R"(")"), 0) << rate;
    }
}

TEST_F(ClipData, ACoarseRateThatIsNoTextOfANumberIsUnknown) {
    EXPECT_EQ(trusted(""), 0);
    EXPECT_EQ(trusted(R"("fps":"")"), 0);
    EXPECT_EQ(trusted(R"("fps":"fast")"), 0);
    EXPECT_EQ(trusted(R"("fps":25)"), 0);
}

TEST_F(ClipData, AnEmptyListSendsNothing) {
    LightweightVector<RemoteAsset> none;
    resource.getClipData(none);
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(ClipData, AListWhoseRatesAreAllBelievedSendsNothing) {
    LightweightVector<RemoteAsset> assets{asset(L"1", R"("fps":"25")"), asset(L"2", R"("fps":"50")"),
                                          asset(L"3", R"("fps":"100")")};
    resource.getClipData(assets);
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::f50);
    EXPECT_EQ(assets[2].frameRate, Zq::FrameRate::f100);
    EXPECT_TRUE(resource.clipCache.empty());
}

TEST_F(ClipData, TheCacheComesBeforeTheCoarseRate) {
    resource.clipCache[1] = {Zq::FrameRate::f29_97, 3.0};
    LightweightVector<RemoteAsset> assets{asset(L"1", R"("fps":"25")")};
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(ClipData, AnOlderRateOfTheAssetCountsForNothing) {
    LightweightVector<RemoteAsset> assets{asset(L"1")};
    assets[0].frameRate = Zq::FrameRate::f60;
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(ClipData, AnUnknownClipIsAskedForAndRemembered) {
    LightweightVector<RemoteAsset> assets{asset(L"7")};
    host.network.answerWith(answerOf({clip("29.97", "12500")}));
    resource.getClipData(assets);
    EXPECT_EQ(askedIds(), std::vector<std::string>{"7"});
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f29_97);
    ASSERT_TRUE(resource.clipCache.contains(7));
    EXPECT_EQ(resource.clipCache.at(7).frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(resource.clipCache.at(7).duration, 12.5);

    host.network.forgetRequests();
    LightweightVector<RemoteAsset> again{asset(L"7")};
    resource.getClipData(again);
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_EQ(again[0].frameRate, Zq::FrameRate::f29_97);
}

TEST_F(ClipData, OneRequestAsksForAllThatAreUnknownInTheirOrder) {
    resource.clipCache[2] = {Zq::FrameRate::f25, 1.0};
    LightweightVector<RemoteAsset> assets{asset(L"3"), asset(L"2"), asset(L"1", R"("fps":"30")"),
                                          asset(L"4", R"("fps":"50")")};
    host.network.answerWith(answerOf({clip("24", "1000"), clip("60", "2000")}));
    resource.getClipData(assets);
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_EQ(askedIds(), (std::vector<std::string>{"3", "1"}));
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f24);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(assets[2].frameRate, Zq::FrameRate::f60);
    EXPECT_EQ(assets[3].frameRate, Zq::FrameRate::f50);
}

TEST_F(ClipData, AnAssetThatOccursTwiceIsAskedForTwiceAndTheFirstReplyStays) {
    LightweightVector<RemoteAsset> assets{asset(L"5"), asset(L"5")};
    host.network.answerWith(answerOf({clip("24", "1000"), clip("60", "2000")}));
    resource.getClipData(assets);
    EXPECT_EQ(askedIds(), (std::vector<std::string>{"5", "5"}));
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f24);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::f24);
    EXPECT_EQ(resource.clipCache.at(5).duration, 1.0);
}

TEST_F(ClipData, ACoarseRateThatIsNotBelievedIsNoFallback) {
    LightweightVector<RemoteAsset> assets{asset(L"1", R"("fps":"30")")};
    resource.getClipData(assets);
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::unknown);
}

TEST_F(ClipData, AReplyWithoutItsFiguresIsRememberedForGood) {
    LightweightVector<RemoteAsset> assets{asset(L"7")};
    host.network.answerWith(answerOf({R"({"clip_data":{}})"}));
    resource.getClipData(assets);
    ASSERT_TRUE(resource.clipCache.contains(7));
    EXPECT_EQ(resource.clipCache.at(7).frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(resource.clipCache.at(7).duration, 0.0);

    host.network.answerWith(answerOf({clip("25", "9000")}));
    resource.getClipData(assets);
    EXPECT_EQ(host.network.requestCount(), 2U);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(resource.clipCache.at(7).duration, 0.0);
}

TEST_F(ClipData, FiguresThatAreNoTextsAreMissing) {
    LightweightVector<RemoteAsset> assets{asset(L"7")};
    host.network.answerWith(
        answerOf({R"({"clip_data":{"pim_aut_fps_real":25,"pim_aut_duration_ms":9000}})"}));
    resource.getClipData(assets);
    EXPECT_EQ(resource.clipCache.at(7).frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(resource.clipCache.at(7).duration, 0.0);
}

TEST_F(ClipData, ABadReplyCostsOnlyItsOwnClip) {
    LightweightVector<RemoteAsset> assets{asset(L"1"), asset(L"2"), asset(L"3"), asset(L"4")};
    host.network.answerWith(answerOf({clip("25", "1000"), R"({"e":true,"s":"no such clip"})",
                                      R"({"clip_data":"x"})", clip("50", "4000")}));
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(assets[2].frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(assets[3].frameRate, Zq::FrameRate::f50);
    EXPECT_EQ(resource.clipCache.size(), 2U);
}

TEST_F(ClipData, FewerRepliesThanCommandsSettleTheFirstClips) {
    LightweightVector<RemoteAsset> assets{asset(L"1"), asset(L"2")};
    host.network.answerWith(answerOf({clip("25", "1000")}));
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::unknown);
    EXPECT_FALSE(resource.clipCache.contains(2));
}

TEST_F(ClipData, AFailedFirstReplyMakesTheWholeBatchFail) {
    LightweightVector<RemoteAsset> assets{asset(L"1"), asset(L"2")};
    host.network.answerWith(answerOf({R"({"s":"no","clip_data":{}})", clip("25", "1000")}));
    resource.getClipData(assets);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::unknown);
    EXPECT_TRUE(resource.clipCache.empty());
}

TEST_F(ClipData, AnErrorAtTheTopStoresNothing) {
    LightweightVector<RemoteAsset> assets{asset(L"1")};
    host.network.answerWith(R"({"e":true,"commands":[)" + clip("25", "1000") + "]}");
    resource.getClipData(assets);
    EXPECT_TRUE(resource.clipCache.empty());
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::unknown);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(ClipData, AfterAFailureTheLastPassStillLooksIntoTheCache) {
    LightweightVector<RemoteAsset> assets{asset(L"1")};
    // What another part of the program learns of the clip while the request is under way.
    host.network.answerWith([this](fake::Request const&) {
        resource.clipCache[1] = {Zq::FrameRate::f24, 1.0};
        return fake::Answer{R"({"e":true})"};
    });
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f24);
}

TEST_F(ClipData, AnEntryThatAppearsDuringTheRequestIsNotReplaced) {
    LightweightVector<RemoteAsset> assets{asset(L"1")};
    host.network.answerWith([this](fake::Request const&) {
        resource.clipCache[1] = {Zq::FrameRate::f24, 1.0};
        return fake::Answer{answerOf({clip("60", "2000")})};
    });
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f24);
    EXPECT_EQ(resource.clipCache.at(1).duration, 1.0);
}

TEST_F(ClipData, NoAnswerLeavesEveryAssetWithWhatItHas) {
    LightweightVector<RemoteAsset> assets{asset(L"1"), asset(L"2", R"("fps":"50")")};
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::unknown);
    EXPECT_EQ(assets[1].frameRate, Zq::FrameRate::f50);
}

TEST_F(ClipData, AnIdThatIsNoNumberIsKeptUnderZero) {
    LightweightVector<RemoteAsset> assets{asset(L"abc")};
    host.network.answerWith(answerOf({clip("25", "1000")}));
    resource.getClipData(assets);
    EXPECT_EQ(askedIds(), std::vector<std::string>{"abc"});
    EXPECT_TRUE(resource.clipCache.contains(0));
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f25);
}

TEST_F(ClipData, AnAssetWithoutAnItemIsAskedFor) {
    LightweightVector<RemoteAsset> assets(1);
    assets[0].id = L"9";
    host.network.answerWith(answerOf({clip("25", "1000")}));
    resource.getClipData(assets);
    EXPECT_EQ(assets[0].frameRate, Zq::FrameRate::f25);
}

TEST_F(ClipData, SigningInAndOutLeavesTheCacheAlone) {
    resource.clipCache[1] = {Zq::FrameRate::f24, 1.0};
    signIn();
    EXPECT_EQ(resource.clipCache.size(), 1U);
    resource.logout();
    EXPECT_EQ(resource.clipCache.size(), 1U);
}

} // namespace
} // namespace tarn7_tests
