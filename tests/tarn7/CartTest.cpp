#include "tests/tarn7/ScriptedService.h"

namespace tarn7_tests {
namespace {

constexpr char readCart[] = R"([{"command":"get_cart_formatted"}])";

class Cart : public ScriptedServiceTest {
protected:
    void SetUp() override {
        ScriptedServiceTest::SetUp();
        reply("modify_active_cart", "{}");
    }

    // The service's cart, as the members of its elements.
    void holds(std::vector<std::string> const& elements) {
        std::string items;
        for (std::string const& element : elements) {
            items += (items.empty() ? "{" : ",{") + element + "}";
        }
        reply("get_cart_formatted", R"({"items":[)" + items + "]}");
    }
    bool wants(std::vector<std::string> const& ids) { return resource.syncCart(assetsOf(ids)); }
    // The change that was asked for after the cart was read; empty when there was none.
    [[nodiscard]] std::string change() const {
        std::vector<std::string> const lists = sent();
        EXPECT_GE(lists.size(), 1U);
        EXPECT_LE(lists.size(), 2U);
        EXPECT_EQ(lists.front(), readCart);
        return lists.size() == 2 ? lists[1] : std::string();
    }
    static std::string modify(std::string const& parameters) {
        return R"([{"command":"modify_active_cart",)" + parameters + "}]";
    }
    static std::string removing(std::string const& ids) { return modify(R"("rmid":")" + ids + '"'); }
    static std::string adding(std::string const& ids) { return modify(R"("addid":")" + ids + '"'); }
    static std::string exchanging(std::string const& removed, std::string const& added) {
        return modify(R"("rmid":")" + removed + R"(","addid":")" + added + '"');
    }
};

TEST_F(Cart, AnEmptyListAndAnEmptyCartSendOneRequestOnly) {
    holds({});
    EXPECT_TRUE(wants({}));
    EXPECT_EQ(change(), "");
}

TEST_F(Cart, AnEmptyListEmptiesAFullCart) {
    holds({R"("id":5)", R"("id":7)"});
    EXPECT_TRUE(wants({}));
    EXPECT_EQ(change(), removing("5,7"));
}

TEST_F(Cart, AListForAnEmptyCartIsAdded) {
    holds({});
    EXPECT_TRUE(wants({"7", "5"}));
    EXPECT_EQ(change(), adding("5,7"));
}

TEST_F(Cart, AListEqualToTheCartSendsOneRequestOnly) {
    holds({R"("id":5)", R"("id":7)"});
    EXPECT_TRUE(wants({"7", "5"}));
    EXPECT_EQ(change(), "");
}

TEST_F(Cart, AListOfTheSameSizeWithOtherIdsRemovesFirstAndThenAdds) {
    holds({R"("id":5)", R"("id":7)"});
    EXPECT_TRUE(wants({"8", "6"}));
    EXPECT_EQ(change(), exchanging("5,7", "6,8"));
}

TEST_F(Cart, WhatStaysIsNotMentioned) {
    holds({R"("id":1)", R"("id":2)", R"("id":3)"});
    EXPECT_TRUE(wants({"2", "3", "4"}));
    EXPECT_EQ(change(), exchanging("1", "4"));
}

TEST_F(Cart, AnAssetThatOccursTwiceIsAskedForOnce) {
    holds({});
    EXPECT_TRUE(wants({"5", "6", "5"}));
    EXPECT_EQ(change(), adding("5,6"));
}

TEST_F(Cart, AnIdThatTheCartHoldsTwiceIsOne) {
    holds({R"("id":5)", R"("id":5)"});
    EXPECT_TRUE(wants({"5"}));
    EXPECT_EQ(change(), "");
}

TEST_F(Cart, IdsStandInTheOrderOfTextsNotOfNumbers) {
    holds({R"("id":2)", R"("id":100)"});
    EXPECT_TRUE(wants({"9", "10"}));
    EXPECT_EQ(change(), exchanging("100,2", "10,9"));
}

TEST_F(Cart, IdsStandInTheOrderOfCodeUnits) {
    holds({});
    // Beyond the basic plane an id begins with a surrogate, which comes before U+E000 and U+FFFD.
    EXPECT_TRUE(wants({"\uFFFD", "\uE000", "\U0001F3AC", "z", "Z", "\u00e9", "-"}));
    EXPECT_EQ(change(), adding("-,Z,z,\u00e9,\U0001F3AC,\uE000,\uFFFD"));
}

TEST_F(Cart, AnIdWithLeadingZerosIsNotTheNumber) {
    holds({R"("id":7)"});
    EXPECT_TRUE(wants({"007"}));
    EXPECT_EQ(change(), exchanging("7", "007"));
}

TEST_F(Cart, AnElementWithoutANumberIdIsTheLargestNumber) {
    for (std::string const element : {R"("n":"x")", R"("id":"5")", R"("ID":5)", R"("id":null)",
                                      R"("id":true)", R"("id":[5])", R"("id":{"id":5})"}) {
        host.network.forgetRequests();
        holds({element});
        EXPECT_TRUE(wants({}));
        EXPECT_EQ(change(), removing("4294967295")) << element;
    }
}

TEST_F(Cart, TheFirstOfSeveralNumbersNamedIdCounts) {
    holds({R"("id":"4","x":1,"id":5,"id":6)"});
    EXPECT_TRUE(wants({"5"}));
    EXPECT_EQ(change(), "");
}

TEST_F(Cart, ANumberBecomesItsLow32BitsWithoutASign) {
    std::vector<std::pair<std::string, std::string>> const numbers = {
        {"5.999", "5"},
        {"-0.5", "0"},
        {"-1", "4294967295"},
        {"-5.9", "4294967291"},
        {"4294967295", "4294967295"},
        {"4294967296", "0"},
        {"4294967303", "7"},
        {"2147483648", "2147483648"},
        {"-2147483649", "2147483647"},
        {"1e300", "4294967295"}, // clamped to the largest integer of 64 bits first
        {"-1e300", "0"},
    };
    for (auto const& [number, id] : numbers) {
        host.network.forgetRequests();
        holds({R"("id":)" + number});
        EXPECT_TRUE(wants({}));
        EXPECT_EQ(change(), removing(id)) << number;
    }
}

TEST_F(Cart, ElementsThatAreNoObjectsCountAsTheReaderSeesThem) {
    reply("get_cart_formatted", R"({"items":[null,5,"6",true,[],{"id":7}]})");
    EXPECT_TRUE(wants({}));
    EXPECT_EQ(change(), removing("4294967295,7")); // a list is an element without members, a scalar is none
}

TEST_F(Cart, ACartThatCannotBeReadCountsAsEmpty) {
    answer("get_cart_formatted", answerOf({R"({"e":true,"items":[{"id":5}]})"}));
    EXPECT_TRUE(wants({"5", "6"}));
    EXPECT_EQ(change(), adding("5,6"));
}

TEST_F(Cart, ACartWithoutAReplyCountsAsEmpty) {
    for (std::string const& senseless : senselessAnswers()) {
        host.network.forgetRequests();
        answer("get_cart_formatted", senseless);
        EXPECT_TRUE(wants({"5"})) << senseless;
        EXPECT_EQ(change(), adding("5")) << senseless;
        host.network.forgetRequests();
        EXPECT_TRUE(wants({})) << senseless;
        EXPECT_EQ(change(), "") << senseless;
    }
}

TEST_F(Cart, ACartOfAnUnreachableServiceCountsAsEmpty) {
    EXPECT_TRUE(wants({"5"})); // the change is answered, the reading is not
    EXPECT_EQ(change(), adding("5"));
}

TEST_F(Cart, AReplyWithoutItemsIsAnEmptyCart) {
    for (std::string const items : {"{}", R"({"items":null})", R"({"items":5})", R"({"items":"5"})",
                                    R"({"items":[]})", R"({"items":{}})"}) {
        host.network.forgetRequests();
        reply("get_cart_formatted", items);
        EXPECT_TRUE(wants({"5"}));
        EXPECT_EQ(change(), adding("5")) << items;
    }
}

TEST_F(Cart, TheTextOfTheReadingDoesNotMakeItFail) {
    reply("get_cart_formatted", R"({"s":"something went wrong","items":[{"id":5}]})");
    EXPECT_TRUE(wants({"5"}));
    EXPECT_EQ(change(), "");
}

TEST_F(Cart, TheFlagAtTheTopDoesNotMakeTheReadingFail) {
    answer("get_cart_formatted", R"({"e":true,"s":"no","commands":[{"items":[{"id":5}]}]})");
    EXPECT_TRUE(wants({"5"}));
    EXPECT_EQ(change(), "");
}

TEST_F(Cart, AFlagOfTheReadingThatIsNoBooleanIsNone) {
    for (std::string const flag : {R"("true")", "1", "null", "[true]"}) {
        host.network.forgetRequests();
        reply("get_cart_formatted", R"({"e":)" + flag + R"(,"items":[{"id":5}]})");
        EXPECT_TRUE(wants({"5"}));
        EXPECT_EQ(change(), "") << flag;
    }
}

TEST_F(Cart, RepliesInsideTheReplyAreLookedAtForAText) {
    reply("get_cart_formatted", R"({"items":[{"id":5}],"commands":[{"s":"no"}]})");
    EXPECT_TRUE(wants({"5"}));
    EXPECT_EQ(change(), adding("5"));
}

TEST_F(Cart, AChangeThatFailsIsAFailure) {
    holds({});
    for (std::string const failure :
         {R"({"e":true,"commands":[{}]})", R"({"e":true})", R"({"commands":[{"s":"no such clip"}]})"}) {
        answer("modify_active_cart", failure);
        EXPECT_FALSE(wants({"5"})) << failure;
    }
}

TEST_F(Cart, AChangeWithoutAnAnswerIsAFailure) {
    becomeUnreachable();
    EXPECT_FALSE(wants({"5"}));
    EXPECT_EQ(change(), adding("5"));
}

TEST_F(Cart, AChangeIsJudgedByTheWholeAnswerNotByTheReplysOwnFlag) {
    holds({});
    for (std::string const success :
         {R"({"e":false,"commands":[{"e":true}]})", R"({"s":"text","commands":[{}]})", "{}", "[]",
          R"({"commands":[{"s":5}]})"}) {
        answer("modify_active_cart", success);
        EXPECT_TRUE(wants({"5"})) << success;
    }
}

TEST_F(Cart, AChangeWhoseAnswerIsNotJsonIsAFailure) {
    holds({});
    for (std::string const answered : {"", "<html>", "{", "nul"}) {
        answer("modify_active_cart", answered);
        EXPECT_FALSE(wants({"5"})) << answered;
    }
}

TEST_F(Cart, WithoutAServerOnlyAnEmptyListIsAsWanted) {
    resource.disconnect();
    EXPECT_TRUE(wants({}));
    EXPECT_FALSE(wants({"5"}));
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Cart, IdsAreSentAsTheyAre) {
    holds({});
    EXPECT_TRUE(wants({"a,b", "\"&apicx=1"}));
    EXPECT_EQ(change(), adding(R"(\"&apicx=1,a,b)"));
}

TEST_F(Cart, AnAssetWithoutAnIdIsAnEntryOfTheList) {
    holds({});
    EXPECT_TRUE(wants({"", "5"}));
    EXPECT_EQ(change(), adding(",5"));
}

TEST_F(Cart, ALongListIsOneChange) {
    std::vector<std::string> ids;
    std::string expected;
    for (int i = 100000; i < 120000; ++i) {
        ids.push_back(std::to_string(i));
        expected += (expected.empty() ? "" : ",") + ids.back();
    }
    holds({});
    EXPECT_TRUE(wants(ids));
    EXPECT_EQ(change(), adding(expected));
}

TEST_F(Cart, ACartLongerThanItsCountEndsWithTheCount) {
    std::string items = R"({"id":100000})";
    std::string expected = "100000";
    for (int i = 100001; i < 170000; ++i) {
        items += R"(,{"id":)" + std::to_string(i) + "}";
        if (i < 100000 + 65535) {
            expected += "," + std::to_string(i);
        }
    }
    reply("get_cart_formatted", R"({"items":[)" + items + "]}");
    EXPECT_TRUE(wants({}));
    EXPECT_EQ(change(), removing(expected));
}

TEST_F(Cart, NothingIsLoggedAndNothingIsKept) {
    resource.purchasedIds = {L"1"};
    answer("modify_active_cart", R"({"commands":[{"s":"no"}]})");
    EXPECT_FALSE(wants({"5"}));
    EXPECT_TRUE(host.log.lines().empty());
    EXPECT_EQ(resource.purchasedIds, std::set<WideString>{L"1"});
    EXPECT_TRUE(resource.clipCache.empty());
    EXPECT_TRUE(host.preferences.writes().empty());
}

} // namespace
} // namespace tarn7_tests
