// The shop as a client sees it: requests and replies.
#include <fstream>
#include <set>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestService.h"

namespace {

using namespace tarn7d;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;
using Element = Zq::Ptr<JSON::Element>;

class ShopCommandsTest : public testing::Test {
protected:
    ShopCommandsTest() {
        test::putClips(service_.catalogueFile,
                       {{.price_cents = 500, .title = "Süd \"West\" </script>"},
                        {.path = "B.MP4", .price_cents = 1999, .width = 1920, .height = 1080},
                        {.path = "odd.a b", .price_cents = 4900, .width = 4096, .height = 2160}});
        session_ = service_.signIn("editor", 100);
    }

    [[nodiscard]] Element ask(std::string const& command) { return service_.askOne(command, session_); }
    [[nodiscard]] Element word(std::string const& word) { return ask("{\"command\":\"" + word + "\"}"); }
    [[nodiscard]] Element modify(std::string const& members) {
        return ask("{\"command\":\"modify_active_cart\"," + members + "}");
    }
    [[nodiscard]] Element download(std::string const& bid, std::string const& tr, std::string const& v) {
        return ask("{\"command\":\"download\",\"bid\":" + test::jsonString(bid) +
                   ",\"tr\":" + test::jsonString(tr) + ",\"v\":" + test::jsonString(v) + "}");
    }
    [[nodiscard]] std::vector<std::int64_t> cart() {
        std::vector<std::int64_t> ids;
        Element const items = JSON::orEmpty(word("get_cart_formatted")).getChild("items");
        for (JSON::ChildMember const& item : JSON::orEmpty(items).children()) {
            ids.push_back(item.element->getInt("id", -1));
        }
        return ids;
    }
    void buy(std::string const& ids) {
        ASSERT_EQ(code(modify("\"addid\":\"" + ids + "\"")), 0);
        ASSERT_EQ(code(word("purchase_using_credits")), 0);
    }
    // 0 when there is no error.
    [[nodiscard]] static std::int64_t code(Element const& reply) {
        return JSON::orEmpty(reply).getBool("e", true) ? JSON::orEmpty(reply).getInt("c", -1) : 0;
    }
    [[nodiscard]] static std::string text(Element const& element, char const* key) {
        return std::string(JSON::orEmpty(element).getStringView(key));
    }

