// Every command of the road meets every fault that its answer can have: the outcome is the one that the
// command defines, nothing is lost or paid twice, and the next attempt succeeds.

#include <gmock/gmock.h>

#include <fstream>

#include "host/resources/resourceStr.h"
#include "tests/road/Faults.h"

namespace {

using namespace road_tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

#define EVERY_ANSWER_FAULT(Suite)                                                                            \
    INSTANTIATE_TEST_SUITE_P(Meets, Suite, testing::ValuesIn(answerFaults()), nameOf)

class SignInFault : public FaultyRoad {};

TEST_P(SignInFault, SignsNobodyInAndTheNextAttemptDoes) {
    host().client().logout();
    spoil("login");
    std::int32_t const result = host().signIn("ada", "secret");
    EXPECT_EQ(result == 0, fault().answered) << result;
    EXPECT_EQ(utf8(host().client().getDescription().connection.user), fault().answered ? "ada" : "");
    EXPECT_EQ(host().signIn("ada", "secret"), 0);
    EXPECT_EQ(creditsLeft(), credits);
}
EVERY_ANSWER_FAULT(SignInFault);

class SearchFault : public FaultyRoad {};

TEST_P(SearchFault, FindsNothingAndTheNextSearchFindsAll) {
    spoil("search");
    EXPECT_THAT(host().search("").assets, SizeIs(fault().answered ? 2 : 0));
    SearchResults const again = host().search("");
    ASSERT_THAT(again.assets, SizeIs(2));
    EXPECT_EQ(again.totalCount, 2);
}
EVERY_ANSWER_FAULT(SearchFault);

class ClipDataFault : public FaultyRoad {};

TEST_P(ClipDataFault, LeavesTheRateUnknownAndTheNextListKnowsIt) {
    ASSERT_EQ(host().client().requestCreditPurchase(listOf(clip("tape"))), 2);
    startAnew(); // the search has told the rate
    spoil("get_clip_data");
    LightweightVector<RemoteAsset> const first = host().client().getPurchasedAssets();
    ASSERT_THAT(first, SizeIs(1)) << "it is owned all the same";
    EXPECT_EQ(timesMet(), 1);
    EXPECT_EQ(first[0].frameRate, fault().answered ? Zq::FrameRate::f29_97 : Zq::FrameRate::unknown);
    LightweightVector<RemoteAsset> const again = host().client().getPurchasedAssets();
    ASSERT_THAT(again, SizeIs(1));
    EXPECT_EQ(again[0].frameRate, Zq::FrameRate::f29_97);
}
EVERY_ANSWER_FAULT(ClipDataFault);

class OwnedListFault : public FaultyRoad {};

TEST_P(OwnedListFault, OwnsNothingUntilTheNextAnswer) {
    RemoteAsset const car = bought("car");
    ASSERT_TRUE(host().client().isPurchased(car));
    spoil("get_downloads_formatted");
    EXPECT_THAT(host().client().getPurchasedAssets(), SizeIs(fault().answered ? 1 : 0));
    EXPECT_EQ(host().client().isPurchased(car), fault().answered);
    EXPECT_THAT(host().client().getPurchasedAssets(), SizeIs(1));
    EXPECT_TRUE(host().client().isPurchased(car));
}
EVERY_ANSWER_FAULT(OwnedListFault);

// Buying the clip "car", whose price is taken from the account once whatever happens.
class PurchaseFault : public FaultyRoad {
protected:
    PurchaseFault() : car_(clip("car")) {
        EXPECT_EQ(host().client().requestCreditPurchase(listOf(clip("tape"))), 2);
        left_ = creditsLeft();
        EXPECT_LT(left_, credits);
        // Both cost the same: no footage has a price of its own.
        price_ = credits - left_;
    }
    std::int32_t buy() { return host().client().requestCreditPurchase(listOf(car_)); }
    void expectBoughtOnce() {
        EXPECT_EQ(countOwned(), 2u);
        EXPECT_EQ(creditsLeft(), left_ - price_);
    }
    void expectNothingBought() {
        EXPECT_EQ(countOwned(), 1u);
        EXPECT_EQ(creditsLeft(), left_);
    }

