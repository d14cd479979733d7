#include "host/network/RequestUri.h"

#include <gtest/gtest.h>

#include "host/network/OSPrivate.h"
#include "tests/host/core/InstalledHost.h"
#include "tests/host/core/PrintText.h"

namespace {

// Encodes by putting brackets around: so a test sees what passed through and how often.
class BracketNetwork final : public iNetwork {
public:
    BracketNetwork() : installed_(services(*this)) {}
    Zq::Ptr<iHTTPServer> createHTTPServer(HTTPConnectionInfo const&) override { return {}; }
    WideString encodeUrlComponent(WideString const& text) override { return L"<" + text + L">"; }

private:
    static HostServices services(iNetwork& network) {
        HostServices services;
        services.network = &network;
        return services;
    }
    InstalledHost installed_;
};

using Encoding = RequestUri::Encoding;

TEST(RequestUri, WithoutParametersIsThePathAlone) {
    RequestUri uri;
    EXPECT_TRUE(uri.getText(Encoding::off).isEmpty());
    uri.path = L"/search";
    EXPECT_EQ(uri.getText(Encoding::off), L"/search");
    EXPECT_EQ(uri.getText(Encoding::on), L"/search") << "a path alone asks nothing of the network service";
}

TEST(RequestUri, JoinsThePathAndTheParametersInTheirOrder) {
    RequestUri const uri{{{L"z", L"1"}, {L"a", L"2"}, {L"m", L"3"}}, L"https://h/p"};
    EXPECT_EQ(uri.getText(Encoding::off), L"https://h/p?z=1&a=2&m=3");
}

TEST(RequestUri, AFormHasNoQuestionMark) {
    RequestUri const uri{{{L"api", L"{}"}, {L"apicx", L"-1"}}, {}};
    EXPECT_EQ(uri.getText(Encoding::off), L"api={}&apicx=-1");
}

TEST(RequestUri, RepeatedKeysStay) {
    RequestUri const uri{{{L"id", L"1"}, {L"id", L"2"}, {L"id", L"1"}}, L"/p"};
    EXPECT_EQ(uri.getText(Encoding::off), L"/p?id=1&id=2&id=1");
}

TEST(RequestUri, EmptyKeysAndValuesKeepTheirPlaces) {
    RequestUri const uri{{{L"", L""}, {L"a", L""}, {L"", L"b"}}, L"/p"};
    EXPECT_EQ(uri.getText(Encoding::off), L"/p?=&a=&=b");
}

TEST(RequestUri, WithoutEncodingValuesAreWrittenAsTheyAre) {
    BracketNetwork network;
    RequestUri const uri{{{L"q", L"a&b=c d"}}, L"/p"};
    EXPECT_EQ(uri.getText(Encoding::off), L"/p?q=a&b=c d");
}

TEST(RequestUri, WithEncodingOnlyTheValuesPassThroughTheNetworkService) {
    BracketNetwork network;
    RequestUri const uri{{{L"q&", L"a b"}, {L"n", L""}}, L"/p q"};
    EXPECT_EQ(uri.getText(Encoding::on), L"/p q?q&=<a b>&n=<>");
}

TEST(RequestUri, AQueryAlreadyInThePathIsNotLookedFor) {
    RequestUri const uri{{{L"a", L"1"}}, L"/p?x=1"};
    EXPECT_EQ(uri.getText(Encoding::off), L"/p?x=1?a=1");
}

} // namespace
