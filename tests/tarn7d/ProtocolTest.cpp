#include "apps/tarn7d/Protocol.h"

#include <fstream>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/tarn7d/Text.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestFootage.h"
#include "tests/tarn7d/TestRequests.h"
#include "tests/tarn7d/TestService.h"

namespace {

namespace fs = std::filesystem;
using namespace tarn7d;
using test::envelope;
using test::parseJson;
using test::reply;
using test::requestBody;
using Element = Zq::Ptr<JSON::Element>;

std::string documentText() {
    std::ostringstream text;
    text << std::ifstream(TARN7D_PROTOCOL_DOCUMENT).rdbuf();
    return text.str();
}

std::vector<std::string> documentLines() {
    std::istringstream text(documentText());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

class ProtocolTest : public testing::Test {
protected:
    ProtocolTest() {
        test::putFootage(test::Footage::plain, footage_ / "a sunset.mov");
        test::putFootage(test::Footage::large, footage_ / "b city.mov");
        std::ofstream(footage_ / "a sunset.toml") << "title = \"Süd & \\\"West\\\" = 夕日\"\nprice = 4.5\n";
        service_.catalogue.scan(Catalogue::Settling::none);
        EXPECT_TRUE(service_.accounts.add("editor", "p&ss=\"w\u00f6rd\"", 500));
    }

    [[nodiscard]] Element ask(std::string const& commands, SessionKey session = {}) {
        return service_.ask(commands, session);
    }
    [[nodiscard]] Element askRaw(std::string const& body) {
        return parseJson(service_.protocol.answer(body));
    }
    [[nodiscard]] static std::int64_t code(Element const& element) {
        return JSON::orEmpty(element).getInt("c", -1);
    }
    [[nodiscard]] static bool isError(Element const& element) {
        return JSON::orEmpty(element).getBool("e", false);
    }
    [[nodiscard]] static std::string text(Element const& element, char const* key = "s") {
        return std::string(JSON::orEmpty(element).getStringView(key));
    }
    [[nodiscard]] static std::string loginCommand(std::string const& name, std::string const& password) {
        return R"([{"command":"login","username":)" + test::jsonString(name) + R"(,"password":)" +
               test::jsonString(password) + "}]";
    }

    test::TemporaryFolder folder_;
    fs::path const footage_ = folder_.path() / "footage";
    test::TestService service_{folder_.path()};
};

TEST_F(ProtocolTest, AGoodRequestGetsAReplyForEachCommandInOrder) {
    Element const answer = ask(R"([{"command":"get_clip_data","itemid":"2"},{"command":"nonsense"},)"
                               R"({"command":"get_clip_data","itemid":"1"}])");
    EXPECT_FALSE(isError(answer));
    EXPECT_EQ(text(answer), "");
    EXPECT_EQ(text(reply(answer, 0)->getChild("clip_data"), "pim_aut_fps_real"), "23.97602");
    EXPECT_TRUE(isError(reply(answer, 1)));
    EXPECT_EQ(text(reply(answer, 1)), "Unknown command: nonsense");
    EXPECT_EQ(text(reply(answer, 2)->getChild("clip_data"), "pim_aut_fps_real"), "25");
    EXPECT_EQ(text(reply(answer, 2)->getChild("clip_data"), "pim_aut_duration_ms"), "1000");
    EXPECT_EQ(reply(answer, 3), nullptr);
}

TEST_F(ProtocolTest, AnEmptyListOfCommandsGetsAnEmptyListOfReplies) {
    Element const answer = ask("[]");
    EXPECT_FALSE(isError(answer));
    ASSERT_NE(answer->getChild("commands"), nullptr);
    EXPECT_EQ(answer->getChild("commands")->getNumChildren(), 0);
}

TEST_F(ProtocolTest, AWrongKeyIsRefused) {
    std::string body = requestBody("[]");
    std::size_t const at = body.find("463100_000000001");
    ASSERT_NE(at, std::string::npos);
    body[at] = '5';
    Element const answer = askRaw(body);
    EXPECT_TRUE(isError(answer));
    EXPECT_EQ(code(answer), 11);
    EXPECT_NE(text(answer), "");
    EXPECT_EQ(answer->getChild("commands"), nullptr);
}

TEST_F(ProtocolTest, ADigestOfOtherCommandsIsRefused) {
    std::string body = requestBody(R"([{"command":"logout"}])");
    std::size_t const at = body.find("logout");
    body.replace(at, 6, "search");
    EXPECT_EQ(code(askRaw(body)), 12);
    std::string const missing = R"(api={"api_key":"463100_000000001","ver":1,"commands_json":"[]"})";
    EXPECT_EQ(code(askRaw(missing)), 12);
}

TEST_F(ProtocolTest, AnotherVersionIsRefused) {
    std::string body = requestBody("[]");
    body.replace(body.find("\"ver\":1"), 7, "\"ver\":2");
    EXPECT_EQ(code(askRaw(body)), 10);
}

TEST_F(ProtocolTest, WhatIsNoRequestIsRefused) {
    for (std::string const& body :
         {std::string(), std::string("api="), std::string("api={}x"), std::string("x=1"),
          std::string("api={\"api_key\":}"), std::string("api={]}"), std::string(1000, '{')}) {
        EXPECT_TRUE(isError(askRaw(body))) << body;
    }
    for (char const* commands :
         {"", "{}", "1", "[1]", "[\"login\"]", "[true]", "[", "null", "{\"command\":\"search\"}"}) {
        EXPECT_EQ(code(ask(commands)), 10) << commands;
    }
}

TEST_F(ProtocolTest, TooManyCommandsAreRefused) {
    std::string commands = "[{}";
    for (int i = 0; i < 65535; ++i) {
        commands += ",{}";
    }
    EXPECT_EQ(code(ask(commands + "]")), 10);
}

TEST_F(ProtocolTest, ASignInGivesASessionThatTheRequestsCarry) {
    Element const signedIn = reply(ask(loginCommand("editor", "p&ss=\"w\u00f6rd\"")));
    ASSERT_FALSE(isError(signedIn));
    EXPECT_EQ(text(signedIn), "");
    SessionKey const session{static_cast<std::int32_t>(signedIn->getInt("cx", -1)),
                             static_cast<std::int32_t>(signedIn->getInt("cm", -1))};
    EXPECT_GT(session.context, 0);
    EXPECT_GT(session.marker, 0);
    EXPECT_TRUE(service_.sessions.account(session));
    EXPECT_FALSE(isError(reply(ask(R"([{"command":"logout"}])", session))));
    EXPECT_FALSE(service_.sessions.account(session));
    EXPECT_FALSE(isError(reply(ask(R"([{"command":"logout"}])", session))));
}

TEST_F(ProtocolTest, AFailedSignInSaysWhyInTheWordsOfTheProtocol) {
    Element const wrong = reply(ask(loginCommand("editor", "no")));
    EXPECT_TRUE(isError(wrong));
    EXPECT_EQ(text(wrong), "Wrong password");
    EXPECT_EQ(code(wrong), 20);
    Element const unknown = reply(ask(loginCommand("nobody", "no")));
    EXPECT_EQ(text(unknown), "Failed to find user");
    EXPECT_EQ(code(unknown), 21);
    EXPECT_FALSE(wrong->hasNum("cx"));
}

TEST_F(ProtocolTest, RepeatedFailuresMustWaitAlsoWithTheRightPassword) {
    for (int i = 0; i < SignInThrottle::freeFailures; ++i) {
        EXPECT_EQ(code(reply(ask(loginCommand("editor", "no")))), 20);
    }
    Element const early = reply(ask(loginCommand("editor", "p&ss=\"w\u00f6rd\"")));
    EXPECT_EQ(code(early), 22);
    EXPECT_EQ(text(early).find("Wrong password"), std::string::npos);
    service_.steadyNow += std::chrono::seconds(2);
    EXPECT_FALSE(isError(reply(ask(loginCommand("editor", "p&ss=\"w\u00f6rd\"")))));
}

TEST_F(ProtocolTest, ASearchAnswersWithTypedItems) {
    Element const found =
        reply(ask(R"([{"command":"search","query":"夕日","p":0,"col":251,"sb":1,"no":50,"bm":15}])"));
    ASSERT_FALSE(isError(found));
    EXPECT_EQ(text(found, "icon_base"), "https://media.example/icons/");
    EXPECT_EQ(text(found, "flv_base"), "https://media.example/p/");
    EXPECT_EQ(found->getInt("tot_nbr_rows", -1), 1);
    Element const items = found->getChild("items");
    ASSERT_NE(items, nullptr);
    ASSERT_EQ(items->getNumChildren(), 1);
    Element const item = items->getChild(0);
    EXPECT_EQ(item->getInt("id", -1), 1);
    EXPECT_EQ(text(item, "n"), "Süd & \"West\" = 夕日");
    EXPECT_EQ(text(item, "pr"), "4.50");
    EXPECT_EQ(text(item, "coda"), "no snd");
    EXPECT_EQ(text(item, "fps_real"), "25");
    EXPECT_EQ(text(item, "fps"), "25");
    EXPECT_EQ(text(item, "dur"), "1000");
    EXPECT_EQ(item->getInt("vs", -1), 6);
    EXPECT_EQ(item->getInt("ox", -1), 320);
    EXPECT_EQ(item->getInt("oy", -1), 240);
    EXPECT_EQ(text(item, "ar"), "4:3");
    EXPECT_EQ(text(item, "codg"), "mpeg4");
}

TEST_F(ProtocolTest, PagesAreBroughtIntoTheirBounds) {
    auto const count = [this](std::string const& numbers) {
        Element const found = reply(ask(R"([{"command":"search","query":"")" + numbers + "}]"));
        EXPECT_EQ(found->getInt("tot_nbr_rows", -1), 2);
        return found->getChild("items")->getNumChildren();
    };
    EXPECT_EQ(count(""), 2);
    EXPECT_EQ(count(R"(,"p":-1,"no":50)"), 2);
    EXPECT_EQ(count(R"(,"p":0,"no":1)"), 1);
    EXPECT_EQ(count(R"(,"p":1,"no":1)"), 1);
    EXPECT_EQ(count(R"(,"p":2,"no":1)"), 0);
    EXPECT_EQ(count(R"(,"p":0,"no":0)"), 0);
    EXPECT_EQ(count(R"(,"p":0,"no":-5)"), 0);
    EXPECT_EQ(count(R"(,"p":1e300,"no":1e300)"), 0);
    EXPECT_EQ(count(R"(,"p":"x","no":"y")"), 2);
}

TEST_F(ProtocolTest, ClipDataOfAnUnknownNumberIsAnError) {
    EXPECT_EQ(code(reply(ask(R"([{"command":"get_clip_data","itemid":"999"}])"))), 4);
    EXPECT_EQ(code(reply(ask(R"([{"command":"get_clip_data","itemid":"-1"}])"))), 4);
    EXPECT_EQ(code(reply(ask(R"([{"command":"get_clip_data","itemid":"1 OR 1"}])"))), 3);
    EXPECT_EQ(code(reply(ask(R"([{"command":"get_clip_data"}])"))), 3);
}

TEST_F(ProtocolTest, CommandsOfAnAccountNeedASession) {
    int refused = 0;
    for (CommandRow const& row : commandTable()) {
        if (row.needs == CommandRow::Needs::account) {
            std::string const command = "[{\"command\":\"" + std::string(row.word) + "\"}]";
            EXPECT_EQ(code(reply(ask(command))), 101) << row.word;
            EXPECT_EQ(code(reply(ask(command, {12, 34}))), 101) << row.word;
            ++refused;
        }
    }
    EXPECT_EQ(refused, 6);
}

TEST_F(ProtocolTest, AHostileCommandWordDoesNotBreakTheAnswer) {
    Element const answer = ask(R"([{"command":"a\"},{\u0000\n\ud800<script>"},{}])");
    EXPECT_EQ(code(reply(answer, 0)), 1);
    EXPECT_EQ(code(reply(answer, 1)), 1);
}

