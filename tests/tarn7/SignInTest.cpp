#include <nlohmann/json.hpp>

#include "tests/fake_host/WatchedHost.h"
#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class SignIn : public Tarn7Test {
protected:
    void SetUp() override { connect(); }
    std::int32_t loginAnswered(std::string answer) {
        host.network.answerWith(std::move(answer));
        return resource.login(typedForm("ada", "secret"));
    }
    [[nodiscard]] std::string sentCommands() const {
        std::string envelope = lastBody().substr(4);
        envelope.resize(std::min(envelope.find("&apicx="), envelope.size()));
        return nlohmann::json::parse(envelope)["commands_json"];
    }
    // Leaves one page of results in the cache.
    void fillCache() {
        host.network.answerWith(foundItems(R"([{"id":1,"fps_real":"25"}])"));
        ASSERT_EQ(resource.search({}).assets.size(), 1U);
        ASSERT_FALSE(resource.searchResultCache.empty());
        host.network.forgetRequests();
    }
};

TEST_F(SignIn, TheTypedValuesGoOutInOneCommand) {
    (void)loginAnswered("{}");
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_EQ(sentCommands(), R"([{"command":"login","username":"ada","password":"secret"}])");
}

TEST_F(SignIn, EmptyAndMissingValuesAreSentEmpty) {
    (void)resource.login(typedForm("", ""));
    EXPECT_EQ(sentCommands(), R"([{"command":"login","username":"","password":""}])");
    (void)resource.login({});
    EXPECT_EQ(sentCommands(), R"([{"command":"login","username":"","password":""}])");
    EXPECT_EQ(host.network.requestCount(), 2U);
}

TEST_F(SignIn, ASuccessSetsNameAndSessionAndRemembersTheName) {
    EXPECT_EQ(loginAnswered(answerOf({R"({"cx":12,"cm":34})"})), 0);
    EXPECT_EQ(utf8(resource.signedInUser), "ada");
    EXPECT_EQ(resource.sessionContext, 12);
    EXPECT_EQ(resource.sessionMarker, 34);
    ASSERT_EQ(host.preferences.writes().size(), 1U);
    EXPECT_EQ(host.preferences.writes()[0].key, "T7 User");
    EXPECT_EQ(utf8(std::get<WideString>(host.preferences.writes()[0].value)), "ada");
}

TEST_F(SignIn, ANameBeyondAsciiIsSentAndRememberedWhole) {
    host.network.answerWith(answerOf({R"({"cx":1,"cm":2})"}));
    EXPECT_EQ(resource.login(typedForm("z\u00f6e \U0001f3ac", "p\u00e4ss")), 0);
    EXPECT_EQ(utf8(resource.signedInUser), "z\u00f6e \U0001f3ac");
    EXPECT_NE(sentCommands().find("p\u00e4ss"), std::string::npos);
}

TEST_F(SignIn, ASuccessEmptiesTheCachedResultsBeforeItRemembersTheName) {
    fillCache();
    fake::WatchedHost watched;
    std::vector<std::string> steps;
    watched.preferences.onWrite = [&](char const* key) {
        steps.push_back(std::string(key) +
                        (resource.searchResultCache.empty() ? ", cache empty" : ", cache full") + ", name " +
                        utf8(resource.signedInUser));
    };
    EXPECT_EQ(loginAnswered(answerOf({R"({"cx":12,"cm":34})"})), 0);
    EXPECT_EQ(steps, std::vector<std::string>{"T7 User, cache empty, name ada"});
}

TEST_F(SignIn, AnErrorTextWithTheWrongPasswordGivesSeven) {
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":"Error: Wrong password given"}]})"), 7);
    EXPECT_EQ(loginAnswered(R"({"e":false,"commands":[{"s":"Wrong password"}]})"), 7);
}

TEST_F(SignIn, AnErrorTextWithAnUnknownUserGivesTwo) {
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":"Failed to find user ada"}]})"), 2);
    EXPECT_EQ(loginAnswered(R"({"commands":[{"s":"Failed to find user"}]})"), 2);
}

TEST_F(SignIn, AnErrorTextWithBothGivesSeven) {
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":"Failed to find user. Wrong password"}]})"), 7);
}

TEST_F(SignIn, TheTwoPhrasesInOtherLetterCaseGiveSeventeen) {
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":"wrong password"}]})"), 17);
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":"failed To Find User"}]})"), 17);
}

