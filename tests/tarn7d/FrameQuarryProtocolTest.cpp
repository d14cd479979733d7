// Which requests are refused, and why.
#include "tests/tarn7d/FrameQuarryFixture.h"

#include <algorithm>

#include <gmock/gmock.h>

namespace {

using namespace tarn7d;
using test::FrameQuarryRequest;
using test::parseJson;
using testing::ElementsAre;

class FrameQuarryProtocolTest : public test::FrameQuarryFixture {};

TEST_F(FrameQuarryProtocolTest, TheKeyIsThePublicOneExactly) {
    FrameQuarryRequest changed = request();
    changed.key.back() = changed.key.back() == 'x' ? 'y' : 'x';
    EXPECT_EQ(code(changed), "bad_key");
    FrameQuarryRequest lower = request();
    std::ranges::transform(lower.key, lower.key.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; });
    EXPECT_EQ(code(lower), "bad_key");
    FrameQuarryRequest longer = request();
    longer.key += "x";
    EXPECT_EQ(code(longer), "bad_key");
    FrameQuarryRequest none = request();
    none.key.clear();
    EXPECT_EQ(code(none), "bad_key");
}

TEST_F(FrameQuarryProtocolTest, TheTimeIsMadeOfDigits) {
    std::string const time = std::to_string(service_.now);
    for (std::string const& text :
         {std::string(), "-" + time, "+" + time, " " + time, time + " ", time + ".0", std::string("0x10"),
          std::string("now"), time + std::string(1, '\0')}) {
        FrameQuarryRequest made = request();
        made.time = text;
        made.signature = test::frameQuarrySignature(text);
        EXPECT_EQ(code(made), "bad_time") << text;
    }
}

TEST_F(FrameQuarryProtocolTest, TheTimeIsGoodForFiveMinutesOnEitherSide) {
    struct {
        std::int64_t seconds;
        char const* code;
    } const cases[] = {{0, ""},    {300, ""},         {301, "expired"}, {600, "expired"},
                       {-300, ""}, {-301, "expired"}, {-600, "expired"}};
    for (auto const& expected : cases) {
        EXPECT_EQ(code(FrameQuarryRequest(service_.now + expected.seconds)), expected.code)
            << expected.seconds;
    }
    for (std::string const text : {"0", "9223372036854775807", "99999999999999999999999999"}) {
        FrameQuarryRequest made = request();
        made.time = text;
        made.signature = test::frameQuarrySignature(text);
        EXPECT_EQ(code(made), "expired") << text;
    }
    EXPECT_EQ(codeOf(parseJson(protocol_.answerSearch(request().query(), DownloadAddresses::Expiry::past))),
              "expired");
}

TEST_F(FrameQuarryProtocolTest, TheTimeIsSignedAsItIsWritten) {
    FrameQuarryRequest made = request();
    made.time = "00" + made.time;
    EXPECT_EQ(code(made), "bad_signature");
    made.signature = test::frameQuarrySignature(made.time);
    EXPECT_EQ(code(made), "");
}

TEST_F(FrameQuarryProtocolTest, TheSignatureIsThatOfThePathAndTheTime) {
    std::string const right = request().signature;
    std::string upper = right;
    std::ranges::transform(upper, upper.begin(),
                           [](char c) { return c >= 'a' ? static_cast<char>(c - 0x20) : c; });
    ASSERT_NE(upper, right);
    std::string changed = right;
    changed.front() = changed.front() == '0' ? '1' : '0';
    for (std::string const& text :
         {std::string(), upper, changed, right.substr(1), right + "0", right + " ",
          test::frameQuarrySignature(std::to_string(service_.now - 1)), std::string(64, '0')}) {
        FrameQuarryRequest made = request();
        made.signature = text;
        EXPECT_EQ(code(made), "bad_signature") << text;
    }
}

TEST_F(FrameQuarryProtocolTest, OneSignatureIsGoodForAnyWordsAndPage) {
    putClips({"Sunset & sea"});
    FrameQuarryRequest made = request("a&b=c +d%26#\"");
    EXPECT_EQ(code(made), "");
    made.keywords = "sunset & sea";
    EXPECT_THAT(found(made), ElementsAre(1));
    made.page = "7";
    EXPECT_EQ(code(made), "");
}

TEST_F(FrameQuarryProtocolTest, TheChecksAreMadeInTheirOrder) {
    FrameQuarryRequest made(service_.now - 301);
    made.key = "x";
    made.signature = "x";
    EXPECT_EQ(code(made.query() + "&page=2"), "bad_request");
    EXPECT_EQ(code(made), "bad_key");
    made.key = request().key;
    EXPECT_EQ(code(made), "expired");
    made.time = "x";
    EXPECT_EQ(code(made), "bad_time");
    made.time = request().time;
    EXPECT_EQ(code(made), "bad_signature");
}

TEST_F(FrameQuarryProtocolTest, AParameterThatComesTwiceIsRefusedAlsoWithTheSameValue) {
    FrameQuarryRequest const made = request();
    for (std::string const& field :
         {std::string("keywords="), std::string("page=1"), std::string("num_results=50"),
          "APIKEY=" + made.key, "EXPIRES=" + made.time, "HMAC=" + made.signature, std::string("%70age=1"),
          std::string("HMAC")}) {
        EXPECT_EQ(code(made.query() + "&" + field), "bad_request") << field;
    }
    EXPECT_EQ(code(made.query() + "&x=1&x=2&=&&apikey=1"), "");
}

TEST_F(FrameQuarryProtocolTest, AMissingParameterIsToldByItsOwnCode) {
    FrameQuarryRequest const made = request();
    std::string const key = "APIKEY=" + made.key;
    std::string const time = "EXPIRES=" + made.time;
    std::string const signature = "HMAC=" + made.signature;
    EXPECT_EQ(code(""), "bad_key");
    EXPECT_EQ(code(time + "&" + signature), "bad_key");
    EXPECT_EQ(code(key + "&" + signature), "bad_time");
    EXPECT_EQ(code(key + "&" + time), "bad_signature");
    EXPECT_EQ(code("apikey=" + made.key + "&" + time + "&" + signature), "bad_key");
    EXPECT_EQ(code(signature + "&" + time + "&" + key), "") << "words and pages have defaults";
}

TEST_F(FrameQuarryProtocolTest, AVeryLongQueryIsAnswered) {
    putClips({"Sunset"});
    EXPECT_EQ(code(request(std::string(16 << 10, 'x'))), "");
    EXPECT_THAT(found("sunset" + std::string(16 << 10, ' ') + "nothing"), ElementsAre(1));
    std::string many = request("sunset").query();
    while (many.size() < std::size_t{16} << 10) {
        many += "&unknown=%41";
    }
    EXPECT_EQ(code(many), "");
    FrameQuarryRequest key = request();
    key.key = std::string(16 << 10, 'k');
    EXPECT_EQ(code(key), "bad_key");
    FrameQuarryRequest time = request();
    time.time = std::string(16 << 10, '9');
    EXPECT_EQ(code(time), "expired");
    FrameQuarryRequest signature = request();
    signature.signature = std::string(16 << 10, 'a');
    EXPECT_EQ(code(signature), "bad_signature");
    EXPECT_EQ(code(std::string(16 << 10, '%')), "bad_key");
    EXPECT_EQ(code(std::string(16 << 10, '&')), "bad_key");
}

} // namespace
