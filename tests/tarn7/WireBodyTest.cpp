// The bodies of requests, byte for byte, as files under golden/, made with the service values that a build
// has by default.

#include <nlohmann/json.hpp>
#include <openssl/evp.h>

#include "tests/support/golden.h"
#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

std::string sha256Of(std::string_view bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    EXPECT_EQ(EVP_Digest(bytes.data(), bytes.size(), digest, &size, EVP_sha256(), nullptr), 1);
    std::string text;
    for (unsigned int i = 0; i < size; ++i) {
        text += {digits[digest[i] >> 4], digits[digest[i] & 15]};
    }
    return text;
}

class WireBody : public Tarn7Test {
protected:
    void SetUp() override { connect(); }

    void TearDown() override {
        if (!HasFailure()) {
            EXPECT_TRUE(compared_) << "this test compared no body";
        }
    }

    // The body of the only request against the file of that name.
    void expectBody(std::string const& name) {
        ASSERT_EQ(host.network.requestCount(), 1U);
        expectLastBody(name);
    }
    void expectLastBody(std::string const& name) {
        compared_ = true;
        std::string const body = lastBody();
        expectSound(body);
        test::expectGolden(TARN7_GOLDEN_FOLDER "/" + name + ".txt", body);
    }

    // Signs in, has the cart hold the items, and asks for these ids.
    void fillCart(std::string const& items, std::vector<std::string> const& ids) {
        signIn();
        host.network.answerWith(answerOf({R"({"items":[)" + items + "]}"}));
        LightweightVector<RemoteAsset> assets;
        for (std::string const& id : ids) {
            assets.emplace_back().id = wide(id);
        }
        EXPECT_TRUE(resource.syncCart(assets));
    }

    // One search signed out.
    void searchFor(WideString const& words) {
        SearchQuery query;
        query.words = words;
        (void)resource.runSearch(query);
    }

private:
    // The digest by other means: another reader of JSON and the hash function itself.
    static void expectSound(std::string const& body) {
        ASSERT_TRUE(body.starts_with("api="));
        auto const envelope = nlohmann::json::parse(body.substr(4, body.rfind('}') - 3));
        std::string const text = envelope["commands_json"];
        EXPECT_TRUE(nlohmann::json::parse(text).is_array());
        EXPECT_EQ(envelope["commands_hash"], sha256Of(text + Tarn7HashSalt + Tarn7HashPepper));
    }

    bool compared_ = false;
};

TEST_F(WireBody, OfAnEmptyList) {
    (void)resource.sendCommands({});
    expectBody("empty_list");
}

TEST_F(WireBody, OfASignIn) {
    (void)resource.login(typedForm("ada", "pass word"));
    expectBody("login");
}

TEST_F(WireBody, OfASignInWithNothingTyped) {
    (void)resource.login({});
    expectBody("login_empty");
}

TEST_F(WireBody, OfASignInWithEveryKindOfCharacter) {
    (void)resource.login(typedForm("z\u00f6e&x=1 \U0001f3ac", "a\"b\\c%26/<\u2028>'\x7f\xff"));
    expectBody("login_odd_characters");
}

TEST_F(WireBody, OfASecondSignIn) {
    signIn();
    (void)resource.login(typedForm("bob", "x"));
    expectBody("login_signed_in");
}

TEST_F(WireBody, OfASignOut) {
    signIn();
    resource.logout();
    expectBody("logout");
}

TEST_F(WireBody, OfASearch) {
    searchFor(L"sunset");
    expectBody("search");
}

TEST_F(WireBody, OfASearchWithEveryFilterSignedIn) {
    signIn();
    host.preferences.write("T7 Price", 5);
    host.preferences.write("T7 Height", 720);
    host.preferences.write("T7 Len", 5);
    SearchQuery query;
    query.words = L"sunset";
    query.page = 2;
    query.pageSize = 50;
    (void)resource.runSearch(query);
    expectBody("search_filtered_signed_in");
}

TEST_F(WireBody, OfASearchWithNegativeSessionNumbers) {
    resource.signedInUser = L"ada";
    searchFor(L"sunset");
    expectBody("search_without_session");
}