TEST_F(SignIn, AnyOtherFailureGivesSeventeen) {
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":"maintenance"}]})"), 17);
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":""}]})"), 17);
    EXPECT_EQ(loginAnswered(R"({"e":true})"), 17);
    EXPECT_EQ(loginAnswered(R"({"e":true,"s":"Wrong password"})"), 17);
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"cx":12,"cm":34}]})"), 17);
    EXPECT_EQ(loginAnswered("no JSON"), 17);
}

TEST_F(SignIn, NoReplyAtAllGivesSeventeen) {
    EXPECT_EQ(resource.login(typedForm("ada", "secret")), 17);
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(SignIn, ASuccessWithoutAReplyGivesSeventeenAndChangesNothing) {
    signIn();
    EXPECT_EQ(loginAnswered(R"({"e":false,"commands":[]})"), 17);
    EXPECT_EQ(loginAnswered("{}"), 17);
    EXPECT_EQ(resource.sessionContext, 12);
    EXPECT_EQ(resource.sessionMarker, 34);
    EXPECT_EQ(utf8(resource.signedInUser), "ada");
}

TEST_F(SignIn, WithoutASessionNumberTheNumbersAreWrittenAndTheUserStays) {
    signIn();
    fillCache();
    std::size_t const written = host.preferences.writes().size();
    host.network.answerWith(answerOf({R"({"cm":56})"}));
    EXPECT_EQ(resource.login(typedForm("bob", "x")), 17);
    EXPECT_EQ(resource.sessionContext, -1);
    EXPECT_EQ(resource.sessionMarker, 56);
    EXPECT_EQ(utf8(resource.signedInUser), "ada");
    EXPECT_FALSE(resource.searchResultCache.empty());
    EXPECT_EQ(host.preferences.writes().size(), written);
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_TRUE(lastBody().ends_with("&apicx=-1&apicm=56"));
}

TEST_F(SignIn, ASessionNumberAsTextIsNone) {
    EXPECT_EQ(loginAnswered(answerOf({R"({"cx":"12","cm":34})"})), 17);
    EXPECT_EQ(resource.sessionContext, -1);
    EXPECT_EQ(resource.sessionMarker, 34);
    EXPECT_TRUE(resource.signedInUser.isEmpty());
}

TEST_F(SignIn, AMissingMarkerStillSignsIn) {
    EXPECT_EQ(loginAnswered(answerOf({R"({"cx":12})"})), 0);
    EXPECT_EQ(resource.sessionMarker, -1);
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_TRUE(lastBody().ends_with("&apicx=12&apicm=-1"));
}

TEST_F(SignIn, SessionNumbersAreCutTowardZero) {
    EXPECT_EQ(loginAnswered(answerOf({R"({"cx":12.9,"cm":-3.9})"})), 0);
    EXPECT_EQ(resource.sessionContext, 12);
    EXPECT_EQ(resource.sessionMarker, -3);
}

TEST_F(SignIn, TheFirstOfTwoSessionNumbersCountsAndItsNameIsExact) {
    EXPECT_EQ(loginAnswered(answerOf({R"({"CX":1,"cx2":2,"cx":12,"cx":13,"cm":34,"cm":35})"})), 0);
    EXPECT_EQ(resource.sessionContext, 12);
    EXPECT_EQ(resource.sessionMarker, 34);
}

TEST_F(SignIn, ASessionNumberOfMinusOneIsNone) {
    EXPECT_EQ(loginAnswered(answerOf({R"({"cx":-1,"cm":34})"})), 17);
    EXPECT_TRUE(resource.signedInUser.isEmpty());
}

TEST_F(SignIn, ASecondSignInCarriesTheOldSessionAndReplacesIt) {
    signIn();
    host.network.answerWith(answerOf({R"({"cx":56,"cm":78})"}));
    EXPECT_EQ(resource.login(typedForm("bob", "x")), 0);
    EXPECT_TRUE(lastBody().ends_with("&apicx=12&apicm=34"));
    EXPECT_EQ(utf8(resource.signedInUser), "bob");
    EXPECT_EQ(resource.sessionContext, 56);
    EXPECT_EQ(resource.sessionMarker, 78);
}

TEST_F(SignIn, ARefusedSecondSignInLeavesTheSessionInForce) {
    signIn();
    fillCache();
    EXPECT_EQ(loginAnswered(R"({"e":true,"commands":[{"s":"Wrong password","cx":1,"cm":2}]})"), 7);
    EXPECT_EQ(utf8(resource.signedInUser), "ada");
    EXPECT_EQ(resource.sessionContext, 12);
    EXPECT_EQ(resource.sessionMarker, 34);
    EXPECT_FALSE(resource.searchResultCache.empty());
}

TEST_F(SignIn, AnEmptyNameThatTheServiceAcceptsIsStillSignedOut) {
    signIn();
    host.network.answerWith(answerOf({R"({"cx":56,"cm":78})"}));
    EXPECT_EQ(resource.login(typedForm("", "")), 0);
    EXPECT_TRUE(resource.signedInUser.isEmpty());
    EXPECT_EQ(resource.sessionContext, 56);
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_EQ(lastBody().find("apicx"), std::string::npos);
}

TEST_F(SignIn, AFailureRemembersNoName) {
    EXPECT_EQ(loginAnswered(R"({"e":true})"), 17);
    EXPECT_TRUE(host.preferences.writes().empty());
}

TEST_F(SignIn, ThePasswordIsKeptNowhere) {
    EXPECT_EQ(loginAnswered(answerOf({R"({"cx":12,"cm":34})"})), 0);
    for (auto const& write : host.preferences.writes()) {
        EXPECT_NE(utf8(std::get<WideString>(write.value)), "secret");
    }
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(SignIn, SigningOutWhenSignedOutSendsAndClearsNothing) {
    fillCache();
    resource.purchasedIds = {L"1"};
    resource.sessionContext = 5;
    resource.logout();
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_FALSE(resource.searchResultCache.empty());
    EXPECT_FALSE(resource.purchasedIds.empty());
    EXPECT_EQ(resource.sessionContext, 5);
}

TEST_F(SignIn, SigningOutTellsTheServiceWhileTheSessionHolds) {
    signIn();
    resource.logout();
    ASSERT_EQ(host.network.requestCount(), 1U);
    EXPECT_EQ(sentCommands(), R"([{"command":"logout"}])");
    EXPECT_TRUE(lastBody().ends_with("&apicx=12&apicm=34"));
}

TEST_F(SignIn, SigningOutEndsEverythingButTheRememberedName) {
    signIn();
    fillCache();
    resource.purchasedIds = {L"1", L"2"};
    RemoteAsset owned;
    owned.id = L"1";
    ASSERT_TRUE(resource.isPurchased(owned));
    resource.logout();
    EXPECT_TRUE(resource.signedInUser.isEmpty());
    EXPECT_FALSE(resource.isPurchased(owned));
    EXPECT_TRUE(resource.searchResultCache.empty());
    EXPECT_EQ(resource.sessionContext, -1);
    EXPECT_EQ(resource.sessionMarker, -1);
    EXPECT_EQ(utf8(host.preferences.readText("T7 User").value_or(L"")), "ada");
}

TEST_F(SignIn, SigningOutWhileTheServiceIsOutOfReachEndsTheSession) {
    signIn();
    host.network.answerWith([](fake::Request const&) { return std::nullopt; });
    resource.logout();
    EXPECT_TRUE(resource.signedInUser.isEmpty());
    EXPECT_EQ(resource.sessionContext, -1);
}

TEST_F(SignIn, SigningOutIgnoresAFailureOfTheService) {
    signIn();
    host.network.answerWith(R"({"e":true,"commands":[{"s":"no"}]})");
    resource.logout();
    EXPECT_TRUE(resource.signedInUser.isEmpty());
}

TEST_F(SignIn, AfterSigningOutRequestsCarryNoSession) {
    signIn();
    resource.logout();
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_EQ(lastBody().find("apicx"), std::string::npos);
    EXPECT_EQ(lastBody().find("apicm"), std::string::npos);
}

TEST_F(SignIn, ConnectionAndAccountAreSeparate) {
    signIn();
    resource.disconnect();
    EXPECT_EQ(utf8(resource.signedInUser), "ada");
    connect();
    EXPECT_TRUE(resource.isConnected());
    resource.logout();
    EXPECT_TRUE(resource.isConnected());
}

} // namespace
} // namespace tarn7_tests
