// Purchases: sent once, told truly, watched until their end is known.

#include "tests/zq/panel/PanelFixture.h"

#include <atomic>
#include <semaphore>
#include <thread>

#include "apps/zq/Text.h"
#include "apps/zq/panel/Purchases.h"
#include "host/os/OS.h"
#include "host/os/iShell.h"

namespace {

using namespace panel_tests;
using namespace zq::panel;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class Buying : public testing::Test {
protected:
    Buying() {
        repository_->signedInUser = L"ada";
        repository_->onPurchase = [this](ShelfRepository&, LightweightVector<RemoteAsset> const& assets,
                                         bool byPage) {
            sent_.push_back((byPage ? "page" : "credits") + std::string(":") + idsOf(assets));
            network_.bytesSent += 100;
            ++network_.requests;
            return answer_();
        };
        repository_->onOwned = [this](ShelfRepository&) {
            if (offline_) {
                ++network_.failures;
            }
            return offline_ ? LightweightVector<RemoteAsset>() : owned_;
        };
    }
    static std::string idsOf(LightweightVector<RemoteAsset> const& assets) {
        std::string all;
        for (RemoteAsset const& asset : assets) {
            all += " " + zq::utf8(asset.id);
        }
        return all;
    }
    Zq::Ptr<JSON::Element> buy(std::string const& key, std::string const& clips,
                               std::string const& payment = "credits") {
        return handlers_.json("POST", "/purchases", {}, {}, order(key, clips, payment));
    }
    static std::string order(std::string const& key, std::string const& clips, std::string const& payment) {
        return "{\"key\":\"" + key + "\",\"clips\":[" + clips + "],\"payment\":\"" + payment + "\"}";
    }
    std::string failure(std::string const& body) {
        return handlers_.failureOf("POST", "/purchases", {}, {}, body);
    }
    // The purchase as the list tells it.
    Zq::Ptr<JSON::Element> listed(std::uint16_t index = 0) {
        return item(handlers_.json("GET", "/purchases"), "purchases", index);
    }
    // The service carries it out or not; its answer is lost in any case.
    std::int32_t losesAnswer() {
        ++network_.failures;
        network_.lastError = "closed";
        return 0;
    }
    void own(char const* id) { owned_.push_back(ShelfRepository::clip(id, id, "")); }
    // So much time passes, with looks at what is due.
    void pass(std::chrono::seconds time) {
        handlers_.now += time;
        handlers_.purchases().lookAtDue();
        handlers_.flush();
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    engine::ServerStatistics network_{.server = "https://shelf.example", .lastError = {}};
    std::function<std::int32_t()> answer_ = [] { return 2; };
    std::vector<std::string> sent_;
    LightweightVector<RemoteAsset> owned_;
    bool offline_ = false;
    Handlers handlers_{home_.engine(), *repository_, [this] { return std::vector{network_}; }};
};

TEST_F(Buying, OneThatTheServiceCarriesOutIsDone) {
    own("1");
    own("2");
    auto const purchase = buy("k", "\"1\",\"2\",\"1\"");
    EXPECT_THAT(sent_, ElementsAre("credits: 1 2"));
    EXPECT_EQ(text(purchase, "key"), "k");
    EXPECT_THAT(texts(purchase, "clips"), ElementsAre("1", "2"));
    EXPECT_EQ(text(purchase, "payment"), "credits");
    EXPECT_EQ(text(purchase, "state"), "done");
    EXPECT_EQ(purchase->getInt("code", -1), 2);
    EXPECT_EQ(text(purchase, "text"), "bought 2 clips with credits");
    EXPECT_EQ(text(purchase, "page"), "");
    handlers_.flush();
    EXPECT_EQ(repository_->ownedReads, 1) << "the clips are marked as owned from now on";
    EXPECT_EQ(handlers_.countEvents("purchase"), 2U);
    EXPECT_THAT(handlers_.events(), HasSubstr("\"state\":\"running\""));
    EXPECT_THAT(handlers_.events(), HasSubstr("\"state\":\"done\""));
}

TEST_F(Buying, OneThatTheAccountCannotPayIsRefused) {
    answer_ = [] { return 3; };
    auto const purchase = buy("k", "\"1\"");
    EXPECT_EQ(text(purchase, "state"), "refused");
    EXPECT_EQ(purchase->getInt("code", -1), 3);
    EXPECT_EQ(text(purchase, "text"), "nothing was bought: the account cannot pay this");
    pass(31min);
    EXPECT_EQ(repository_->ownedReads, 0) << "there is nothing to watch";
    answer_ = [] { return 2; };
    EXPECT_EQ(text(buy("l", "\"1\""), "state"), "done");
}

TEST_F(Buying, OneThatNeverLeftThisMachineIsRefused) {
    answer_ = [this] {
        network_.bytesSent -= 100;
        return losesAnswer();
    };
    auto const purchase = buy("k", "\"1\"");
    EXPECT_EQ(text(purchase, "state"), "refused");
    EXPECT_EQ(purchase->getInt("code", -1), 0);
    EXPECT_THAT(text(purchase, "text"), HasSubstr("closed"));
}

TEST_F(Buying, OneThatWasAnsweredWithNothingBoughtIsRefused) {
    answer_ = [] { return 0; };
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "refused");
}

TEST_F(Buying, OneWhoseAnswerWasLostIsDoubtfulUntilTheOwnedListHasTheClips) {
    answer_ = [this] { return losesAnswer(); };
    auto const purchase = buy("k", "\"1\",\"2\"");
    EXPECT_EQ(text(purchase, "state"), "doubtful");
    EXPECT_THAT(text(purchase, "text"), HasSubstr("closed"));
    pass(1s);
    EXPECT_EQ(repository_->ownedReads, 0);
    pass(1s);
    EXPECT_EQ(repository_->ownedReads, 1);
    own("1");
    pass(2s);
    EXPECT_EQ(text(listed(), "state"), "doubtful") << "one of two clips is not the purchase";
    own("2");
    pass(4s);
    EXPECT_EQ(repository_->ownedReads, 3);
    EXPECT_EQ(text(listed(), "state"), "done");
    EXPECT_EQ(handlers_.countEvents("purchase"), 3U);
    pass(1h);
    EXPECT_EQ(repository_->ownedReads, 3) << "its end is known";
}

TEST_F(Buying, TheOwnedListIsAskedForMoreAndMoreSeldomForHalfAnHour) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    std::vector<int> looks;
    for (int second = 1; second <= 3'600; ++second) {
        int const before = repository_->ownedReads;
        pass(1s);
        if (repository_->ownedReads != before) {
            looks.push_back(second);
        }
    }
    ASSERT_GT(looks.size(), 6U);
    EXPECT_THAT(std::vector<int>(looks.begin(), looks.begin() + 6), ElementsAre(2, 4, 8, 16, 46, 76));
    EXPECT_EQ(looks.back(), 1'800);
    EXPECT_EQ(looks.size(), 4U + 60U);
    auto const purchase = listed();
    EXPECT_EQ(text(purchase, "state"), "refused");
    EXPECT_EQ(text(purchase, "text"), "nothing was bought: the account does not own the clips");
}

TEST_F(Buying, AListThatCannotBeReadEndsNoDoubt) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    offline_ = true;
    for (int minute = 0; minute < 40; ++minute) {
        pass(1min);
    }
    EXPECT_EQ(text(listed(), "state"), "doubtful");
    EXPECT_EQ(failure(order("l", "\"1\"", "credits")), "conflict");
    offline_ = false;
    static_cast<void>(handlers_.call("GET", "/owned"));
    EXPECT_EQ(text(listed(), "state"), "refused") << "the next list that is read tells";
}

