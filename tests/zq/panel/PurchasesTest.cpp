// Purchases: sent once, told truly, watched until their end is known.

#include "tests/zq/panel/BuyingFixture.h"

#include <atomic>
#include <semaphore>
#include <thread>

#include "host/os/OS.h"
#include "host/os/iShell.h"

namespace {

using namespace panel_tests;
using namespace zq::panel;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

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
    EXPECT_EQ(text(purchase, "user"), "ada");
    EXPECT_EQ(purchase->getInt("time", -1), 0);
    handlers_->flush();
    EXPECT_EQ(repository_->ownedReads, 1) << "the clips are marked as owned from now on";
    EXPECT_EQ(handlers_->countEvents("purchase"), 2U);
    EXPECT_THAT(handlers_->events(), HasSubstr("\"state\":\"running\""));
    EXPECT_THAT(handlers_->events(), HasSubstr("\"state\":\"done\""));
}

TEST_F(Buying, WhatTheServiceSaysIsBoughtIsOwnedAndNotBoughtAgainBeforeItsListCanBeRead) {
    offline_ = true;
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    handlers_->flush();
    EXPECT_EQ(repository_->ownedReads, 1);
    EXPECT_EQ(text(listed(), "state"), "done");
    auto const basket = handlers_->json("PUT", "/basket", {}, {}, R"({"clips":["1","2"]})");
    EXPECT_TRUE(item(basket, "clips", 0)->getBool("owned", false));
    EXPECT_FALSE(item(basket, "clips", 1)->getBool("owned", true));
    EXPECT_EQ(failure(order("l", "\"2\",\"1\"")), "conflict");
    EXPECT_EQ(sent_.size(), 1U);
    own("1");
    offline_ = false;
    pass(2s);
    EXPECT_EQ(repository_->ownedReads, 2) << "it is read again with the rhythm of the watch";
    EXPECT_EQ(text(listed(), "text"), "bought 1 clip with credits");
    pass(1h);
    EXPECT_EQ(repository_->ownedReads, 2) << "and no more once it has the clips";
}

TEST_F(Buying, AListThatNeverHasWhatWasBoughtIsBelievedAfterHalfAnHour) {
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done");
    handlers_->flush();
    EXPECT_EQ(failure(order("l", "\"1\"")), "conflict") << "a list may come late";
    EXPECT_TRUE(item(handlers_->json("PUT", "/basket", {}, {}, R"({"clips":["1"]})"), "clips", 0)
                    ->getBool("owned", false));
    pass(30min);
    EXPECT_EQ(text(listed(), "state"), "done");
    EXPECT_THAT(text(listed(), "text"), HasSubstr("the list of owned clips does not have them"));
    EXPECT_FALSE(item(handlers_->json("GET", "/basket"), "clips", 0)->getBool("owned", true));
    EXPECT_EQ(text(buy("m", "\"1\""), "state"), "done") << "as whoever has read that asks for it";
}

TEST_F(Buying, TheTotalOfTheBasketIsWhatCanBeBoughtNow) {
    repository_->onSearch = [](SearchQuery const&) {
        SearchResults found;
        found.assets = {ShelfRepository::clip("1", "one", "$9"), ShelfRepository::clip("2", "two", "$19"),
                        ShelfRepository::clip("3", "three", "")};
        found.totalCount = 3;
        found.pageCount = 1;
        return found;
    };
    static_cast<void>(handlers_->call("GET", "/search"));
    auto basket = handlers_->json("PUT", "/basket", {}, {}, R"({"clips":["1","2","3"]})");
    EXPECT_EQ(text(basket, "total"), "$28");
    EXPECT_EQ(basket->getInt("clipsToBuy", -1), 3);
    EXPECT_EQ(basket->getInt("unpriced", -1), 1);
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"2\",\"3\""));
    basket = handlers_->json("GET", "/basket");
    EXPECT_EQ(text(basket, "total"), "$9");
    EXPECT_EQ(basket->getInt("clipsToBuy", -1), 1);
    EXPECT_EQ(basket->getInt("unpriced", -1), 0);
    EXPECT_FALSE(item(basket, "clips", 0)->getBool("undecided", true));
    EXPECT_TRUE(item(basket, "clips", 1)->getBool("undecided", false));
    signInAs(L"bob");
    EXPECT_EQ(text(handlers_->json("GET", "/basket"), "total"), "$28") << "the doubt is another account's";
    signInAs(L"ada");
    pass(30min);
    EXPECT_EQ(text(handlers_->json("GET", "/basket"), "total"), "$28") << "nothing was bought";
}

