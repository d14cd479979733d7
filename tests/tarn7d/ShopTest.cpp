#include "apps/tarn7d/Shop.h"

#include <array>
#include <atomic>
#include <csignal>
#include <random>
#include <set>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "apps/tarn7d/AccountsDatabase.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestService.h"

namespace {

namespace fs = std::filesystem;
using namespace tarn7d;
using testing::ElementsAre;
using testing::IsEmpty;

using Ids = std::vector<std::int64_t>;

class ShopTest : public testing::Test {
protected:
    ShopTest() {
        test::putClips(service_.catalogueFile, {{.price_cents = 500},
                                                {.price_cents = 1999},
                                                {.price_cents = 0},
                                                {.price_cents = 4900, .title = "Large"},
                                                {.price_cents = 1}});
        (void)service_.signIn("anna", 100);
        (void)service_.signIn("ben", 100);
        anna_ = service_.accountId("anna");
        ben_ = service_.accountId("ben");
    }

    void put(std::int64_t account, Ids const& add, Ids const& remove = {}) {
        ASSERT_EQ(shop_.changeCart(account, remove, add), Shop::CartChange::done);
    }
    [[nodiscard]] Ids cartOf(std::int64_t account) {
        Ids ids;
        for (CartLine const& line : shop_.cart(account).lines) {
            ids.push_back(line.clip.id);
        }
        return ids;
    }
    [[nodiscard]] std::int64_t purchases() {
        engine::Database database = openAccountsDatabase(service_.accountsFile);
        engine::Statement count = database.prepare("SELECT count(*) FROM purchase");
        return count.step() ? count.integer(0) : -1;
    }

    test::TemporaryFolder folder_;
    test::TestService service_{folder_.path()};
    Shop& shop_ = service_.shop;
    std::int64_t anna_ = 0;
    std::int64_t ben_ = 0;
};

TEST_F(ShopTest, ACartIsTheAccountsOwnAndHoldsEachClipOnce) {
    put(anna_, {4, 1, 4});
    put(ben_, {2});
    put(anna_, {1, 2}, {4, 5});
    EXPECT_THAT(cartOf(anna_), ElementsAre(1, 2));
    EXPECT_THAT(cartOf(ben_), ElementsAre(2));
}

TEST_F(ShopTest, WhatIsRemovedAndAddedInOneChangeIsThere) {
    put(anna_, {1});
    put(anna_, {1}, {1});
    EXPECT_THAT(cartOf(anna_), ElementsAre(1));
}

TEST_F(ShopTest, AnUnknownClipLeavesTheCartAsItWas) {
    put(anna_, {1});
    EXPECT_EQ(shop_.changeCart(anna_, Ids{1}, Ids{2, 99}), Shop::CartChange::unknownClip);
    EXPECT_EQ(shop_.changeCart(anna_, Ids{1, 99}, Ids{2}), Shop::CartChange::unknownClip);
    EXPECT_THAT(cartOf(anna_), ElementsAre(1));
}

TEST_F(ShopTest, AClipWhoseFileIsGoneIsNeitherAddedNorShownNorCharged) {
    put(anna_, {1, 4});
    test::setPresent(service_.catalogueFile, 4, false);
    EXPECT_EQ(shop_.changeCart(anna_, {}, Ids{4}), Shop::CartChange::unknownClip);
    EXPECT_THAT(cartOf(anna_), ElementsAre(1));
    EXPECT_EQ(shop_.buyWithCredits(anna_).charged_credits, 5);
    test::setPresent(service_.catalogueFile, 4, true);
    EXPECT_THAT(cartOf(anna_), IsEmpty());
    EXPECT_THAT(shop_.owned(anna_), ElementsAre(1));
}

TEST_F(ShopTest, AClipWhoseFileIsGoneCanBeRemoved) {
    put(anna_, {1, 4});
    test::setPresent(service_.catalogueFile, 4, false);
    put(anna_, {}, {4});
    test::setPresent(service_.catalogueFile, 4, true);
    EXPECT_THAT(cartOf(anna_), ElementsAre(1));
}

TEST_F(ShopTest, ACartHasABound) {
    std::vector<test::TestClip> const many(Shop::mostInCart + 1);
    test::putClips(service_.catalogueFile, std::vector<test::TestClip>(many.size(), {.path = "more.mov"}));
    Ids ids;
    for (std::size_t i = 0; i < many.size(); ++i) {
        ids.push_back(static_cast<std::int64_t>(i) + 6);
    }
    EXPECT_EQ(shop_.changeCart(anna_, {}, ids), Shop::CartChange::full);
    EXPECT_THAT(cartOf(anna_), IsEmpty());
    ids.pop_back();
    EXPECT_EQ(shop_.changeCart(anna_, {}, ids), Shop::CartChange::done);
    EXPECT_EQ(shop_.changeCart(anna_, {}, Ids{1}), Shop::CartChange::full);
    EXPECT_EQ(shop_.changeCart(anna_, Ids{6}, Ids{1}), Shop::CartChange::done);
}

TEST_F(ShopTest, APartOfADollarCostsACreditForEachClip) {
    EXPECT_EQ(creditsOf(0), 0);
    EXPECT_EQ(creditsOf(1), 1);
    EXPECT_EQ(creditsOf(100), 1);
    EXPECT_EQ(creditsOf(101), 2);
    put(anna_, {2, 3, 5});
    EXPECT_EQ(shop_.cart(anna_).total_cents(), 2000);
    EXPECT_EQ(shop_.cart(anna_).total_credits(), 21);
    Shop::Purchase const purchase = shop_.buyWithCredits(anna_);
    EXPECT_EQ(purchase.outcome, Shop::Outcome::done);
    EXPECT_EQ(purchase.charged_credits, 21);
    EXPECT_EQ(purchase.left_credits, 79);
}

TEST_F(ShopTest, APurchaseChargesHandsOverAndEmptiesTheCart) {
    put(anna_, {4, 1});
    EXPECT_FALSE(shop_.owns(anna_, 1));
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::done);
    EXPECT_EQ(service_.credits("anna"), 100 - 49 - 5);
    EXPECT_EQ(service_.credits("ben"), 100);
    EXPECT_TRUE(shop_.owns(anna_, 1));
    EXPECT_FALSE(shop_.owns(ben_, 1));
    EXPECT_THAT(cartOf(anna_), IsEmpty());
    put(anna_, {2});
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::done);
    EXPECT_THAT(shop_.owned(anna_), ElementsAre(2, 1, 4));
}