    RemoteAsset const car_;
    std::int64_t left_ = 0;
    std::int64_t price_ = 0;
};

class CartReadingFault : public PurchaseFault {};

TEST_P(CartReadingFault, CountsAsAnEmptyCartAndThePurchaseGoesOn) {
    spoil("get_cart_formatted");
    EXPECT_EQ(buy(), 2);
    EXPECT_EQ(timesMet(), 1);
    expectBoughtOnce();
    EXPECT_EQ(buy(), 2) << "what is owned already costs nothing";
    expectBoughtOnce();
}
EVERY_ANSWER_FAULT(CartReadingFault);

class CartChangeFault : public PurchaseFault {};

TEST_P(CartChangeFault, BuysNothingAndTheNextAttemptDoes) {
    spoil("modify_active_cart");
    std::size_t const lines = host().logLines().size();
    if (fault().answered) {
        EXPECT_EQ(buy(), 2);
        expectBoughtOnce();
        return;
    }
    EXPECT_EQ(buy(), 0);
    EXPECT_THAT(host().logLines(), SizeIs(lines)) << "a failure of the cart is silent";
    expectNothingBought();
    EXPECT_EQ(buy(), 2);
    expectBoughtOnce();
}
EVERY_ANSWER_FAULT(CartChangeFault);

class CreditPurchaseFault : public PurchaseFault {};

TEST_P(CreditPurchaseFault, IsSilentLosesNothingAndChargesOnce) {
    spoil("purchase_using_credits");
    std::size_t const lines = host().logLines().size();
    EXPECT_EQ(buy(), fault().answered ? 2 : 0);
    EXPECT_THAT(host().logLines(), SizeIs(lines));
    if (fault().carriedOut) {
        expectBoughtOnce(); // whether the client has heard of it or not
    } else {
        expectNothingBought();
    }
    EXPECT_EQ(buy(), 2);
    expectBoughtOnce();
}
EVERY_ANSWER_FAULT(CreditPurchaseFault);

class CashPurchaseFault : public PurchaseFault {};

TEST_P(CashPurchaseFault, OpensNoPageWritesALineAndTheNextAttemptOpensOne) {
    spoil("purchase_using_cash");
    auto const buyForCash = [this] { return host().client().requestExternalPurchase(listOf(car_)); };
    std::size_t const lines = host().logLines().size();
    if (fault().answered) {
        EXPECT_EQ(buyForCash(), 2);
        EXPECT_THAT(host().logLines(), SizeIs(lines));
    } else {
        EXPECT_EQ(buyForCash(), 0);
        EXPECT_THAT(host().openedPages(), IsEmpty());
        ASSERT_THAT(host().logLines(), SizeIs(lines + 1));
        EXPECT_EQ(host().logLines().back(), "Tarn7Resource::requestExternalPurchase() : Error -1 ()");
        EXPECT_EQ(buyForCash(), 2);
    }
    EXPECT_THAT(host().openedPages(), ElementsAre(StartsWith("https://www.tarn7.example/pay/")));
    expectNothingBought();
}
EVERY_ANSWER_FAULT(CashPurchaseFault);

class DownloadFault : public FaultyRoad {};

TEST_P(DownloadFault, RefusesTheFetchInWordsAndTheNextFetchSucceeds) {
    RemoteAsset const car = bought("car");
    spoil("download");
    RoadHost::Fetch const first = host().fetch(car);
    EXPECT_EQ(timesMet(), 1);
    EXPECT_TRUE(first.isIndentBack);
    if (!fault().answered) {
        EXPECT_FALSE(first.result);
        EXPECT_THAT(first.lines,
                    ElementsAre(FetchLog::Line{"Car", LoggerBase::ePlain, 0},
                                FetchLog::Line{utf8(resourceStrW(13771)) + " : ", LoggerBase::ePlain, 0}));
        EXPECT_THAT(host().mediaFiles(), IsEmpty());
        EXPECT_EQ(host().playedMedia(car), "") << "the edit keeps its preview";
        EXPECT_TRUE(host().fetch(car).result);
    } else {
        EXPECT_TRUE(first.result);
    }
    EXPECT_EQ(host().playedMedia(car), host().fullFile(car).string());
    EXPECT_TRUE(same(bytesOf(host().fullFile(car)), footageBytes("car.mov")));
    EXPECT_THAT(host().mediaFiles(), SizeIs(1));
}
EVERY_ANSWER_FAULT(DownloadFault);

// A server that says nothing: whoever cancels need not wait for it.
class SilentCommand : public Road, public testing::WithParamInterface<std::string> {};

TEST_P(SilentCommand, IsLeftWithinHalfASecondOfBeingCancelledAndSucceedsTheNextTime) {
    RemoteAsset const car = clip("car");
    if (GetParam() == "get_downloads_formatted" || GetParam() == "download") {
        ASSERT_EQ(host().client().requestCreditPurchase(listOf(car)), 2);
    } else if (GetParam() == "get_clip_data") {
        ASSERT_EQ(host().client().requestCreditPurchase(listOf(clip("tape"))), 2);
        startAnew();
    }
    RemoteAsset const ownedCar = GetParam() == "download" ? host().owned(utf8(car.id)) : RemoteAsset();
    EditModifier const edit = host().client().openEdit(car, iMediaFileRepository::eOpenNormally);
    auto const act = [&] {
        RoadResource& client = host().client();
        std::string const& command = GetParam();
        if (command == "login") {
            return host().signIn("ada", "secret") == 0;
        }
        if (command == "search") {
            return !host().search("tape").assets.empty();
        }
        if (command == "get_clip_data") {
            LightweightVector<RemoteAsset> const all = client.getPurchasedAssets();
            return !all.empty() && all[0].frameRate != Zq::FrameRate::unknown;
        }
        if (command == "get_downloads_formatted") {
            return !client.getPurchasedAssets().empty();
        }
        if (command == "download") {
            return client.fetchFullMedia(listOf(ownedCar), 0, LoggerHandle());
        }
        return command == "purchase_using_cash" ? client.requestExternalPurchase(listOf(car)) == 2
                                                : client.requestCreditPurchase(listOf(car)) == 2;
    };
    tarn7d::FaultRule silent = timeRule(tarn7d::FaultKind::stall, std::chrono::minutes(5));
    silent.command = GetParam();
    (void)desk().add(silent);
    bool succeeded = true;
    EXPECT_LT(cancelledAtFault([&] { succeeded = act(); }), std::chrono::milliseconds(500));
    EXPECT_FALSE(succeeded);
    desk().clear();
    EXPECT_TRUE(act());
    EXPECT_GE(creditsLeft(), 0) << "the session holds";
}
INSTANTIATE_TEST_SUITE_P(Of, SilentCommand,
                         testing::Values("login", "search", "get_clip_data", "get_cart_formatted",
                                         "modify_active_cart", "purchase_using_credits",
                                         "purchase_using_cash", "get_downloads_formatted", "download"),
                         [](auto const& command) { return command.param; });

} // namespace
