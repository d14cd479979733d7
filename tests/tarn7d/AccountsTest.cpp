#include "apps/tarn7d/Accounts.h"

#include <set>

#include <gtest/gtest.h>

#include "apps/tarn7d/PasswordHash.h"
#include "apps/tarn7d/Sessions.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using namespace tarn7d;
using std::chrono::seconds;

class AccountsTest : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::filesystem::path const file_ = folder_.path() / "accounts.db";
};

TEST_F(AccountsTest, ASignInNeedsNameAndPassword) {
    Accounts accounts(file_);
    ASSERT_TRUE(accounts.add("anna", "sécret", 40));
    Accounts::CheckResult const good = accounts.check("anna", "sécret");
    EXPECT_EQ(good.check, Accounts::Check::good);
    EXPECT_EQ(good.account.credits, 40);
    EXPECT_EQ(accounts.check("anna", "secret").check, Accounts::Check::wrongPassword);
    EXPECT_EQ(accounts.check("anna", "").check, Accounts::Check::wrongPassword);
    EXPECT_EQ(accounts.check("Anna", "sécret").check, Accounts::Check::unknownName);
    EXPECT_EQ(accounts.check("", "").check, Accounts::Check::unknownName);
}

TEST_F(AccountsTest, AccountsOutliveTheProgramAndAreReadableByTheirOwnerAlone) {
    { ASSERT_TRUE(Accounts(file_).add("anna", "secret", 1)); }
    Accounts accounts(file_);
    EXPECT_EQ(accounts.check("anna", "secret").check, Accounts::Check::good);
    using std::filesystem::perms;
    EXPECT_EQ(std::filesystem::status(file_).permissions(), perms::owner_read | perms::owner_write);
}

TEST_F(AccountsTest, ANameIsGivenOnceAndMustBeOne) {
    Accounts accounts(file_);
    EXPECT_TRUE(accounts.add("anna", "x", 0));
    EXPECT_FALSE(accounts.add("anna", "y", 0));
    EXPECT_FALSE(accounts.add("", "x", 0));
    EXPECT_FALSE(accounts.add(" anna", "x", 0));
    EXPECT_FALSE(accounts.add("a\nb", "x", 0));
    EXPECT_FALSE(accounts.add(std::string(200, 'a'), "x", 0));
    EXPECT_FALSE(accounts.add("ben", "x", -1));
    EXPECT_EQ(accounts.list().size(), 1U);
}

TEST_F(AccountsTest, CreditsAndPasswordCanBeChangedAndAccountsRemoved) {
    Accounts accounts(file_);
    ASSERT_TRUE(accounts.add("anna", "old", 0));
    std::int64_t const id = accounts.find("anna")->id;
    EXPECT_TRUE(accounts.setCredits("anna", 500));
    EXPECT_TRUE(accounts.setPassword("anna", "new"));
    EXPECT_EQ(accounts.find(id)->credits, 500);
    EXPECT_EQ(accounts.check("anna", "old").check, Accounts::Check::wrongPassword);
    EXPECT_EQ(accounts.check("anna", "new").check, Accounts::Check::good);
    EXPECT_FALSE(accounts.setCredits("ben", 1));
    EXPECT_FALSE(accounts.setPassword("ben", "x"));
    EXPECT_TRUE(accounts.remove("anna"));
    EXPECT_FALSE(accounts.remove("anna"));
    ASSERT_TRUE(accounts.add("anna", "again", 0));
    EXPECT_NE(accounts.find("anna")->id, id);
}

TEST(PasswordHash, TheSamePasswordIsHashedDifferentlyEachTime) {
    PasswordHash const first = hashPassword("secret");
    PasswordHash const second = hashPassword("secret");
    EXPECT_EQ(first.salt.size(), 16U);
    EXPECT_NE(first.salt, second.salt);
    EXPECT_NE(first.digest, second.digest);
    EXPECT_TRUE(isPassword("secret", first));
    EXPECT_TRUE(isPassword("secret", second));
    EXPECT_FALSE(isPassword("Secret", first));
    EXPECT_EQ((first.salt + first.digest).find("secret"), std::string::npos);
}

class SessionsTest : public testing::Test {
protected:
    std::chrono::steady_clock::time_point now_{};
    Sessions sessions_{[this] { return now_; }};
    SignInThrottle throttle_{[this] { return now_; }};
};

TEST_F(SessionsTest, SessionsArePositiveDifferentAndBoundToTheirAccount) {
    std::set<SessionKey> keys;
    for (std::int64_t account = 1; account <= 50; ++account) {
        SessionKey const key = sessions_.open(account);
        EXPECT_GT(key.context, 0);
        EXPECT_GT(key.marker, 0);
        EXPECT_TRUE(keys.insert(key).second);
        EXPECT_EQ(sessions_.account(key), account);
        EXPECT_FALSE(sessions_.account({key.context, key.marker ^ 1}));
        EXPECT_FALSE(sessions_.account({key.context ^ 1, key.marker}));
    }
    EXPECT_FALSE(sessions_.account({-1, -1}));
}

TEST_F(SessionsTest, AnAccountMayHaveSeveralSessionsAndEachEndsAlone) {
    SessionKey const first = sessions_.open(7);
    SessionKey const second = sessions_.open(7);
    sessions_.close(first);
    EXPECT_FALSE(sessions_.account(first));
    EXPECT_EQ(sessions_.account(second), 7);
}

TEST_F(SessionsTest, ASessionEndsWhenItIsIdleTooLong) {
    SessionKey const key = sessions_.open(7);
    now_ += Sessions::idleLimit;
    EXPECT_EQ(sessions_.account(key), 7);
    now_ += Sessions::idleLimit;
    EXPECT_EQ(sessions_.account(key), 7);
    now_ += Sessions::idleLimit + seconds(1);
    EXPECT_FALSE(sessions_.account(key));
}

TEST_F(SessionsTest, TooManySessionsEndTheOneIdleLongest) {
    SessionKey const oldest = sessions_.open(1);
    now_ += seconds(1);
    SessionKey const second = sessions_.open(2);
    now_ += seconds(1);
    for (std::size_t i = 2; i <= Sessions::mostSessions; ++i) {
        (void)sessions_.open(3);
    }
    EXPECT_FALSE(sessions_.account(oldest));
    EXPECT_EQ(sessions_.account(second), 2);
}

TEST_F(SessionsTest, GuessingPasswordsMeansWaitingLongerAndLonger) {
    for (int i = 1; i < SignInThrottle::freeFailures; ++i) {
        throttle_.noteFailure("anna");
        EXPECT_EQ(throttle_.waitFor("anna"), seconds(0));
    }
    throttle_.noteFailure("anna");
    EXPECT_EQ(throttle_.waitFor("anna"), seconds(1));
    EXPECT_EQ(throttle_.waitFor("ben"), seconds(0));
    now_ += seconds(1);
    EXPECT_EQ(throttle_.waitFor("anna"), seconds(0));
    throttle_.noteFailure("anna");
    EXPECT_EQ(throttle_.waitFor("anna"), seconds(2));
    for (int i = 0; i < 100; ++i) {
        throttle_.noteFailure("anna");
    }
    EXPECT_EQ(throttle_.waitFor("anna"), SignInThrottle::longestWait);
    throttle_.noteSuccess("anna");
    EXPECT_EQ(throttle_.waitFor("anna"), seconds(0));
}

} // namespace