TEST_F(Buying, ASignInHasTheListTell) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    signInAs(L"");
    own("1");
    pass(1h);
    EXPECT_EQ(repository_->ownedReads, 0) << "nobody is signed in";
    EXPECT_EQ(text(listed(), "state"), "doubtful");
    static_cast<void>(handlers_->call("POST", "/login", {}, {}, R"({"values":{"username":"ada"}})"));
    handlers_->flush();
    EXPECT_EQ(text(listed(), "state"), "done");
}

TEST_F(Buying, WhatIsOwnedIsNotBought) {
    own("1");
    static_cast<void>(handlers_->call("GET", "/owned"));
    EXPECT_EQ(failure(order("k", "\"2\",\"1\"")), "conflict");
    EXPECT_TRUE(sent_.empty());
    EXPECT_EQ(text(buy("k", "\"2\""), "state"), "done");
}

TEST_F(Buying, AWithdrawnOrderIsNotSentWhenItArrivesAfterAll) {
    auto const withdrawn = handlers_->json("DELETE", "/purchases/{key}", {"k"});
    EXPECT_EQ(text(withdrawn, "state"), "refused");
    EXPECT_EQ(text(withdrawn, "key"), "k");
    EXPECT_EQ(countListed(), 0) << "there was no order";
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "refused");
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "refused");
    EXPECT_TRUE(sent_.empty());
    EXPECT_EQ(text(buy("l", "\"1\""), "state"), "done");
}

TEST_F(Buying, AnOrderThatHasArrivedIsNotWithdrawn) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    EXPECT_EQ(text(handlers_->json("DELETE", "/purchases/{key}", {"k"}), "state"), "doubtful");
    EXPECT_EQ(text(listed(), "state"), "doubtful");
}

TEST_F(Buying, WhatIsBoughtLeavesTheBasket) {
    static_cast<void>(handlers_->call("PUT", "/basket", {}, {}, R"({"clips":["1","2","3"]})"));
    EXPECT_EQ(text(buy("k", "\"1\",\"3\""), "state"), "done");
    auto const basket = handlers_->json("GET", "/basket");
    ASSERT_EQ(child(basket, "clips")->getNumChildren(), 1);
    EXPECT_EQ(text(item(basket, "clips", 0), "id"), "2");
    EXPECT_EQ(handlers_->countEvents("basket"), 2U) << "one for each change";
}

TEST_F(Buying, WhatTurnsOutToBeBoughtLeavesTheBasketThenAndNotBefore) {
    static_cast<void>(handlers_->call("PUT", "/basket", {}, {}, R"({"clips":["1","2"]})"));
    answer_ = [this] { return losesAnswer(); };
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "doubtful");
    pass(2s);
    EXPECT_EQ(child(handlers_->json("GET", "/basket"), "clips")->getNumChildren(), 2);
    own("1");
    own("2");
    pass(2s);
    auto const basket = handlers_->json("GET", "/basket");
    ASSERT_EQ(child(basket, "clips")->getNumChildren(), 1);
    EXPECT_EQ(text(item(basket, "clips", 0), "id"), "2") << "owned, and nobody bought it here";
    EXPECT_TRUE(item(basket, "clips", 0)->getBool("owned", false));
}

TEST_F(Buying, WhatIsRefusedStaysInTheBasket) {
    static_cast<void>(handlers_->call("PUT", "/basket", {}, {}, R"({"clips":["1"]})"));
    answer_ = [] { return 3; };
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "refused");
    EXPECT_EQ(child(handlers_->json("GET", "/basket"), "clips")->getNumChildren(), 1);
    EXPECT_EQ(handlers_->countEvents("basket"), 1U);
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
    EXPECT_EQ(handlers_->countEvents("purchase"), 3U);
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

TEST_F(Buying, AnErrorOfTheServiceItselfIsInDoubtUntilTheListTellsOrHasNotForTwoMinutes) {
    answer_ = [this] { return failsWith(500); };
    auto const purchase = buy("k", "\"1\"");
    EXPECT_EQ(text(purchase, "state"), "doubtful") << "it may have failed behind the purchase";
    EXPECT_EQ(failure(order("l", "\"1\"")), "conflict");
    std::vector<int> looks;
    for (int second = 1; second <= 600; ++second) {
        int const before = repository_->ownedReads;
        pass(1s);
        if (repository_->ownedReads != before) {
            looks.push_back(second);
        }
        EXPECT_EQ(text(listed(), "state"), second < 120 ? "doubtful" : "refused") << second;
    }
    EXPECT_THAT(looks, ElementsAre(2, 4, 8, 16, 46, 76, 106, 120));
    EXPECT_EQ(text(listed(), "text"), "nothing was bought: the account does not own the clips");
    answer_ = [] { return 2; };
    EXPECT_EQ(text(buy("m", "\"1\""), "state"), "done");
    EXPECT_EQ(sent_.size(), 2U);
}