TEST_F(ShopTest, AnOrderIsKeptWithTheTitlesAndPricesOfItsTime) {
    put(anna_, {4, 1});
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::done);
    engine::Database(service_.catalogueFile).execute("UPDATE clip SET title='Other', price_cents=1");
    engine::Database database = openAccountsDatabase(service_.accountsFile);
    Receipt const receipt = readReceipt(database, 1);
    EXPECT_EQ(receipt.made, service_.now);
    EXPECT_EQ(receipt.total_cents, 5400);
    ASSERT_EQ(receipt.lines.size(), 2U);
    EXPECT_EQ(receipt.lines[1].clipId, 4);
    EXPECT_EQ(receipt.lines[1].title, "Large");
    EXPECT_EQ(receipt.lines[1].price_cents, 4900);
}

TEST_F(ShopTest, BuyingWhatIsOwnedCostsNothingAndSucceeds) {
    put(anna_, {1, 4});
    EXPECT_EQ(shop_.buyWithCredits(anna_).charged_credits, 54);
    put(anna_, {1, 4});
    EXPECT_EQ(shop_.cart(anna_).total_credits(), 0);
    Shop::Purchase const again = shop_.buyWithCredits(anna_);
    EXPECT_EQ(again.outcome, Shop::Outcome::done);
    EXPECT_EQ(again.charged_credits, 0);
    EXPECT_EQ(again.left_credits, 46);
    put(anna_, {1, 2});
    EXPECT_EQ(shop_.buyWithCredits(anna_).charged_credits, 20);
    EXPECT_EQ(purchases(), 2);
    EXPECT_THAT(shop_.owned(anna_), ElementsAre(2, 1, 4));
}

TEST_F(ShopTest, ASecondPurchaseOfTheEmptiedCartChargesNothing) {
    put(anna_, {1});
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::done);
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::emptyCart);
    EXPECT_EQ(service_.credits("anna"), 95);
}

TEST_F(ShopTest, WhatTheCreditsDoNotCoverIsNotBoughtInPart) {
    ASSERT_TRUE(service_.accounts.setCredits("anna", 53));
    put(anna_, {1, 4});
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::notCovered);
    EXPECT_EQ(service_.credits("anna"), 53);
    EXPECT_THAT(shop_.owned(anna_), IsEmpty());
    EXPECT_THAT(cartOf(anna_), ElementsAre(1, 4));
    ASSERT_TRUE(service_.accounts.setCredits("anna", 54));
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::done);
    EXPECT_EQ(service_.credits("anna"), 0);
}