TEST_F(WireBody, OfASearchForSignsThatMeanSomethingInAForm) {
    searchFor(L"a&b=c%20+d?e#f;apicx=1&apicm=2");
    expectBody("search_form_signs");
}

TEST_F(WireBody, OfASearchForQuotesAndBackslashes) {
    searchFor(L"\"quoted\" \\ back\\\\slash \\\" / 'x' {[,:]} \\u0041");
    expectBody("search_quotes");
}

TEST_F(WireBody, OfASearchForEveryControlCharacter) {
    WideString words(L"a");
    for (wchar_t control = 0; control < 0x20; ++control) {
        words += control;
    }
    words += L"\x7f\x80\x9f z";
    searchFor(words);
    expectBody("search_controls");
}

TEST_F(WireBody, OfASearchBeyondTheBasicPlane) {
    searchFor(wide("h\u00e9llo \u4e16\u754c \u2028\u2029\ufeff \U0001f3ac\U0010ffff \uffff"));
    expectBody("search_beyond_ascii");
}

TEST_F(WireBody, OfASearchForHalvesOfCharacters) {
    WideString words(L"a");
    for (wchar_t const unit :
         {L'\xd800', L'b', L'\xdc00', L'\xdc00', L'\xd83c', L'\xd83c', L'\xdfac', L'\xdbff'}) {
        words += unit;
    }
    searchFor(words);
    expectBody("search_lone_surrogates");
}

TEST_F(WireBody, OfALookupOfOneClip) {
    LightweightVector<RemoteAsset> assets(1);
    assets[0].id = L"123";
    resource.getClipData(assets);
    expectBody("get_clip_data");
}

TEST_F(WireBody, OfALookupOfTwoClipsSignedIn) {
    signIn();
    LightweightVector<RemoteAsset> assets(2);
    assets[0].id = L"123";
    assets[1].id = L"-1";
    resource.getClipData(assets);
    expectBody("get_clip_data_two");
}

TEST_F(WireBody, OfTheReadingOfTheCart) {
    (void)resource.syncCart({});
    expectBody("get_cart_formatted");
}

TEST_F(WireBody, OfAdditionsToTheCart) {
    fillCart("", {"9", "10"});
    expectLastBody("modify_active_cart_add");
}

TEST_F(WireBody, OfRemovalsFromTheCart) {
    fillCart(R"({"id":9},{"id":10})", {});
    expectLastBody("modify_active_cart_remove");
}

TEST_F(WireBody, OfAnExchangeOfTheCart) {
    fillCart(R"({"id":9},{"id":12},{},{"id":10})", {"8", "12", "11", "007"});
    expectLastBody("modify_active_cart_both");
}

TEST_F(WireBody, OfAPurchaseOnThePaymentPage) {
    signIn();
    host.network.answerWith(answerOf({"{}"}));
    (void)resource.requestExternalPurchase({});
    expectLastBody("purchase_using_cash");
}

TEST_F(WireBody, OfAPurchaseWithCredits) {
    signIn();
    host.network.answerWith(answerOf({"{}"}));
    (void)resource.requestCreditPurchase({});
    expectLastBody("purchase_using_credits");
}

TEST_F(WireBody, OfTheOwnedList) {
    signIn();
    (void)resource.getPurchasedAssets();
    expectBody("get_downloads_formatted");
}

TEST_F(WireBody, OfTheOwnedListSignedOut) {
    (void)resource.getPurchasedAssets();
    expectBody("get_downloads_formatted_signed_out");
}

TEST_F(WireBody, OfADownload) {
    signIn();
    RemoteAsset asset;
    asset.id = L"123";
    asset.payload = parsed(R"({"v":"2","tr":"full \"q\""})");
    EXPECT_FALSE(resource.fetchFullMedia({asset}, 0, LoggerHandle()));
    expectBody("download");
}

TEST_F(WireBody, OfACommandWithEveryKindOfParameter) {
    Tarn7Resource::Command command(L"word");
    command.addFlag("f", true);
    command.addNumber("n", -2147483647 - 1);
    command.addParam("s", L"");
    command.addFlag("g", false);
    (void)resource.sendCommands({command, Tarn7Resource::Command(L"")});
    expectBody("every_kind");
}

} // namespace
} // namespace tarn7_tests