TEST(ProtocolDocument, NamesTheCommandsOfTheTable) {
    std::set<std::string> documented;
    for (std::string const& line : documentLines()) {
        constexpr std::string_view before = "### `";
        if (line.starts_with(before) && line.ends_with('`')) {
            documented.insert(line.substr(before.size(), line.size() - before.size() - 1));
        }
    }
    std::set<std::string> known;
    for (CommandRow const& row : commandTable()) {
        EXPECT_TRUE(known.insert(std::string(row.word)).second);
    }
    EXPECT_EQ(documented, known);
}

TEST(ProtocolDocument, NamesTheErrorCodesOfTheTable) {
    std::set<std::string> documented;
    for (std::string const& line : documentLines()) {
        // "| code | name | reply or answer | meaning |"
        std::istringstream cells(line);
        std::string none;
        std::string number;
        std::string name;
        std::string where;
        std::getline(cells, none, '|');
        std::getline(cells, number, '|');
        std::getline(cells, name, '|');
        std::getline(cells, where, '|');
        if (where == " reply " || where == " answer ") {
            documented.insert(cleanText(number) + " " + cleanText(name));
        }
    }
    std::set<std::string> known;
    for (ErrorRow const& error : errorTable()) {
        known.insert(std::to_string(static_cast<std::int32_t>(error.code)) + " " + std::string(error.name));
    }
    EXPECT_EQ(documented, known);
}

TEST_F(ProtocolTest, TheWorkedExampleOfTheDocumentIsAGoodRequest) {
    std::string const document = documentText();
    std::size_t const start = document.find("\napi={\"api_key\":\"4");
    ASSERT_NE(start, std::string::npos);
    std::string const body = document.substr(start + 1, document.find('\n', start + 1) - start - 1);
    Element const answer = askRaw(body);
    EXPECT_FALSE(isError(answer)) << text(answer);
    EXPECT_FALSE(isError(reply(answer)));
    ASSERT_NE(reply(answer), nullptr);
    EXPECT_NE(reply(answer)->getChild("items"), nullptr);
}

} // namespace
