#include "apps/tarn7d/FaultDesk.h"

#include <fstream>
#include <future>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/tarn7d/FaultRule.h"
#include "tests/tarn7d/ServerFixture.h"

namespace {

using namespace tarn7d;
using test::Client;
using testing::HasSubstr;

TEST(FaultRule, IsReadWithItsArgumentsAndDefaults) {
    FaultRules const one =
        parseFaultRules(R"({"match":{"path":"/full/"},"kind":"cut","count":3,"arguments":{"bytes":1000}})");
    ASSERT_EQ(one.problem, "");
    ASSERT_EQ(one.rules.size(), 1U);
    EXPECT_EQ(one.rules[0].path, "/full/");
    EXPECT_EQ(one.rules[0].kind, FaultKind::cut);
    EXPECT_EQ(one.rules[0].count, 3);
    EXPECT_EQ(one.rules[0].bytes, 1000);
    FaultRules const two = parseFaultRules(
        R"([{"match":{"command":"download"},"kind":"status"},{"match":{"path":"/"},"kind":"delay","arguments":{"ms":5}}])");
    ASSERT_EQ(two.rules.size(), 2U);
    EXPECT_EQ(two.rules[0].command, "download");
    EXPECT_EQ(two.rules[0].count, 1);
    EXPECT_EQ(two.rules[0].status, 503);
    EXPECT_EQ(two.rules[1].time, std::chrono::milliseconds(5));
}

TEST(FaultRule, EveryKindHasAName) {
    for (FaultKindRow const& row : faultKinds()) {
        FaultRules const rules = parseFaultRules(R"({"match":{"path":"/"},"kind":")" + std::string(row.name) +
                                                 R"(","arguments":{"bytes":1,"ms":1}})");
        ASSERT_EQ(rules.rules.size(), 1U) << row.name << ": " << rules.problem;
        EXPECT_EQ(rules.rules[0].kind, row.kind);
    }
}

TEST(FaultRule, WhatMakesNoSenseIsRefusedWithTheReason) {
    struct {
        char const* json;
        char const* problem;
    } const cases[] = {
        {"", "not JSON"},
        {"nonsense", "not JSON"},
        {"[]", "1 to 100"},
        {"{}", "either path or command"},
        {R"({"match":{"path":"/","command":"x"},"kind":"cut"})", "either path or command"},
        {R"({"match":{"path":"full"},"kind":"cut"})", "begins with /"},
        {R"({"match":{"path":"/"},"kind":"explode"})", "no kind \"explode\""},
        {R"({"match":{"path":"/"}})", "no kind"},
        {R"({"match":{"path":"/"},"kind":"cut","count":0})", "count"},
        {R"({"match":{"path":"/"},"kind":"cut","count":"many"})", "count"},
        {R"({"match":{"path":"/"},"kind":"cut","arguments":{"bytes":-1}})", "bytes"},
        {R"({"match":{"path":"/"},"kind":"wrong-length"})", "needs bytes"},
        {R"({"match":{"path":"/"},"kind":"delay"})", "needs ms"},
        {R"({"match":{"path":"/"},"kind":"delay","arguments":{"ms":1e12}})", "ms"},
        {R"({"match":{"path":"/"},"kind":"status","arguments":{"status":200}})", "status"},
        {R"({"match":{"command":"search"},"kind":"no-ranges"})", "needs a path"},
    };
    for (auto const& wrong : cases) {
        FaultRules const rules = parseFaultRules(wrong.json);
        EXPECT_THAT(rules.problem, HasSubstr(wrong.problem)) << wrong.json;
        EXPECT_TRUE(rules.rules.empty());
    }
}

TEST(FaultDesk, ARuleMeetsItsRequestsAndThenNoMore) {
    FaultDesk desk;
    (void)desk.add({.path = "/full/", .kind = FaultKind::cut, .count = 2});
    (void)desk.add({.command = "download", .kind = FaultKind::lostAnswer});
    (void)desk.add({.path = "/full/", .kind = FaultKind::stall});
    std::vector<std::string> const words{"search", "download"};
    EXPECT_FALSE(desk.take("/icons/x"));
    EXPECT_FALSE(desk.take("/download"));
    EXPECT_EQ(desk.take("/full/a")->kind, FaultKind::cut);
    EXPECT_EQ(desk.take("/full/b")->kind, FaultKind::cut);
    EXPECT_EQ(desk.take("/full/c")->kind, FaultKind::stall);
    EXPECT_FALSE(desk.take("/full/d"));
    EXPECT_TRUE(desk.hasCommandRules());
    EXPECT_EQ(desk.take("/", words)->kind, FaultKind::lostAnswer);
    EXPECT_FALSE(desk.hasCommandRules());
    ASSERT_EQ(desk.list().size(), 3U);
    EXPECT_EQ(desk.list()[0].met, 2);
    EXPECT_EQ(desk.list()[0].left, 0);
    desk.clear();
    EXPECT_TRUE(desk.list().empty());
}

