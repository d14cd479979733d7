#include "apps/tarn7d/RequestBody.h"

#include <gtest/gtest.h>

namespace {

using tarn7d::parseRequestBody;
using tarn7d::SessionKey;

TEST(RequestBody, TheEnvelopeAloneHasNoSession) {
    auto const form = parseRequestBody(R"(api={"api_key":"k"})");
    ASSERT_TRUE(form);
    EXPECT_EQ(form->envelope, R"({"api_key":"k"})");
    EXPECT_EQ(form->session, SessionKey());
}

TEST(RequestBody, TheSessionStandsBehindTheEnvelope) {
    auto const form = parseRequestBody(R"(api={"a":1}&apicx=12&apicm=2147483647)");
    ASSERT_TRUE(form);
    EXPECT_EQ(form->envelope, R"({"a":1})");
    EXPECT_EQ(form->session, (SessionKey{12, 2147483647}));
}

TEST(RequestBody, MinusOneIsNoSession) {
    auto const form = parseRequestBody("api={}&apicx=-1&apicm=-1");
    ASSERT_TRUE(form);
    EXPECT_EQ(form->session, SessionKey());
}

TEST(RequestBody, FormCharactersInsideTheJsonBelongToIt) {
    std::string const json = R"({"commands_json":"[{\"query\":\"a&apicx=7=b&c={}%20+ \\\" ]}\"}]","x":[{}]})";
    std::string const body = "api=" + json + "&apicx=3&apicm=4";
    auto const form = parseRequestBody(body);
    ASSERT_TRUE(form);
    EXPECT_EQ(form->envelope, json);
    EXPECT_EQ(form->session, (SessionKey{3, 4}));
}

TEST(RequestBody, AStringThatEndsInABackslashEndsWhereItEnds) {
    std::string const json = R"({"a":"b\\"})";
    std::string const body = "api=" + json + "&apicx=3";
    auto const form = parseRequestBody(body);
    ASSERT_TRUE(form);
    EXPECT_EQ(form->envelope, json);
    EXPECT_EQ(form->session.context, 3);
}

TEST(RequestBody, BytesOfAnyKindInAStringAreKept) {
    std::string json = "{\"a\":\"";
    for (int byte = 0x80; byte < 0x100; ++byte) {
        json += static_cast<char>(byte);
    }
    json += std::string(1, '\0') + "\"}";
    std::string const body = "api=" + json;
    auto const form = parseRequestBody(body);
    ASSERT_TRUE(form);
    EXPECT_EQ(form->envelope, json);
}

TEST(RequestBody, FieldsOfOtherNamesArePassedOver) {
    auto const form = parseRequestBody("api={}&colour=blue&apicx=5&x=");
    ASSERT_TRUE(form);
    EXPECT_EQ(form->session.context, 5);
}

class BadBody : public testing::TestWithParam<std::string> {};

TEST_P(BadBody, IsRefused) {
    EXPECT_FALSE(parseRequestBody(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(RequestBody, BadBody,
                         testing::Values("", "api", "api=", "api=1", "api=[]", "api={", R"(api={"a)",
                                         R"(api={"a\)", "api={]", "api=[}", "API={}", "apicx=1&api={}",
                                         "api={}x", "api={}&", "api={}&apicx",
                                         "api={}&apicx=", "api={}&apicx=1x", "api={}&apicx= 1",
                                         "api={}&apicx=2147483648", "api={}&apicm=99999999999999999999"));

} // namespace