    test::TemporaryFolder folder_;
    test::TestService service_{folder_.path()};
    SessionKey session_;
};

TEST_F(ShopCommandsTest, AnEmptyCartHasItems) {
    Element const reply = word("get_cart_formatted");
    EXPECT_EQ(code(reply), 0);
    ASSERT_NE(reply->getChild("items"), nullptr);
    EXPECT_EQ(reply->getChild("items")->getNumChildren(), 0);
    EXPECT_EQ(reply->getInt("credits", -1), 100);
}

TEST_F(ShopCommandsTest, TheCartTellsItsClipsAndWhatTheyCost) {
    EXPECT_EQ(code(modify(R"("addid":"2,1")")), 0);
    Element const reply = word("get_cart_formatted");
    Element const items = reply->getChild("items");
    ASSERT_EQ(JSON::orEmpty(items).getNumChildren(), 2);
    Element const first = items->getChild(0);
    EXPECT_EQ(first->getInt("id", -1), 1);
    EXPECT_EQ(text(first, "n"), "Süd \"West\" </script>");
    EXPECT_EQ(text(first, "pr"), "5");
    EXPECT_EQ(first->getInt("cr", -1), 5);
    EXPECT_FALSE(first->getBool("own", true));
    EXPECT_EQ(text(reply, "tot_pr"), "24.99");
    EXPECT_EQ(reply->getInt("tot_cr", -1), 25);
}

TEST_F(ShopCommandsTest, TheCartIsChangedByListsOfNumbers) {
    EXPECT_EQ(code(modify(R"("addid":"1,3")")), 0);
    EXPECT_EQ(code(modify(R"("rmid":"1","addid":"2")")), 0);
    EXPECT_THAT(cart(), ElementsAre(2, 3));
    // A number with zeros in front is the same clip: removed first and then added.
    EXPECT_EQ(code(modify(R"("rmid":"2","addid":"002")")), 0);
    EXPECT_THAT(cart(), ElementsAre(2, 3));
    EXPECT_EQ(code(modify(R"("rmid":"2,3")")), 0);
    EXPECT_THAT(cart(), IsEmpty());
    EXPECT_EQ(code(word("modify_active_cart")), 0);
}

TEST_F(ShopCommandsTest, HostileListsAreRefusedWithNothingChanged) {
    EXPECT_EQ(code(modify(R"("addid":"1")")), 0);
    struct {
        char const* members;
        int code;
    } const cases[] = {
        {R"("addid":"2,99")", 4},
        {R"("addid":"4294967295")", 4},
        {R"("rmid":"4294967295","addid":"2")", 4},
        {R"("addid":"99999999999999999999999999")", 4},
        {R"("addid":"2,")", 3},
        {R"("addid":",2")", 3},
        {R"("addid":"2,,3")", 3},
        {R"("addid":"2 ,3")", 3},
        {R"("addid":"-2")", 3},
        {R"("addid":"2;DROP TABLE cart")", 3},
        {R"("addid":"0x2")", 3},
        {R"("addid":"2\u0000")", 3},
        {R"("addid":2)", 3},
        {R"("addid":["2"])", 3},
        {R"("rmid":"x","addid":"2")", 3},
        {R"("rmid":"1","addid":"x")", 3},
    };
    for (auto const& hostile : cases) {
        EXPECT_EQ(code(modify(hostile.members)), hostile.code) << hostile.members;
        EXPECT_THAT(cart(), ElementsAre(1)) << hostile.members;
    }
    std::string many = "1";
    for (int i = 0; i < 10000; ++i) {
        many += ",1";
    }
    EXPECT_EQ(code(modify("\"addid\":\"" + many + "\"")), 3);
}

TEST_F(ShopCommandsTest, APurchaseTellsWhatItChargedAndARepeatedOneChargesNothing) {
    EXPECT_EQ(code(modify(R"("addid":"1,2")")), 0);
    Element const bought = word("purchase_using_credits");
    EXPECT_EQ(code(bought), 0);
    EXPECT_EQ(bought->getInt("charged", -1), 25);
    EXPECT_EQ(bought->getInt("credits", -1), 75);
    // The same request again, as after a lost answer.
    EXPECT_EQ(code(word("purchase_using_credits")), 103);
    // The same purchase again, with its cart.
    EXPECT_EQ(code(modify(R"("addid":"1,2")")), 0);
    EXPECT_TRUE(word("get_cart_formatted")->getChild("items")->getChild(0)->getBool("own", false));
    Element const again = word("purchase_using_credits");
    EXPECT_EQ(code(again), 0);
    EXPECT_EQ(again->getInt("charged", -1), 0);
    EXPECT_EQ(again->getInt("credits", -1), 75);
}

TEST_F(ShopCommandsTest, APurchaseThatCannotBePaidSaysSo) {
    EXPECT_EQ(code(word("purchase_using_credits")), 103);
    EXPECT_EQ(code(word("purchase_using_cash")), 103);
    ASSERT_TRUE(service_.accounts.setCredits("editor", 24));
    EXPECT_EQ(code(modify(R"("addid":"1,2")")), 0);
    Element const refused = word("purchase_using_credits");
    EXPECT_EQ(code(refused), 106);
    EXPECT_THAT(text(refused, "s"), HasSubstr("credits"));
    EXPECT_EQ(code(word("purchase_using_cash")), 0);
    ASSERT_TRUE(service_.accounts.setPaymentsBlocked("editor", true));
    EXPECT_EQ(code(word("purchase_using_credits")), 106);
    EXPECT_EQ(code(word("purchase_using_cash")), 106);
}

TEST_F(ShopCommandsTest, APaymentHasAnAddressOfItsOwn) {
    EXPECT_EQ(code(modify(R"("addid":"1")")), 0);
    std::string const first = text(word("purchase_using_cash"), "url");
    std::string const second = text(word("purchase_using_cash"), "url");
    EXPECT_THAT(first, MatchesRegex("https://pay\\.example/pay/[0-9a-f]{64}"));
    EXPECT_NE(first, second);
    EXPECT_THAT(cart(), ElementsAre(1));
    EXPECT_EQ(service_.credits("editor"), 100);
}

TEST_F(ShopCommandsTest, WhatIsOwnedIsListedWithItsVersions) {
    buy("1,2");
    Element const reply = word("get_downloads_formatted");
    EXPECT_EQ(code(reply), 0);
    EXPECT_EQ(text(reply, "flv_base"), "https://media.example/p/");
    EXPECT_EQ(text(reply, "icon_base"), "https://media.example/icons/");
    Element const items = reply->getChild("items");
    ASSERT_EQ(JSON::orEmpty(items).getNumChildren(), 2);

    Element const small = items->getChild(0);
    EXPECT_EQ(text(small, "bid"), "1");
    ASSERT_EQ(small->getChild("versions")->getNumChildren(), 1);
    Element const original = small->getChild("versions")->getChild(0);
    EXPECT_FALSE(original->hasNum("bitoffset"));
    EXPECT_EQ(text(original, "ext"), "mov");
    EXPECT_EQ(text(original, "n"), "Süd \"West\" </script>");
    EXPECT_EQ(text(original, "tr"), "0");
    EXPECT_EQ(text(original, "v"), "1");
    EXPECT_EQ(text(original, "dur"), "5005");
    EXPECT_EQ(text(original, "fps_real"), "29.97003");
    EXPECT_EQ(text(original, "fps"), "29");
    EXPECT_EQ(text(original, "codg"), "H.264");
    EXPECT_EQ(text(original, "ar"), "16:9");
    EXPECT_EQ(text(original, "coda"), "no snd");
    EXPECT_EQ(original->getInt("vs", -1), 6);
    EXPECT_EQ(original->getInt("ox", -1), 720);
    EXPECT_EQ(original->getInt("oy", -1), 576);

    Element const versions = items->getChild(1)->getChild("versions");
    ASSERT_EQ(versions->getNumChildren(), 2);
    EXPECT_TRUE(versions->getChild(0)->hasNum("bitoffset"));
    EXPECT_EQ(text(versions->getChild(0), "ext"), "mp4");
    EXPECT_EQ(text(versions->getChild(0), "tr"), "1");
    EXPECT_EQ(versions->getChild(0)->getInt("ox", -1), 1280);
    EXPECT_EQ(versions->getChild(0)->getInt("oy", -1), 720);
    EXPECT_FALSE(versions->getChild(1)->hasNum("bitoffset"));
    EXPECT_EQ(text(versions->getChild(1), "ext"), "mp4");
    EXPECT_EQ(versions->getChild(1)->getInt("ox", -1), 1920);
}

TEST_F(ShopCommandsTest, AnOwnedClipStaysListedWhileItsFileIsGone) {
    buy("1");
    test::setPresent(service_.catalogueFile, 1, false);
    EXPECT_EQ(word("get_downloads_formatted")->getChild("items")->getNumChildren(), 1);
    EXPECT_EQ(code(download("1", "0", "1")), 107);
    EXPECT_EQ(code(ask(R"({"command":"get_clip_data","itemid":"1"})")), 0);
}

TEST_F(ShopCommandsTest, ADownloadGetsASignedAddressOfTheVersion) {
    buy("1,2,3");
    EXPECT_THAT(
        text(download("1", "0", "1"), "url"),
        MatchesRegex(
            R"(https://media\.example/full/000000001\.mov\?expires=1800000900&signature=[0-9a-f]{64})"));
    EXPECT_THAT(text(download("2", "0", "1"), "url"),
                StartsWith("https://media.example/full/000000002.mp4?"));
    EXPECT_THAT(text(download("2", "1", "1"), "url"),
                StartsWith("https://media.example/full/000000002_h264.mp4?"));
    // Nothing of a file's own name gets into the address.
    EXPECT_THAT(text(download("3", "", ""), "url"), StartsWith("https://media.example/full/000000003.mov?"));
}

TEST_F(ShopCommandsTest, ADownloadOfWhatIsNotOwnedOrNoClipIsRefused) {
    buy("1");
    EXPECT_EQ(code(download("2", "0", "1")), 105);
    EXPECT_EQ(code(download("99", "0", "1")), 4);
    EXPECT_EQ(code(download("-1", "0", "1")), 4);
    EXPECT_EQ(code(download("", "0", "1")), 3);
    EXPECT_EQ(code(download("../1", "0", "1")), 3);
    EXPECT_EQ(code(download("1", "7", "1")), 3);
    EXPECT_EQ(code(download("1", "0", "")), 3);
    EXPECT_EQ(code(download("1", "1", "1")), 3) << "the clip is too small for a second version";
    EXPECT_EQ(code(service_.askOne(R"({"command":"download","bid":"1"})")), 101);
    SessionKey const other = service_.signIn("other", 0);
    EXPECT_EQ(code(service_.askOne(R"({"command":"download","bid":"1"})", other)), 105);
}

void collectKeys(JSON::Element const& element, std::set<std::string>& keys) {
    auto const take = [&keys](auto const& members) {
        for (auto const& member : members) {
            keys.insert(std::string(member.key));
        }
    };
    take(element.strings());
    take(element.numbers());
    take(element.flags());
    take(element.children());
    for (JSON::ChildMember const& child : element.children()) {
        collectKeys(*child.element, keys);
    }
}

TEST_F(ShopCommandsTest, EveryKeyOfAReplyStandsInTheDocument) {
    std::ostringstream read;
    read << std::ifstream(TARN7D_PROTOCOL_DOCUMENT).rdbuf();
    std::string const document = read.str();
    auto const expectDocumented = [&](std::string const& word, Element const& reply) {
        ASSERT_EQ(code(reply), 0) << word;
        std::size_t const begin = document.find("### `" + word + "`");
        ASSERT_NE(begin, std::string::npos) << word;
        std::string const section = document.substr(begin, document.find("\n##", begin + 1) - begin);
        std::set<std::string> keys;
        collectKeys(*reply, keys);
        for (std::string const& key : keys) {
            if (!key.empty() && key != "e" && key != "s") {
                EXPECT_THAT(section, HasSubstr("`" + key + "`")) << word;
            }
        }
    };
    expectDocumented("modify_active_cart", modify(R"("addid":"1,2")"));
    for (char const* asked :
         {"get_cart_formatted", "purchase_using_cash", "purchase_using_credits", "get_downloads_formatted"}) {
        expectDocumented(asked, word(asked));
    }
    expectDocumented("download", download("1", "0", "1"));
    expectDocumented("search", word("search"));
    expectDocumented("get_clip_data", ask(R"({"command":"get_clip_data","itemid":"1"})"));
}

TEST_F(ShopCommandsTest, FiftyThousandOwnedClipsAreListedAndAskedAboutInOneRequestEach) {
    constexpr int clips = 50'000;
    test::putClips(service_.catalogueFile,
                   std::vector<test::TestClip>(
                       clips, {.path = "more.mov", .price_cents = 100, .width = 1920, .height = 1080}));
    ASSERT_TRUE(service_.accounts.setCredits("editor", clips));
    for (int first = 4; first < clips + 4; first += 10'000) {
        std::string ids;
        for (int id = first; id < first + 10'000; ++id) {
            ids += (ids.empty() ? "" : ",") + std::to_string(id);
        }
        buy(ids);
    }
    EXPECT_EQ(service_.credits("editor"), 0);
    std::string const listed =
        service_.protocol.answer(test::requestBody(R"([{"command":"get_downloads_formatted"}])", session_));
    EXPECT_LT(listed.size(), std::size_t{64} << 20) << "a client takes no larger answer";
    Element const items = test::reply(test::parseJson(listed))->getChild("items");
    ASSERT_EQ(JSON::orEmpty(items).getNumChildren(), clips);
    std::set<std::string_view> bids;
    std::string commands;
    for (JSON::ChildMember const& item : items->children()) {
        std::string_view const bid = item.element->getStringView("bid");
        EXPECT_TRUE(bids.insert(bid).second);
        commands += (commands.empty() ? "[" : ",") + std::string(R"({"command":"get_clip_data","itemid":")") +
                    std::string(bid) + "\"}";
    }
    Element const data = service_.ask(commands + "]", session_);
    Element const last = test::reply(data, clips - 1);
    EXPECT_EQ(code(last), 0);
    EXPECT_EQ(text(last->getChild("clip_data"), "pim_aut_fps_real"), "29.97003");
}

} // namespace