TEST(FaultDesk, ClearingLetsThoseGoWhoWait) {
    FaultDesk desk;
    auto waiting = std::async(std::launch::async, [&desk] { desk.pause(std::chrono::minutes(5)); });
    while (waiting.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        desk.clear();
    }
    desk.end();
    desk.pause(std::chrono::minutes(5));
}

class FaultPortTest : public test::ServerFixture {
protected:
    FaultPortTest() {
        ServerOptions withDesk = options();
        withDesk.faultDesk = true;
        start(withDesk);
        address_ = server_->faultDesk().value_or(FaultDeskAddress{});
    }
    [[nodiscard]] httplib::Client desk(std::string const& token) const {
        httplib::Client client("127.0.0.1", address_.port);
        client.set_default_headers({{"Authorization", "Bearer " + token}});
        return client;
    }

    FaultDeskAddress address_;
};

TEST_F(FaultPortTest, RulesAreAddedListedAndCleared) {
    httplib::Client port = desk(address_.token);
    auto const added = port.Post(
        "/faults", R"({"match":{"path":"/icons/"},"kind":"status","count":1,"arguments":{"status":418}})",
        "application/json");
    ASSERT_TRUE(added);
    EXPECT_EQ(added->status, 201);
    Client connection = client();
    EXPECT_EQ(connection.Get("/icons/000000001_iconm.jpeg")->status, 418);
    EXPECT_EQ(connection.Get("/icons/000000001_iconm.jpeg")->status, 200);
    auto const listed = port.Get("/faults");
    ASSERT_TRUE(listed);
    EXPECT_EQ(listed->status, 200);
    Zq::Ptr<JSON::Element> const faults = JSON::orEmpty(test::parseJson(listed->body)).getChild("faults");
    ASSERT_EQ(JSON::orEmpty(faults).getNumChildren(), 1);
    Zq::Ptr<JSON::Element> const rule = faults->getChild(0);
    EXPECT_EQ(rule->getInt("met", -1), 1);
    EXPECT_EQ(rule->getInt("left", -1), 0);
    EXPECT_EQ(rule->getStringView("kind"), "status");
    EXPECT_EQ(JSON::orEmpty(rule->getChild("match")).getStringView("path"), "/icons/");
    EXPECT_EQ(port.Delete("/faults")->status, 204);
    EXPECT_EQ(port.Get("/faults")->body, R"({"faults":[]})");
}

TEST_F(FaultPortTest, ABadRuleAddsNothingAndSaysWhy) {
    httplib::Client port = desk(address_.token);
    auto const refused = port.Post(
        "/faults", R"([{"match":{"path":"/"},"kind":"cut"},{"match":{"path":"/"},"kind":"explode"}])",
        "application/json");
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->status, 400);
    EXPECT_THAT(refused->body, HasSubstr("explode"));
    EXPECT_TRUE(server_->faults().list().empty());
}

TEST_F(FaultPortTest, WithoutTheTokenNothingIsAnswered) {
    for (std::string const& token : {std::string(), std::string("x"), address_.token.substr(1)}) {
        httplib::Client port = desk(token);
        EXPECT_EQ(port.Get("/faults")->status, 401);
        EXPECT_EQ(port.Delete("/faults")->status, 401);
        EXPECT_EQ(port.Post("/faults", R"({"match":{"path":"/"},"kind":"cut"})", "application/json")->status,
                  401);
    }
    EXPECT_TRUE(server_->faults().list().empty());
}

TEST(FaultDocument, NamesTheKinds) {
    std::ostringstream text;
    text << std::ifstream(TARN7D_FAULT_DOCUMENT).rdbuf();
    std::set<std::string> documented;
    std::istringstream lines(text.str());
    for (std::string line; std::getline(lines, line);) {
        // "| `kind` | arguments | ...", and not "| `GET /faults` | ..."
        std::string const name =
            line.starts_with("| `") ? line.substr(3, line.find("` |") - 3) : std::string();
        if (!name.empty() && name.find(' ') == std::string::npos) {
            documented.insert(name);
        }
    }
    std::set<std::string> known;
    for (FaultKindRow const& row : faultKinds()) {
        known.insert(std::string(row.name));
    }
    EXPECT_EQ(documented, known);
}

} // namespace
