#include "apps/tarn7d/Payments.h"

#include <atomic>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/ServerFixture.h"
#include "tests/tarn7d/TestService.h"

namespace {

using namespace tarn7d;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Ids = std::vector<std::int64_t>;
using State = Payments::State;

class PaymentsTest : public testing::Test {
protected:
    PaymentsTest() {
        test::putClips(service_.catalogueFile,
                       {{.price_cents = 500}, {.price_cents = 1999}, {.price_cents = 0}});
        (void)service_.signIn("anna", 3);
        anna_ = service_.accountId("anna");
    }
    void put(Ids const& add, Ids const& remove = {}) {
        ASSERT_EQ(service_.shop.changeCart(anna_, remove, add), Shop::CartChange::done);
    }
    [[nodiscard]] std::string begin() { return payments_.begin(anna_).token; }

    test::TemporaryFolder folder_;
    test::TestService service_{folder_.path()};
    Payments& payments_ = service_.payments;
    std::int64_t anna_ = 0;
};

TEST_F(PaymentsTest, APaymentHandsOverTheCartAndLeavesTheCreditsAlone) {
    put({1, 2});
    std::string const token = begin();
    Payments::View const open = payments_.view(token);
    EXPECT_EQ(open.state, State::open);
    EXPECT_EQ(open.accountName, "anna");
    EXPECT_EQ(open.cart.total_cents(), 2499);
    Payments::View const paid = payments_.pay(token);
    EXPECT_EQ(paid.state, State::paid);
    EXPECT_TRUE(paid.paidNow);
    EXPECT_EQ(paid.receipt.total_cents, 2499);
    EXPECT_THAT(service_.shop.owned(anna_), ElementsAre(1, 2));
    EXPECT_THAT(service_.shop.cart(anna_).lines, IsEmpty());
    EXPECT_EQ(service_.credits("anna"), 3);
}

TEST_F(PaymentsTest, ATokenPaysOnce) {
    put({1});
    std::string const token = begin();
    EXPECT_TRUE(payments_.pay(token).paidNow);
    put({2});
    Payments::View const again = payments_.pay(token);
    EXPECT_EQ(again.state, State::paid);
    EXPECT_FALSE(again.paidNow);
    EXPECT_EQ(again.receipt.total_cents, 500);
    EXPECT_THAT(service_.shop.owned(anna_), ElementsAre(1));
}

TEST_F(PaymentsTest, OfManyWhoPayAtOnceOneDoes) {
    put({1, 2});
    std::string const token = begin();
    std::string const second = begin();
    Payments other(service_.accountsFile, service_.catalogue, Payments::usualLifetime,
                   [this] { return service_.now; });
    std::atomic<int> paid = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 6; ++i) {
            threads.emplace_back([&, i] {
                Payments& payments = i % 2 == 0 ? payments_ : other;
                paid += payments.pay(i % 3 == 0 ? second : token).paidNow ? 1 : 0;
            });
        }
    }
    EXPECT_EQ(paid, 1);
    EXPECT_THAT(service_.shop.owned(anna_), ElementsAre(1, 2));
}

TEST_F(PaymentsTest, ATokenStandsForOneCartAtOnePrice) {
    put({1});
    std::string const token = begin();
    put({2});
    EXPECT_EQ(payments_.pay(token).state, State::changed);
    EXPECT_THAT(service_.shop.owned(anna_), IsEmpty());
    put({}, {2});
    EXPECT_EQ(payments_.view(token).state, State::open);
    engine::Database(service_.catalogueFile).execute("UPDATE clip SET price_cents=501 WHERE id=1");
    EXPECT_EQ(payments_.pay(token).state, State::changed);
    engine::Database(service_.catalogueFile).execute("UPDATE clip SET price_cents=500 WHERE id=1");
    ASSERT_TRUE(service_.accounts.setCredits("anna", 5));
    EXPECT_EQ(service_.shop.buyWithCredits(anna_).outcome, Shop::Outcome::done);
    EXPECT_EQ(payments_.pay(token).state, State::changed);
    put({1});
    EXPECT_EQ(payments_.pay(token).state, State::changed) << "the clip now costs nothing";
}

TEST_F(PaymentsTest, ATokenExpiresAndSurvivesARestart) {
    put({1});
    std::string const token = begin();
    auto const lifetime = std::chrono::seconds(Payments::usualLifetime).count();
    service_.now += lifetime - 1;
    {
        Payments restarted(service_.accountsFile, service_.catalogue, Payments::usualLifetime,
                           [this] { return service_.now; });
        EXPECT_EQ(restarted.view(token).state, State::open);
    }
    service_.now += 1;
    EXPECT_EQ(payments_.pay(token).state, State::expired);
    EXPECT_THAT(service_.shop.owned(anna_), IsEmpty());
}

TEST_F(PaymentsTest, ABlockedOrRemovedAccountPaysNothing) {
    put({1});
    std::string const token = begin();
    ASSERT_TRUE(service_.accounts.setPaymentsBlocked("anna", true));
    EXPECT_EQ(payments_.pay(token).state, State::blocked);
    EXPECT_EQ(payments_.begin(anna_).outcome, Payments::Outcome::blocked);
    ASSERT_TRUE(service_.accounts.remove("anna"));
    EXPECT_EQ(payments_.pay(token).state, State::unknown);
    EXPECT_EQ(payments_.begin(anna_).outcome, Payments::Outcome::noAccount);
}

TEST_F(PaymentsTest, WhatIsNoTokenIsUnknown) {
    put({1});
    std::string const token = begin();
    for (std::string const& other : {std::string(), std::string("x"), token.substr(1), token + "0",
                                     std::string("' OR 1=1 --"), std::string(100'000, 'a')}) {
        EXPECT_EQ(payments_.pay(other).state, State::unknown);
    }
    std::string const stored =
        test::fileBytes(service_.accountsFile) + test::fileBytes(service_.accountsFile.string() + "-wal");
    EXPECT_THAT(stored, Not(HasSubstr(token))) << "the token itself must not be kept";
}

TEST_F(PaymentsTest, TheTokensOfOneAccountAreBounded) {
    put({1});
    std::string const first = begin();
    for (int i = 0; i < 19; ++i) {
        (void)begin();
    }
    EXPECT_EQ(payments_.view(first).state, State::open);
    std::string const last = begin();
    EXPECT_EQ(payments_.view(first).state, State::unknown);
    EXPECT_EQ(payments_.view(last).state, State::open);
}

} // namespace