TEST_F(ShopTest, ABlockedAccountBuysNothing) {
    put(anna_, {1});
    ASSERT_TRUE(service_.accounts.setPaymentsBlocked("anna", true));
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::blocked);
    EXPECT_EQ(service_.credits("anna"), 100);
    ASSERT_TRUE(service_.accounts.setPaymentsBlocked("anna", false));
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::done);
}

TEST_F(ShopTest, ARemovedAccountLeavesNothingBehindAndBuysNothing) {
    put(anna_, {1});
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::done);
    put(anna_, {2});
    ASSERT_TRUE(service_.accounts.remove("anna"));
    EXPECT_EQ(shop_.buyWithCredits(anna_).outcome, Shop::Outcome::noAccount);
    EXPECT_THAT(shop_.owned(anna_), IsEmpty());
    EXPECT_THAT(cartOf(anna_), IsEmpty());
    EXPECT_EQ(purchases(), 0);
}

TEST_F(ShopTest, ManyPurchasesAtOnceChargeEachClipOnce) {
    // Two connections of the file, as two processes have them, and several threads on each.
    Shop other(service_.accountsFile, service_.catalogue);
    std::atomic<std::int64_t> charged = 0;
    std::atomic<int> unexpected = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 6; ++i) {
            threads.emplace_back([&, i] {
                Shop& shop = i % 2 == 0 ? shop_ : other;
                for (int round = 0; round < 5; ++round) {
                    unexpected += shop.changeCart(anna_, {}, Ids{1, 2, 4}) == Shop::CartChange::done ? 0 : 1;
                    Shop::Purchase const purchase = shop.buyWithCredits(anna_);
                    unexpected += purchase.outcome == Shop::Outcome::done ||
                                          purchase.outcome == Shop::Outcome::emptyCart
                                      ? 0
                                      : 1;
                    charged += purchase.charged_credits;
                }
            });
        }
    }
    EXPECT_EQ(unexpected, 0);
    EXPECT_EQ(charged, 5 + 20 + 49);
    EXPECT_EQ(service_.credits("anna"), 100 - 74);
    EXPECT_THAT(shop_.owned(anna_), testing::UnorderedElementsAre(1, 2, 4));
}

// What must hold of an account at any time: what it has paid for is what it owns, once each, and nothing
// that it owns lies in a half-bought cart.
void expectConsistent(fs::path const& accountsFile, std::int64_t account, std::int64_t creditsAtFirst) {
    engine::Database database = openAccountsDatabase(accountsFile);
    auto const number = [&](char const* question) {
        engine::Statement row = database.prepare(question);
        row.bind(1, account);
        return row.step() ? row.integer(0) : -1;
    };
    std::int64_t const paid = number("SELECT coalesce(sum(l.credits), 0) FROM purchase_line l "
                                     "JOIN purchase p ON p.id=l.purchase WHERE p.account=?1");
    EXPECT_EQ(number("SELECT credits FROM account WHERE id=?1"), creditsAtFirst - paid);
    EXPECT_EQ(number("SELECT coalesce(sum(total_credits), 0) FROM purchase WHERE account=?1"), paid);
    EXPECT_EQ(number("SELECT count(*) FROM purchase_line l JOIN purchase p ON p.id=l.purchase "
                     "WHERE p.account=?1"),
              number("SELECT count(*) FROM owned WHERE account=?1"));
    EXPECT_EQ(number("SELECT count(*) FROM owned o JOIN purchase_line l ON l.purchase=o.purchase "
                     "AND l.clip=o.clip WHERE o.account=?1"),
              number("SELECT count(*) FROM owned WHERE account=?1"));
    EXPECT_EQ(number("SELECT count(*) FROM owned JOIN cart USING (account, clip) WHERE account=?1"), 0);
}

