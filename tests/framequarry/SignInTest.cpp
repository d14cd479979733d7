#include "tests/fake_host/WatchedHost.h"
#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

// The form, byte for byte, with that value in the field of the name.
std::string formWithValue(std::string_view value) {
    return std::string(R"({"":[{"name":"username","legend":"Username","type":"text",)"
                       R"("hint":"[ type your username ]","value":")")
        .append(value)
        .append(R"("},{"name":"password","legend":"Password","type":"text","obfuscated":true,"advance":true,)"
                R"("hint":"[ type your password ]"}]})");
}

class SignIn : public FrameQuarryTest {
protected:
    // A page in the base's cache, so that emptying it shows.
    void fillCache() {
        connect();
        host.network.answerWith(answerOf("[" + itemWith(R"("id":1)") + "]"));
        ASSERT_EQ(resource.search({}).assets.size(), 1U);
        ASSERT_FALSE(resource.searchResultCache.empty());
        host.network.forgetRequests();
    }

    fake::WatchedHost watched;
};

TEST_F(SignIn, TheFormBeginsEmpty) {
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue(""));
}

TEST_F(SignIn, TheFormTakesTheNameFromItsOwnPreference) {
    host.preferences.write("T7 User", WideString(L"bob"));
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue(""));
    host.preferences.write("FQ User", WideString(L"ada"));
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue("ada"));
    host.preferences.write("FQ User", wide("a\"d\\a\n\u00e9"));
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue("a\\\"d\\\\a\\n\u00e9"));
}

TEST_F(SignIn, TheFormReadsOnePreferenceAndDoesNothingElse) {
    std::vector<std::string> read;
    watched.preferences.onRead = [&](char const* key) { read.emplace_back(key); };
    (void)resource.getLoginForm();
    EXPECT_EQ(read, std::vector<std::string>{"FQ User"});
    EXPECT_TRUE(host.preferences.writes().empty());
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(SignIn, ThereIsNoPanelWithALink) {
    EXPECT_TRUE(resource.getLoginLinkForm().isEmpty());
    resource.signedInUser = L"ada";
    EXPECT_TRUE(resource.getLoginLinkForm().isEmpty());
}

TEST_F(SignIn, EveryAttemptFailsWhateverWasTyped) {
    connect();
    EXPECT_EQ(resource.login(typedForm("ada", "secret")), 17);
    EXPECT_EQ(resource.login(typedForm("", "")), 17);
    EXPECT_EQ(resource.login(typedForm(std::string(100000, 'x'), "\xff\xfe\n\"")), 17);
    configb nameOnly;
    nameOnly.set("username", "ada");
    EXPECT_EQ(resource.login(nameOnly), 17);
    configb passwordOnly;
    passwordOnly.set("password", "secret");
    EXPECT_EQ(resource.login(passwordOnly), 17);
    EXPECT_EQ(resource.login({}), 17);
    resource.disconnect();
    EXPECT_EQ(resource.login(typedForm("ada", "secret")), 17);
}

TEST_F(SignIn, AnAttemptTouchesNothing) {
    fillCache();
    int preferences = 0;
    watched.preferences.onRead = [&](char const*) { ++preferences; };
    watched.preferences.onWrite = [&](char const*) { ++preferences; };
    std::size_t const servers = host.network.connections().size();
    EXPECT_EQ(resource.login(typedForm("ada", "secret")), 17);
    EXPECT_EQ(preferences, 0);
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_EQ(host.network.connections().size(), servers);
    EXPECT_TRUE(resource.signedInUser.isEmpty());
    EXPECT_TRUE(resource.getDescription().connection.user.isEmpty());
    EXPECT_FALSE(resource.searchResultCache.empty());
    EXPECT_TRUE(resource.isConnected());
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(SignIn, AnAttemptLeavesANameThatSomebodyElseSet) {
    resource.signedInUser = L"bob";
    EXPECT_EQ(resource.login(typedForm("ada", "secret")), 17);
    EXPECT_EQ(resource.signedInUser, L"bob");
}

TEST_F(SignIn, TheFormDoesNotFollowAnEarlierAttempt) {
    (void)resource.login(typedForm("ada", "secret"));
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue(""));
    host.preferences.write("FQ User", WideString(L"bob"));
    (void)resource.login(typedForm("ada", "secret"));
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue("bob"));
}

TEST_F(SignIn, SigningOutChangesNothingBeforeAndAfterAnAttempt) {
    fillCache();
    resource.purchasedIds = {L"1"};
    resource.logout();
    (void)resource.login(typedForm("ada", "secret"));
    resource.logout();
    resource.signedInUser = L"bob";
    resource.logout();
    EXPECT_EQ(resource.signedInUser, L"bob");
    EXPECT_EQ(resource.purchasedIds.size(), 1U);
    EXPECT_FALSE(resource.searchResultCache.empty());
    EXPECT_TRUE(resource.isConnected());
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.preferences.writes().empty());
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(SignIn, NothingIsOwnedAndNothingIsForSaleInAnyState) {
    LightweightVector<RemoteAsset> const assets(2);
    auto const expectNothing = [&] {
        EXPECT_TRUE(resource.getPurchasedAssets().empty());
        EXPECT_EQ(resource.requestExternalPurchase(assets), 0);
        EXPECT_EQ(resource.requestCreditPurchase(assets), 0);
        EXPECT_EQ(resource.requestExternalPurchase({}), 0);
        EXPECT_EQ(resource.requestCreditPurchase({}), 0);
        EXPECT_EQ(host.network.requestCount(), 0U);
        EXPECT_TRUE(host.shell.opened.empty());
        EXPECT_TRUE(host.actions.record.calls().empty());
        EXPECT_TRUE(host.log.lines().empty());
    };
    expectNothing();
    connect();
    expectNothing();
    resource.signedInUser = L"ada";
    resource.purchasedIds = {L"1"};
    expectNothing();
    EXPECT_EQ(resource.purchasedIds.size(), 1U);
}

} // namespace
} // namespace framequarry_tests
