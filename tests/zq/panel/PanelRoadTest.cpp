// The panel's handlers over the real parts: the service in this process, the engine, the Tarn7 client.

#include "tests/road/Faults.h"
#include "tests/zq/panel/PanelFixture.h"

#include <atomic>
#include <thread>

#include "apps/zq/panel/Purchases.h"
#include "host/engine/network/CurlNetwork.h"

namespace {

using namespace panel_tests;
using namespace std::chrono_literals;
using road_tests::RoadHost;
using road_tests::rule;
using road_tests::statusRule;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using zq::panel::Content;
using zq::panel::Response;

class PanelRoad : public road_tests::Road {
protected:
    PanelRoad() { host().client().logout(); }

    Handlers& panel() {
        if (!panel_) {
            engine::Engine& engine = host().engine();
            panel_ = std::make_unique<Handlers>(
                engine, host().client(), [&engine] { return engine.network().statisticsOfThisThread(); });
        }
        return *panel_;
    }
    void signIn() {
        auto const result =
            panel().json("POST", "/login", {}, {}, R"({"values":{"username":"ada","password":"secret"}})");
        ASSERT_EQ(result->getInt("code", -1), 0);
        panel().flush();
    }
    // The number of the clip that the word finds.
    std::string find(std::string const& word) {
        return text(item(panel().json("GET", "/search", {}, {{"words", word}}), "clips", 0), "id");
    }
    Zq::Ptr<JSON::Element> buy(std::string const& key, std::string const& id) {
        return panel().json("POST", "/purchases", {}, {},
                            "{\"key\":\"" + key + "\",\"clips\":[\"" + id + "\"],\"payment\":\"credits\"}");
    }
    std::string stateOfPurchase() {
        return text(item(panel().json("GET", "/purchases"), "purchases", 0), "state");
    }
    void spoil(char const* command, tarn7d::FaultRule met) {
        met.command = command;
        (void)desk().add(met);
    }
    void pass(std::chrono::seconds time) {
        panel().now += time;
        panel().purchases().lookAtDue();
        panel().flush();
    }
    void endPanel() { panel_.reset(); }
    static std::string read(Content& content, std::uint64_t offset, std::size_t size) {
        std::string bytes(size, '\0');
        std::size_t got = 0;
        while (got < size) {
            std::size_t const count = content.read(offset + got, std::span(bytes).subspan(got));
            if (count == 0) {
                break;
            }
            got += count;
        }
        bytes.resize(got);
        return bytes;
    }

private:
    std::unique_ptr<Handlers> panel_; // ends before the host
};

TEST_F(PanelRoad, LeadsFromTheSignInToAnOwnedClip) {
    EXPECT_EQ(text(panel().json("GET", ""), "user"), "");
    EXPECT_TRUE(panel().json("GET", "")->getBool("needsSignIn", false));
    auto const form = panel().json("GET", "/login");
    EXPECT_EQ(text(item(form, "form", 0), "name"), "username");
    EXPECT_TRUE(item(form, "form", 1)->getBool("obfuscated", false));
    EXPECT_THAT(text(item(item(form, "linkForm", 0), "rich", 1), "link"), testing::StartsWith("https://"));

    auto const wrong =
        panel().json("POST", "/login", {}, {}, R"({"values":{"username":"ada","password":"wrong"}})");
    EXPECT_EQ(wrong->getInt("code", -1), 7);
    EXPECT_EQ(text(wrong, "text"), "the password is wrong");
    signIn();
    EXPECT_EQ(text(panel().json("GET", ""), "user"), "ada");

    auto const page = panel().json("GET", "/search", {}, {{"words", "car"}});
    ASSERT_EQ(page->getInt("totalCount", 0), 1);
    auto const clip = item(page, "clips", 0);
    std::string const id = text(clip, "id");
    EXPECT_EQ(text(clip, "name"), "Car");
    EXPECT_EQ(text(clip, "rate"), "25");
    EXPECT_FALSE(clip->getBool("owned", true));
    EXPECT_TRUE(clip->getBool("hasThumbnail", false));
    EXPECT_TRUE(clip->getBool("hasPreview", false));

    Response const picture = panel().call("GET", "/clips/{clip}/thumbnail", {id});
    EXPECT_EQ(picture.type, "image/jpeg");
    EXPECT_GT(picture.body.size(), 100U);
    EXPECT_EQ(picture.fresh_s, 86'400U);

    Response const preview = panel().call("GET", "/clips/{clip}/preview", {id});
    EXPECT_EQ(preview.type, "video/mp4");
    std::string const whole = RoadHost::readThroughHost(panel().desk().knownClip(id).value().previewPath);
    ASSERT_EQ(preview.content->size(), whole.size());
    EXPECT_TRUE(road_tests::same(read(*preview.content, 0, whole.size() + 1), whole));
    EXPECT_TRUE(road_tests::same(read(*preview.content, whole.size() / 2, 1'000),
                                 std::string_view(whole).substr(whole.size() / 2, 1'000)));

    auto const basket = panel().json("PUT", "/basket", {}, {}, "{\"clips\":[\"" + id + "\"]}");
    EXPECT_THAT(text(basket, "total"), testing::StartsWith("$"));
    auto const purchase = buy("k", id);
    EXPECT_EQ(text(purchase, "state"), "done");
    EXPECT_THAT(text(purchase, "text"), HasSubstr("bought 1 clip with credits"));
    panel().flush();
    EXPECT_TRUE(panel().json("GET", "/clips/{clip}", {id})->getBool("owned", false));
    EXPECT_EQ(child(panel().json("GET", "/basket"), "clips")->getNumChildren(), 0);
    EXPECT_LT(panel().json("GET", "")->getInt("credits", -1), credits);
    auto const owned = panel().json("GET", "/owned");
    EXPECT_EQ(text(item(owned, "clips", 0), "id"), id);
    EXPECT_THAT(panel().events(), testing::Not(HasSubstr("secret")));

    static_cast<void>(panel().call("POST", "/logout"));
    EXPECT_EQ(text(panel().json("GET", ""), "user"), "");
    EXPECT_FALSE(panel().json("GET", "")->hasNum("credits"));
    EXPECT_EQ(panel().failureOf("GET", "/owned"), "failed");
}

TEST_F(PanelRoad, APreviewThatWasPlayedPlaysWithTheServiceGone) {
    std::string const id = find("car");
    std::string whole;
    {
        Response const first = panel().call("GET", "/clips/{clip}/preview", {id});
        whole = read(*first.content, 0, first.content->size());
        ASSERT_EQ(whole.size(), first.content->size());
    }
    tarn7d::FaultRule gone = statusRule(503);
    gone.path = "/";
    gone.count = 10'000;
    (void)desk().add(gone);
    Response const again = panel().call("GET", "/clips/{clip}/preview", {id});
    EXPECT_TRUE(road_tests::same(read(*again.content, 0, again.content->size()), whole));
}

TEST_F(PanelRoad, APreviewWhoseServiceFailsInPassingIsLateSaysWhyAndGoesOn) {
    addFootage(test::Footage::large, "sea.mp4");
    std::string const id = find("sea");
    ASSERT_NE(id, "");
    tarn7d::FaultRule cut = rule(tarn7d::FaultKind::cut, std::int64_t{40} << 10);
    cut.path = "/";
    cut.count = 10'000;
    (void)desk().add(cut);
    Response const preview = panel().call("GET", "/clips/{clip}/preview", {id});
    desk().clear();
    tarn7d::FaultRule gone = statusRule(503);
    gone.path = "/";
    gone.count = 10'000;
    (void)desk().add(gone);
    Content& content = *preview.content;
    ASSERT_GT(content.size(), std::uint64_t{120'000}) << "what is read below comes with neither end";
    EXPECT_EQ(read(content, 0, 100).size(), 100U);
    std::uint64_t const middle = std::uint64_t{48} << 10;
    EXPECT_EQ(read(content, middle, 1), "");
    EXPECT_TRUE(content.isLate());
    EXPECT_THAT(panel().events(), HasSubstr(R"("clip":")" + id + R"(","reason":"service_failed")"));
    EXPECT_EQ(panel().countEvents("preview"), 1U) << "each try that fails is no news";
    Response const other = panel().call("GET", "/clips/{clip}/preview", {id});
    EXPECT_EQ(read(*other.content, 0, 100).size(), 100U);
    EXPECT_EQ(panel().countEvents("preview"), 2U) << "another request has bytes";
    while (panel().countEvents("preview") < 3U) {
        ASSERT_EQ(read(content, middle, 1), "");
        ASSERT_TRUE(content.isLate()) << "and this one is late still, and says so again";
    }
    desk().clear();
    std::string came;
    while (came.empty()) {
        came = read(content, middle, 1'000);
        ASSERT_TRUE(!came.empty() || content.isLate());
    }
    EXPECT_FALSE(content.isLate());
    EXPECT_EQ(panel().countEvents("preview"), 4U);
    EXPECT_THAT(panel().events(), HasSubstr(R"("clip":")" + id + R"(","reason":"")"));
    std::string const whole = RoadHost::readThroughHost(panel().desk().knownClip(id).value().previewPath);
    EXPECT_TRUE(road_tests::same(came, whole.substr(middle, 1'000)));
}

TEST_F(PanelRoad, APreviewAndAPictureThatTheServiceDoesNotGiveAreFailures) {
    std::string const id = find("car");
    tarn7d::FaultRule gone = statusRule(500);
    gone.path = "/";
    gone.count = 10'000;
    (void)desk().add(gone);
    EXPECT_EQ(panel().failureOf("GET", "/clips/{clip}/preview", {id}), "failed");
    desk().clear();
    EXPECT_EQ(panel().failureOf("GET", "/clips/{clip}/preview", {id}), "none");
    EXPECT_EQ(panel().failureOf("GET", "/clips/{clip}/thumbnail", {id}), "none");
}

TEST_F(PanelRoad, APreviewThatTheServiceGivesAtALaterTryIsNotCalledMissing) {
    std::string const id = find("car");
    tarn7d::FaultRule making = statusRule(503);
    making.path = "/";
    making.count = 10; // all that the question for the size makes, and some of what is asked after it
    (void)desk().add(making);
    EXPECT_EQ(panel().failureOf("GET", "/clips/{clip}/preview", {id}), "none");
    EXPECT_EQ(desk().list().at(0).met, 10);
}

TEST_F(PanelRoad, ASearchThatFailsSaysWhyAndTheNextOneSucceeds) {
    spoil("search", statusRule(503));
    try {
        static_cast<void>(panel().call("GET", "/search"));
        FAIL();
    } catch (zq::CommandError const& error) {
        EXPECT_THAT(error.what(), HasSubstr("503"));
    }
    EXPECT_EQ(panel().json("GET", "/search")->getInt("totalCount", 0), 2);
}

TEST_F(PanelRoad, FiltersHoldOverARestartAndTellThePages) {
    auto const before = panel().json("GET", "/options");
    auto const price = item(item(before, "groups", 0), "options", 0);
    EXPECT_EQ(text(price, "type"), "choice");
    EXPECT_EQ(text(price, "value"), "-1");
    EXPECT_EQ(text(price, "initial"), "-1");
    static_cast<void>(panel().call("PUT", "/options/{group}/{index}", {"0", "0"}, {}, R"({"value":"1"})"));
    EXPECT_EQ(panel().countEvents("options"), 1U);
    static_cast<void>(
        panel().call("PUT", "/options/{group}/{index}", {"1", "0"}, {}, R"({"value":"false"})"));
    endPanel();
    host().restart();
    auto const after = panel().json("GET", "/options");
    EXPECT_EQ(text(item(item(after, "groups", 0), "options", 0), "value"), "1");
    EXPECT_EQ(text(item(item(after, "groups", 1), "options", 0), "value"), "false");
}

class LostPurchase : public PanelRoad, public testing::WithParamInterface<road_tests::Fault> {};

TEST_P(LostPurchase, IsInDoubtUntilTheOwnedListTells) {
    signIn();
    std::string const id = find("car");
    spoil("purchase_using_credits", GetParam().rule);
    EXPECT_EQ(text(buy("k", id), "state"), GetParam().answered ? "done" : "doubtful");
    if (GetParam().answered) {
        return;
    }
    EXPECT_EQ(panel().failureOf("POST", "/purchases", {}, {},
                                R"({"key":"l","clips":[")" + id + R"("],"payment":"credits"})"),
              "conflict");
    EXPECT_EQ(text(buy("k", id), "state"), "doubtful") << "a second click sends nothing";
    pass(2s);
    if (GetParam().carriedOut) {
        EXPECT_EQ(stateOfPurchase(), "done");
        EXPECT_TRUE(panel().json("GET", "/clips/{clip}", {id})->getBool("owned", false));
        return;
    }
    EXPECT_EQ(stateOfPurchase(), "doubtful");
    pass(30min);
    EXPECT_EQ(stateOfPurchase(), "refused");
    EXPECT_EQ(text(buy("l", id), "state"), "done");
}
INSTANTIATE_TEST_SUITE_P(By, LostPurchase, testing::ValuesIn(road_tests::answerFaults()), road_tests::nameOf);

TEST_F(PanelRoad, WhatTheServiceSaysNoToIsRefusedInItsWords) {
    signIn();
    std::string const id = find("car");
    auto const purchase = buy("k", "999999");
    EXPECT_EQ(text(purchase, "state"), "refused") << text(purchase, "text");
    EXPECT_EQ(text(buy("l", id), "state"), "done");
}

TEST_F(PanelRoad, SearchesPicturesPreviewsAndOptionsAtOnceDisturbNobody) {
    signIn();
    std::string const car = find("car");
    std::string const tape = find("tape");
    std::string const whole = RoadHost::readThroughHost(panel().desk().knownClip(car).value().previewPath);
    std::atomic<bool> ended{false};
    std::atomic<int> wrong{0};
    std::vector<std::jthread> threads;
    threads.emplace_back([&] {
        while (!ended) {
            Response const preview = panel().call("GET", "/clips/{clip}/preview", {car});
            wrong += road_tests::same(read(*preview.content, 0, whole.size()), whole) ? 0 : 1;
        }
    });
    threads.emplace_back([&] {
        while (!ended) {
            wrong += panel().failureOf("GET", "/clips/{clip}/thumbnail", {tape}) == "none" ? 0 : 1;
        }
    });
    threads.emplace_back([&] {
        while (!ended) {
            std::string const end = panel().failureOf("GET", "/search", {}, {{"words", "tape"}});
            wrong += end == "none" || end == "conflict" ? 0 : 1;
        }
    });
    for (int round = 0; round < 10; ++round) {
        std::string const value = round % 2 == 0 ? "1" : "-1";
        EXPECT_EQ(panel().failureOf("PUT", "/options/{group}/{index}", {"0", "2"}, {},
                                    "{\"value\":\"" + value + "\"}"),
                  "none");
        EXPECT_EQ(panel().failureOf("GET", "/owned"), "none");
        static_cast<void>(panel().failureOf("GET", "/search", {}, {{"words", "car"}}));
        EXPECT_EQ(panel().failureOf("PUT", "/basket", {}, {}, "{\"clips\":[\"" + car + "\"]}"), "none");
    }
    ended = true;
    for (std::jthread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

} // namespace