TEST_F(Buying, TheListOfAnotherUserTellsNothing) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    own("1");
    handlers_.desk().ask([this](zq::Session&) { repository_->signedInUser = L"bob"; });
    pass(2s);
    EXPECT_EQ(repository_->ownedReads, 1);
    EXPECT_EQ(text(listed(), "state"), "doubtful");
    handlers_.desk().ask([this](zq::Session&) { repository_->signedInUser = L"ada"; });
    pass(2s);
    EXPECT_EQ(text(listed(), "state"), "done");
}

TEST_F(Buying, ASecondRequestWithTheSameKeySendsNothing) {
    static_cast<void>(buy("k", "\"1\""));
    auto const again = buy("k", "\"7\",\"8\"", "page");
    EXPECT_THAT(texts(again, "clips"), ElementsAre("1"));
    EXPECT_EQ(text(again, "state"), "done");
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(Buying, ManyClicksAtOnceSendOnePurchase) {
    std::binary_semaphore running(0);
    std::binary_semaphore goOn(0);
    answer_ = [&] {
        running.release();
        goOn.acquire();
        return 2;
    };
    std::thread first([&] { EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done"); });
    running.acquire();
    std::atomic<int> told{0};
    std::atomic<int> refused{0};
    std::vector<std::thread> clicks;
    for (int i = 0; i < 4; ++i) {
        clicks.emplace_back([&, i] {
            told += text(buy("k", "\"1\""), "state") == "running" ? 1 : 0;
            refused +=
                failure(order("other " + std::to_string(i), "\"2\",\"1\"", "credits")) == "conflict" ? 1 : 0;
        });
    }
    for (std::thread& click : clicks) {
        click.join();
    }
    goOn.release();
    first.join();
    EXPECT_EQ(told, 4);
    EXPECT_EQ(refused, 4);
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(Buying, WhatIsInDoubtIsNotBoughtAgainButOtherClipsAre) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    EXPECT_EQ(failure(order("l", "\"1\"", "credits")), "conflict");
    EXPECT_EQ(failure(order("l", "\"3\",\"1\"", "page")), "conflict");
    answer_ = [] { return 2; };
    EXPECT_EQ(text(buy("m", "\"2\""), "state"), "done");
    EXPECT_EQ(text(listed(0), "key"), "m") << "the latest comes first";
    EXPECT_EQ(text(listed(1), "key"), "k");
}

TEST_F(Buying, APaymentPageIsOpenedByTheHostAndThePurchaseWaitsForTheOwnedList) {
    ASSERT_EQ(setenv("ZQ_BROWSER", "/bin/true", 1), 0);
    answer_ = [] { return OS().shell().openInBrowser(L"https://shelf.example/pay/1?a=b") ? 2 : 0; };
    auto const purchase = buy("k", "\"1\"", "page");
    EXPECT_THAT(sent_, ElementsAre("page: 1"));
    EXPECT_EQ(text(purchase, "state"), "waiting");
    EXPECT_EQ(text(purchase, "page"), "https://shelf.example/pay/1?a=b");
    EXPECT_TRUE(handlers_.links().contains("https://shelf.example/pay/1?a=b"));
    EXPECT_EQ(purchase->getInt("code", -1), 2);
    pass(2s);
    EXPECT_EQ(text(listed(), "state"), "waiting");
    own("1");
    pass(2s);
    EXPECT_EQ(text(listed(), "state"), "done");
}

TEST_F(Buying, WhatIsPaidAfterTheWatchIsStillFound) {
    ASSERT_EQ(setenv("ZQ_BROWSER", "/bin/true", 1), 0);
    answer_ = [] { return OS().shell().openInBrowser(L"https://shelf.example/pay/1") ? 2 : 0; };
    static_cast<void>(buy("k", "\"1\"", "page"));
    pass(30min);
    EXPECT_EQ(text(listed(), "state"), "refused");
    EXPECT_THAT(text(listed(), "text"), HasSubstr("not paid within half an hour"));
    own("1");
    static_cast<void>(handlers_.call("GET", "/owned"));
    EXPECT_EQ(text(listed(), "state"), "done");
}

TEST_F(Buying, ThePageOfAnEarlierLinkIsNotTakenForAPaymentPage) {
    ASSERT_EQ(setenv("ZQ_BROWSER", "/bin/true", 1), 0);
    static_cast<void>(OS().shell().openInBrowser(L"https://elsewhere.example/"));
    EXPECT_EQ(text(buy("k", "\"1\"", "page"), "page"), "");
}

TEST_F(Buying, APaymentByPageWithoutItsPageIsRefusedSinceNobodyCanHavePaid) {
    answer_ = [this] { return losesAnswer(); };
    EXPECT_EQ(text(buy("k", "\"1\"", "page"), "state"), "refused");
}

TEST_F(Buying, NobodyBuysWithoutAnAccount) {
    repository_->signedInUser.clear();
    EXPECT_EQ(failure(order("k", "\"1\"", "credits")), "conflict");
    repository_->signedInUser = L"ada";
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done") << "the key is free: nothing had been sent";
    repository_->form.clear();
    EXPECT_EQ(failure(order("l", "\"1\"", "credits")), "conflict") << "it sells nothing";
}

TEST_F(Buying, WithoutAConnectionNothingIsSentAndTheKeyStaysFree) {
    repository_->connectResult = 11;
    EXPECT_EQ(failure(order("k", "\"1\"", "credits")), "failed");
    repository_->connectResult = 0;
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(Buying, AnIncompleteOrderIsNone) {
    for (char const* body :
         {"{}", R"({"key":"k","payment":"credits"})", R"({"key":"k","clips":[],"payment":"credits"})",
          R"({"key":"","clips":["1"],"payment":"credits"})", R"({"clips":["1"],"payment":"credits"})",
          R"({"key":"k","clips":["1"]})", R"({"key":"k","clips":["1"],"payment":"gold"})",
          R"({"key":"k","clips":[1],"payment":"credits"})",
          R"({"key":"k","clips":{"a":"1"},"payment":"credits"})",
          R"({"key":"k","clips":["1",true],"payment":"credits"})",
          R"({"key":"k","clips":[""],"payment":"credits"})",
          R"({"key":1,"clips":["1"],"payment":"credits"})"}) {
        EXPECT_EQ(failure(body), "bad_request") << body;
    }
    EXPECT_TRUE(sent_.empty());
}

TEST_F(Buying, AnIdThatIsNoClipsNumberIsRefusedAndNotSent) {
    EXPECT_EQ(text(buy("k", "\"../1\""), "state"), "refused");
    EXPECT_TRUE(sent_.empty());
}

TEST_F(Buying, APurchaseThatWaitsWhenThePanelEndsIsNotSent) {
    std::binary_semaphore entered(0);
    std::atomic<bool> leave{false};
    handlers_.desk().post([&](zq::Session&) {
        entered.release();
        while (!leave) {
            std::this_thread::yield();
        }
    });
    entered.acquire();
    std::string end;
    std::thread buyer([&] { end = failure(order("k", "\"1\"", "credits")); });
    while (child(handlers_.json("GET", "/purchases"), "purchases")->getNumChildren() == 0) {
        std::this_thread::yield();
    }
    std::thread ending([&] { handlers_.desk().end(); });
    buyer.join();
    leave = true;
    ending.join();
    EXPECT_EQ(end, "conflict");
    EXPECT_TRUE(sent_.empty());
}

// The thread of its own that a panel's purchases are watched by.
TEST_F(Buying, TheWatchLooksByItself) {
    EventHub events;
    GivenLinks links;
    std::atomic<int> hours{0};
    Purchases purchases(events, links, [&] { return Purchases::Clock::now() - std::chrono::hours(hours); });
    answer_ = [this] { return losesAnswer(); };
    hours = 1; // it seems to have been begun an hour ago
    EXPECT_THAT(purchases.buy(handlers_.desk(), {.key = "k", .clips = {"1"}}), HasSubstr("doubtful"));
    hours = 0; // and so the watch ends with the next look
    std::string told;
    do {
        handlers_.flush();
        told = purchases.list(handlers_.desk());
    } while (told.find("doubtful") != std::string::npos);
    EXPECT_THAT(told, HasSubstr("refused"));
}

} // namespace
