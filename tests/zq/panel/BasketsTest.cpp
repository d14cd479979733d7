// Baskets: kept over restarts, summed up, bounded.

#include "tests/zq/panel/PanelFixture.h"

#include "apps/zq/AnswerWatch.h"
#include "apps/zq/Text.h"
#include "apps/zq/panel/Baskets.h"
#include "host/engine/project/Project.h"
#include "host/preferences/EditorPreferences.h"

namespace {

using namespace panel_tests;
using namespace zq::panel;
using testing::HasSubstr;

class Basket : public testing::Test {
protected:
    Basket() {
        repository_->onSearch = [this](SearchQuery const&) {
            SearchResults results;
            results.assets = clips_;
            results.totalCount = static_cast<std::uint16_t>(clips_.size());
            results.pageCount = 1;
            return results;
        };
        clips_ = {ShelfRepository::clip("1", "one", "$5"), ShelfRepository::clip("2", "two", "$7.50"),
                  ShelfRepository::clip("3", "three", ""),
                  ShelfRepository::clip("4", "four",
                                        "\xe2\x82\xac"
                                        "9")};
        start();
    }
    // As after a restart: nothing is known but what is kept.
    void start() {
        handlers_.reset();
        handlers_ = std::make_unique<Handlers>(home_.engine(), *repository_,
                                               [] { return std::vector<engine::ServerStatistics>(); });
    }
    void search() { static_cast<void>(handlers_->call("GET", "/search")); }
    Zq::Ptr<JSON::Element> put(std::string const& ids) {
        return handlers_->json("PUT", "/basket", {}, {}, "{\"clips\":[" + ids + "]}");
    }
    Zq::Ptr<JSON::Element> get() { return handlers_->json("GET", "/basket"); }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    LightweightVector<RemoteAsset> clips_;
    std::unique_ptr<Handlers> handlers_;
};

TEST_F(Basket, IsEmptyAtFirst) {
    auto const basket = get();
    EXPECT_EQ(child(basket, "clips")->getNumChildren(), 0);
    EXPECT_EQ(text(basket, "total"), "");
    EXPECT_EQ(basket->getInt("unpriced", -1), 0);
    EXPECT_FALSE(basket->hasNum("credits"));
}

TEST_F(Basket, HoldsClipsInTheirOrderWithTheSumOfTheirPrices) {
    search();
    auto const basket = put("\"2\",\"1\",\"3\",\"2\"");
    ASSERT_EQ(child(basket, "clips")->getNumChildren(), 3);
    EXPECT_EQ(text(item(basket, "clips", 0), "id"), "2");
    EXPECT_EQ(text(item(basket, "clips", 0), "name"), "two");
    EXPECT_EQ(text(item(basket, "clips", 0), "price"), "$7.50");
    EXPECT_FALSE(item(basket, "clips", 0)->getBool("owned", true));
    EXPECT_EQ(item(basket, "clips", 0)->getInt("used", -1), 0);
    EXPECT_EQ(text(basket, "total"), "$12.50");
    EXPECT_EQ(basket->getInt("unpriced", -1), 1);
    EXPECT_EQ(handlers_->countEvents("basket"), 1U);
    EXPECT_THAT(handlers_->events(), HasSubstr("event: basket\ndata: {\"repository\":\"SH\"}"));
    EXPECT_EQ(child(put(""), "clips")->getNumChildren(), 0);
}

TEST_F(Basket, HasNoTotalOfTwoCurrencies) {
    search();
    EXPECT_EQ(text(put("\"1\",\"4\""), "total"), "");
    EXPECT_EQ(text(put("\"4\""), "total"), "\xe2\x82\xac"
                                           "9");
    EXPECT_EQ(text(put("\"3\""), "total"), "");
}

TEST_F(Basket, IsThereAgainAfterARestartWithNamesAndPrices) {
    search();
    static_cast<void>(put("\"1\",\"2\""));
    start();
    auto const basket = get();
    EXPECT_EQ(text(item(basket, "clips", 1), "name"), "two");
    EXPECT_EQ(text(basket, "total"), "$12.50");
    EXPECT_EQ(text(item(put("\"2\""), "clips", 0), "name"), "two");
}

TEST_F(Basket, TakesClipsThatNobodyHasShownAndLearnsOfThemLater) {
    EXPECT_EQ(text(item(put("\"1\""), "clips", 0), "name"), "");
    search();
    EXPECT_EQ(text(item(get(), "clips", 0), "name"), "one");
    EXPECT_EQ(text(get(), "total"), "$5");
}

TEST_F(Basket, WhatIsOwnedCostsNothingMore) {
    search();
    repository_->onOwned = [this](auto&) { return LightweightVector<RemoteAsset>{clips_[0]}; };
    handlers_->desk().ask([this](zq::Session&) { repository_->signedInUser = L"ada"; });
    static_cast<void>(handlers_->call("GET", "/owned"));
    auto const basket = put("\"1\",\"2\",\"3\"");
    EXPECT_TRUE(item(basket, "clips", 0)->getBool("owned", false));
    EXPECT_EQ(text(basket, "total"), "$7.50");
    EXPECT_EQ(basket->getInt("unpriced", -1), 1);
}

TEST_F(Basket, AChangeOfItLeavesThePreferencesAsTheyAre) {
    std::uint64_t const before = prefs().revision();
    static_cast<void>(put("\"1\""));
    EXPECT_EQ(prefs().revision(), before) << "results of searches are kept for as long as those stay";
}

TEST_F(Basket, CountsTheUsesOfAClipInSequencesAndKnowsItsNameFromThere) {
    engine::Project& project = home_.engine().project();
    Zq::Ptr<Edit> const edit = project.makeNewClip(1, 0, 2.0, Zq::FrameRate::f25, Cookie());
    ASSERT_TRUE(edit);
    LogAttributeMap attributes;
    attributes.add(LogAttribute(LogAttribute::eName), WideString(L"placed"));
    edit->setLogAttributes(attributes);
    project.associate(edit->getCookie(), L"SH", L"77");
    ASSERT_TRUE(project.place("cut", edit->getCookie(), 0.0, 1.0));
    ASSERT_TRUE(project.place("cut", edit->getCookie(), 1.0, 2.0));
    auto const basket = put("\"77\"");
    EXPECT_EQ(item(basket, "clips", 0)->getInt("used", -1), 2);
    EXPECT_EQ(text(item(basket, "clips", 0), "name"), "placed");
}

TEST_F(Basket, IsBounded) {
    std::string ids;
    for (std::size_t number = 0; number < Baskets::most; ++number) {
        ids += (number == 0 ? "\"" : ",\"") + std::to_string(number) + "\"";
    }
    EXPECT_EQ(child(put(ids), "clips")->getNumChildren(), 1'000);
    EXPECT_EQ(handlers_->failureOf("PUT", "/basket", {}, {}, "{\"clips\":[" + ids + ",\"x\"]}"),
              "bad_request");
    for (char const* body : {"{}", R"({"clips":"1"})", R"({"clips":[1]})", R"({"clips":[["1"]]})"}) {
        EXPECT_EQ(handlers_->failureOf("PUT", "/basket", {}, {}, body), "bad_request") << body;
    }
    EXPECT_EQ(child(get(), "clips")->getNumChildren(), 1'000);
}

TEST_F(Basket, KeepsHostileTextsAsTheyAre) {
    std::string const hostile = "\"},{\"id\":\"9\" <script> \\ \x1b \xe2\x80\xae";
    clips_ = {ShelfRepository::clip("1", hostile, hostile)};
    search();
    static_cast<void>(put("\"1\""));
    start();
    auto const basket = get();
    ASSERT_EQ(child(basket, "clips")->getNumChildren(), 1);
    EXPECT_EQ(text(item(basket, "clips", 0), "name"), hostile);
    EXPECT_EQ(text(item(basket, "clips", 0), "price"), hostile);
}

} // namespace