TEST_F(Buying, AnErrorBehindACarriedOutPurchaseIsFoundByTheFirstLook) {
    answer_ = [this] {
        own("1");
        return failsWith(500);
    };
    static_cast<void>(buy("k", "\"1\""));
    pass(2s);
    EXPECT_EQ(text(listed(), "state"), "done");
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(Buying, AnErrorOfAGatewayIsInDoubtForHalfAnHour) {
    answer_ = [this] { return failsWith(504); };
    static_cast<void>(buy("k", "\"1\""));
    pass(29min);
    EXPECT_EQ(text(listed(), "state"), "doubtful") << "the service may be at work behind it";
    EXPECT_EQ(failure(order("l", "\"1\"")), "conflict");
    pass(1min);
    EXPECT_EQ(text(listed(), "state"), "refused");
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
    EXPECT_THAT(text(listed(), "trouble"), HasSubstr("no route"));
    offline_ = false;
    pass(30s);
    EXPECT_EQ(text(listed(), "state"), "refused") << "the next list that is read tells";
    EXPECT_EQ(text(listed(), "text"), "nothing was bought: the account does not own the clips");
    EXPECT_EQ(text(listed(), "trouble"), "");
}

TEST_F(Buying, TheListOfAnotherUserTellsNothing) {
    answer_ = [this] { return losesAnswer(); };
    static_cast<void>(buy("k", "\"1\""));
    own("1");
    handlers_->desk().ask([this](zq::Session&) { repository_->signedInUser = L"bob"; });
    pass(2s);
    EXPECT_EQ(repository_->ownedReads, 0) << "it would be asked for nothing";
    static_cast<void>(handlers_->call("GET", "/owned"));
    EXPECT_EQ(text(listed(), "state"), "doubtful");
    handlers_->desk().ask([this](zq::Session&) { repository_->signedInUser = L"ada"; });
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
    EXPECT_TRUE(handlers_->links().contains("https://shelf.example/pay/1?a=b"));
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
    static_cast<void>(handlers_->call("GET", "/owned"));
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
    signInAs(L"");
    EXPECT_EQ(failure(order("k", "\"1\"", "credits")), "conflict");
    signInAs(L"ada");
    EXPECT_EQ(text(buy("k", "\"1\""), "state"), "done") << "the key is free: nothing had been sent";
    handlers_->desk().ask([this](zq::Session&) { repository_->form.clear(); });
    EXPECT_EQ(failure(order("l", "\"1\"", "credits")), "conflict") << "it sells nothing";
}

TEST_F(Buying, WithoutAConnectionNothingIsSentAndTheKeyStaysFree) {
    handlers_->desk().ask([this](zq::Session&) { repository_->connectResult = 11; });
    EXPECT_EQ(failure(order("k", "\"1\"", "credits")), "failed");
    handlers_->desk().ask([this](zq::Session&) { repository_->connectResult = 0; });
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
    handlers_->desk().post([&](zq::Session&) {
        entered.release();
        while (!leave) {
            std::this_thread::yield();
        }
    });
    entered.acquire();
    std::string end;
    std::thread buyer([&] { end = failure(order("k", "\"1\"", "credits")); });
    while (child(handlers_->json("GET", "/purchases"), "purchases")->getNumChildren() == 0) {
        std::this_thread::yield();
    }
    std::thread ending([&] { handlers_->desk().end(); });
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
    zq::panel::PanelMemory memory(home_.path() / "panel.toml");
    Baskets baskets(events, memory);
    std::atomic<int> hours{0};
    zq::OrderBook orders(home_.path() / "other.db");
    std::vector<std::unique_ptr<RepositoryDesk>> const noOthers;
    PurchaseClocks clocks;
    clocks.now = [&] { return Purchases::Clock::now() - std::chrono::hours(hours); };
    Purchases purchases(orders, noOthers, events, links, baskets, clocks);
    answer_ = [this] { return losesAnswer(); };
    hours = 1; // it seems to have been begun an hour ago
    EXPECT_THAT(purchases.buy(handlers_->desk(), {.key = "k", .clips = {"1"}}), HasSubstr("doubtful"));
    hours = 0; // and so the watch ends with the next look
    std::string told;
    do {
        handlers_->flush();
        told = purchases.list(handlers_->desk());
    } while (told.find("doubtful") != std::string::npos);
    EXPECT_THAT(told, HasSubstr("refused"));
    handlers_->end(); // which may still be at what the watch has asked for
}

} // namespace