TEST(ShopCrash, KilledAtAnyPointEitherEverythingWasBoughtOrNothing) {
    constexpr int clips = 3000;
    constexpr std::int64_t creditsAtFirst = 100'000;
    test::TemporaryFolder folder;
    std::int64_t account = 0;
    fs::path accountsFile;
    {
        test::TestService service(folder.path());
        test::putClips(service.catalogueFile, std::vector<test::TestClip>(clips, {.price_cents = 700}));
        (void)service.signIn("anna", creditsAtFirst);
        account = service.accountId("anna");
        accountsFile = service.accountsFile;
    }
    std::mt19937 random(20260731);
    std::uniform_int_distribution<int> pause_us(0, 40'000);
    int killed = 0;
    for (int round = 0; round < 40; ++round) {
        std::array<int, 2> ready{};
        ASSERT_EQ(::pipe(ready.data()), 0);
        pid_t const child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            // Buys three clips at a time, from where an earlier child was killed.
            Catalogue catalogue(folder.path() / "catalogue.db", folder.path() / "footage");
            Shop shop(accountsFile, catalogue);
            (void)!::write(ready[1], "r", 1);
            for (auto next = static_cast<std::int64_t>(shop.owned(account).size()) + 1; next + 2 <= clips;
                 next += 3) {
                (void)shop.changeCart(account, {}, Ids{next, next + 1, next + 2});
                (void)shop.buyWithCredits(account);
            }
            ::_exit(0);
        }
        char byte = 0;
        ASSERT_EQ(::read(ready[0], &byte, 1), 1);
        // The kill falls anywhere in a purchase.
        std::this_thread::sleep_for(std::chrono::microseconds(pause_us(random)));
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        killed += WIFSIGNALED(status) ? 1 : 0;
        ::close(ready[0]);
        ::close(ready[1]);
        expectConsistent(accountsFile, account, creditsAtFirst);
    }
    EXPECT_GT(killed, 0) << "every child had ended before it was killed";
    engine::Database database = openAccountsDatabase(accountsFile);
    engine::Statement bought = database.prepare("SELECT count(*) FROM purchase");
    ASSERT_TRUE(bought.step());
    EXPECT_GT(bought.integer(0), 0) << "every child was killed before it bought";
}

TEST(ShopCrash, WhatAKilledServiceLeftInTheCartIsBoughtOnce) {
    test::TemporaryFolder folder;
    test::TestService service(folder.path());
    test::putClips(service.catalogueFile, {{.price_cents = 700}});
    (void)service.signIn("anna", 10);
    std::int64_t const account = service.accountId("anna");
    ASSERT_EQ(service.shop.changeCart(account, {}, Ids{1}), Shop::CartChange::done);
    {
        // A purchase that stopped behind its last statement, before the commit.
        engine::Database database = openAccountsDatabase(service.accountsFile);
        engine::Transaction const transaction(database);
        Cart const cart = readCart(database, service.catalogue, account);
        EXPECT_EQ(enterPurchase(database, account, cart, PaymentWay::credits, 1), 1);
    }
    expectConsistent(service.accountsFile, account, 10);
    EXPECT_EQ(service.shop.buyWithCredits(account).charged_credits, 7);
    expectConsistent(service.accountsFile, account, 10);
}

TEST(AccountsDatabase, TheFileOfTheVersionBeforeKeepsItsAccountsAndGetsAShop) {
    test::TemporaryFolder folder;
    fs::path const file = folder.path() / "accounts.db";
    {
        engine::Database old(file);
        old.execute("CREATE TABLE account ("
                    "    id INTEGER PRIMARY KEY AUTOINCREMENT,"
                    "    name TEXT NOT NULL UNIQUE,"
                    "    salt TEXT NOT NULL,"
                    "    digest TEXT NOT NULL,"
                    "    credits INTEGER NOT NULL CHECK (credits >= 0));"
                    "INSERT INTO account VALUES (7, 'anna', '00', '11', 40);");
        old.setSchemaVersion(1);
    }
    test::TestService service(folder.path());
    ASSERT_TRUE(service.accounts.find("anna"));
    EXPECT_EQ(service.accounts.find("anna")->id, 7);
    EXPECT_EQ(service.accounts.find("anna")->credits, 40);
    EXPECT_FALSE(service.accounts.find("anna")->paymentsBlocked);
    test::putClips(service.catalogueFile, {{.price_cents = 700}});
    ASSERT_EQ(service.shop.changeCart(7, {}, Ids{1}), Shop::CartChange::done);
    EXPECT_EQ(service.shop.buyWithCredits(7).left_credits, 33);
    // Opening it again changes nothing.
    EXPECT_THAT(Shop(file, service.catalogue).owned(7), ElementsAre(1));
}

TEST(AccountsDatabase, TheFileOfANewerVersionIsRefusedAndLeftAlone) {
    test::TemporaryFolder folder;
    fs::path const file = folder.path() / "accounts.db";
    (void)openAccountsDatabase(file);
    engine::Database(file).setSchemaVersion(99);
    EXPECT_THROW((void)openAccountsDatabase(file), std::runtime_error);
    EXPECT_EQ(engine::Database(file).schemaVersion(), 99);
}

} // namespace
