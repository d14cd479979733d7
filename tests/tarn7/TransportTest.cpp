#include "tests/tarn7/Tarn7Fixture.h"

#include <nlohmann/json.hpp>

namespace tarn7_tests {
namespace {

class Transport : public Tarn7Test {
protected:
    static std::string envelopeOf(std::string_view body) {
        EXPECT_TRUE(body.starts_with("api="));
        body.remove_prefix(4);
        return std::string(body.substr(0, body.find("&apicx=")));
    }
    static std::string sessionFieldsOf(std::string_view body) {
        std::size_t const at = body.find("&apicx=");
        return at == std::string_view::npos ? std::string() : std::string(body.substr(at));
    }
};

TEST_F(Transport, WithoutAServerNothingIsSentAndTheResultIsNull) {
    EXPECT_EQ(resource.sendCommand(Tarn7Resource::Command(L"logout")), nullptr);
    EXPECT_EQ(resource.sendCommands({}), nullptr);
    EXPECT_EQ(resource.login(typedForm("ada", "secret")), 17);
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Transport, ARequestIsAPostToTheOneEndpointOfTheDescribedServer) {
    connect();
    (void)resource.sendCommand(Tarn7Resource::Command(L"logout"));
    ASSERT_EQ(host.network.requestCount(), 1U);
    EXPECT_EQ(host.network.lastRequest().method, fake::Request::Method::post);
    EXPECT_EQ(host.network.lastRequest().path, "?page=api");
    EXPECT_EQ(host.network.lastRequest().server, utf8(Tarn7Server));
    EXPECT_TRUE(host.network.lastRequest().secure);
}

TEST_F(Transport, AServerThatGivesNoReplyGivesNullAndIsAskedOnceOnly) {
    connect();
    EXPECT_EQ(resource.sendCommand(Tarn7Resource::Command(L"logout")), nullptr);
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Transport, ABodyThatIsNotJsonGivesNull) {
    connect();
    host.network.answerWith("<html>busy</html>");
    EXPECT_EQ(resource.sendCommand(Tarn7Resource::Command(L"logout")), nullptr);
}

TEST_F(Transport, TheStatusOfTheAnswerIsNotLookedAt) {
    connect();
    host.network.answerWith([](fake::Request const&) {
        return fake::Answer{R"({"commands":[{"a":1}]})", 503};
    });
    auto const response = resource.sendCommand(Tarn7Resource::Command(L"logout"));
    ASSERT_NE(response, nullptr);
    EXPECT_TRUE(Tarn7Resource::commandReply(response, 0)->hasNum("a"));
}

TEST_F(Transport, TheEnvelopeHasItsFourMembersInTheirOrder) {
    connect();
    (void)resource.sendCommand(Tarn7Resource::Command(L"logout"));
    auto const envelope = nlohmann::ordered_json::parse(envelopeOf(lastBody()));
    std::vector<std::string> keys;
    for (auto const& member : envelope.items()) {
        keys.push_back(member.key());
    }
    EXPECT_EQ(keys, (std::vector<std::string>{"api_key", "ver", "commands_json", "commands_hash"}));
    EXPECT_EQ(envelope["api_key"], utf8(Tarn7ApiKey));
    EXPECT_EQ(envelope["ver"], 1);
    EXPECT_EQ(envelope["commands_json"], R"([{"command":"logout"}])");
}

TEST_F(Transport, AnEmptyListIsSentAsAnEmptyArray) {
    connect();
    (void)resource.sendCommands({});
    ASSERT_EQ(host.network.requestCount(), 1U);
    EXPECT_EQ(nlohmann::json::parse(envelopeOf(lastBody()))["commands_json"], "[]");
}

TEST_F(Transport, TwoCommandsTravelInOneEnvelopeAndGetTwoReplies) {
    connect();
    host.network.answerWith(answerOf({R"({"n":1})", R"({"n":2})"}));
    Tarn7Resource::Command first(L"first");
    first.addNumber("a", 1);
    auto const response = resource.sendCommands({first, Tarn7Resource::Command(L"second")});
    ASSERT_EQ(host.network.requestCount(), 1U);
    auto const envelope = nlohmann::json::parse(envelopeOf(lastBody()));
    EXPECT_EQ(envelope["commands_json"], R"([{"command":"first","a":1},{"command":"second"}])");
    EXPECT_EQ(envelope["commands_hash"],
              utf8(resource.signedHash(L"[{\"command\":\"first\",\"a\":1},{\"command\":\"second\"}]")));
    EXPECT_EQ(Tarn7Resource::commandReply(response, 0)->getInt("n", 0), 1);
    EXPECT_EQ(Tarn7Resource::commandReply(response, 1)->getInt("n", 0), 2);
    EXPECT_EQ(Tarn7Resource::commandReply(response, 2), nullptr);
}

TEST_F(Transport, AndAndEqualsSignsGoIntoTheBodyAsTheyAre) {
    connect();
    Tarn7Resource::Command command(L"search");
    command.addParam("query", L"a&b=c%20+d");
    (void)resource.sendCommand(command);
    EXPECT_NE(lastBody().find(R"(a&b=c%20+d)"), std::string::npos);
    EXPECT_NE(lastBody().find("api={\"api_key\":"), std::string::npos);
}

TEST_F(Transport, SignedOutTheFormHasTheEnvelopeAlone) {
    connect();
    (void)resource.sendCommand(Tarn7Resource::Command(L"logout"));
    EXPECT_EQ(sessionFieldsOf(lastBody()), "");
}

TEST_F(Transport, SignedInTheFormCarriesBothSessionNumbersInOrder) {
    connect();
    signIn();
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_EQ(sessionFieldsOf(lastBody()), "&apicx=12&apicm=34");
}

TEST_F(Transport, ANameWithoutASessionSendsMinusOneTwice) {
    connect();
    resource.signedInUser = L"ada";
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_EQ(sessionFieldsOf(lastBody()), "&apicx=-1&apicm=-1");
}

TEST_F(Transport, SessionNumbersWithoutANameAreNotSent) {
    connect();
    resource.sessionContext = 12;
    resource.sessionMarker = 34;
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_EQ(sessionFieldsOf(lastBody()), "");
}

TEST_F(Transport, TheDigestIsTheSameSignedInAndSignedOut) {
    connect();
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    auto const signedOut = nlohmann::json::parse(envelopeOf(lastBody()));
    signIn();
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_EQ(nlohmann::json::parse(envelopeOf(lastBody())), signedOut);
}

// Keeps the bytes that are to be hashed.
class RecordingHash final : public iHash {
public:
    explicit RecordingHash(std::string& bytes) : bytes_(bytes) {}
    WideString computeHash(void const* bytes, std::size_t count) override {
        bytes_.assign(static_cast<char const*>(bytes), count);
        return L"digest";
    }
    NarrowString computeHmac(int, NarrowString const&, NarrowString const&) override { return {}; }

private:
    std::string& bytes_;
};

TEST_F(Transport, TheHashedTextIsTheCommandTextWithSaltAndPepperAndNothingBetween) {
    connect();
    std::string hashed;
    resource.digestService = Zq::makeShared<RecordingHash>(hashed);
    Tarn7Resource::Command command(L"search");
    command.addParam("query", wide("h\u00e9 \"\U0001f3ac\""));
    (void)resource.sendCommand(command);
    auto const envelope = nlohmann::json::parse(envelopeOf(lastBody()));
    std::string const text = envelope["commands_json"];
    EXPECT_EQ(hashed, text + Tarn7HashSalt + Tarn7HashPepper);
    EXPECT_EQ(hashed.size(), text.size() + 38);
    EXPECT_EQ(envelope["commands_hash"], "digest");
}

TEST_F(Transport, WithoutAHashObjectTheRequestGoesOutWithAnEmptyDigest) {
    connect();
    resource.digestService.reset();
    (void)resource.sendCommand(Tarn7Resource::Command(L"word"));
    EXPECT_EQ(nlohmann::json::parse(envelopeOf(lastBody()))["commands_hash"], "");
}

TEST_F(Transport, ConnectingGivesZeroWithAServerAndElevenWithout) {
    EXPECT_FALSE(resource.isConnected());
    EXPECT_EQ(resource.connect({}, LoggerHandle()), 11);
    EXPECT_EQ(resource.connect(resource.getDescription().connection, LoggerHandle()), 0);
    EXPECT_TRUE(resource.isConnected());
    ASSERT_EQ(host.network.connections().size(), 2U);
    EXPECT_EQ(utf8(host.network.connections()[1].server), utf8(Tarn7Server));
    EXPECT_EQ(host.network.connections()[1].secure, 1);
}

TEST_F(Transport, AFailedConnectLeavesTheOlderConnectionAndReportsIt) {
    connect();
    EXPECT_EQ(resource.connect({}, LoggerHandle()), 0);
    host.network.answerWith("{}");
    EXPECT_NE(resource.sendCommand(Tarn7Resource::Command(L"word")), nullptr);
}

TEST_F(Transport, ConnectingReleasesItsLogAndWritesNothingToIt) {
    auto const log = Zq::makeShared<fake::ImportLog>();
    EXPECT_EQ(resource.connect(resource.getDescription().connection, LoggerHandle(log)), 0);
    EXPECT_EQ(resource.connect({}, LoggerHandle(log)), 0);
    EXPECT_TRUE(log->lines.empty());
    EXPECT_EQ(log->refCount().owners.load(), 1U);
}

} // namespace
} // namespace tarn7_tests
