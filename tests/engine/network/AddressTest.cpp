#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "host/HostServices.h"
#include "host/engine/network/CurlNetwork.h"
#include "host/engine/network/PercentEncoding.h"
#include "host/engine/network/ServerAddress.h"
#include "host/text/Unicode.h"

namespace {

using engine::ServerAddress;

std::string nameOf(std::string_view server, std::int32_t port = 0, bool secure = true) {
    auto const address = ServerAddress::parse(server, port, secure);
    return address ? address->name() : "none";
}

std::string urlOf(WideString const& path) {
    return ServerAddress::parse("host.example", 0, true)->url(path);
}

TEST(ServerAddress, TakesTheSchemesPortWhereNoneIsWritten) {
    EXPECT_EQ(nameOf("www.tarn7.example"), "www.tarn7.example:443");
    EXPECT_EQ(nameOf("www.tarn7.example", 0, false), "www.tarn7.example:80");
}

TEST(ServerAddress, TakesThePortOfTheTextAndThatOfTheRecordBeforeIt) {
    EXPECT_EQ(nameOf("localhost:8443"), "localhost:8443");
    EXPECT_EQ(nameOf("localhost", 8443), "localhost:8443");
    EXPECT_EQ(nameOf("localhost:1", 8443), "localhost:8443");
    EXPECT_EQ(nameOf("[::1]:80"), "[::1]:80");
    EXPECT_EQ(nameOf("[fe80::1]"), "[fe80::1]:443");
    EXPECT_EQ(nameOf("127.0.0.1:65535"), "127.0.0.1:65535");
}

TEST(ServerAddress, LettersOfANameHaveNoCase) {
    EXPECT_EQ(nameOf("WWW.Tarn7.Example"), "www.tarn7.example:443");
}

TEST(ServerAddress, RefusesWhatNoAddressCanBeMadeFrom) {
    for (char const* const server : {"",
                                     " ",
                                     "a b",
                                     "a/b",
                                     "/",
                                     "a@b",
                                     "user:pw@host",
                                     "a\nb",
                                     "a\r\nHost: x",
                                     "a\x7f",
                                     "a?b",
                                     "a#b",
                                     "a%41",
                                     "a\\b",
                                     "a\"b",
                                     "<a>",
                                     "h\xc3\xb6st",
                                     "host:",
                                     "host:0",
                                     "host:65536",
                                     "host:-1",
                                     "host:+1",
                                     "host:8x",
                                     "host:80:80",
                                     ":80",
                                     "::1",
                                     "[::1",
                                     "[]",
                                     "[]:80",
                                     "[::1]80",
                                     "[::1]:",
                                     "[zz]",
                                     "a[::1]",
                                     ".",
                                     "http://a"}) {
        EXPECT_EQ(nameOf(server), "none") << server;
    }
    EXPECT_EQ(nameOf(std::string_view("a\0b", 3)), "none");
    EXPECT_EQ(nameOf(std::string(256, 'a')), "none");
    EXPECT_EQ(nameOf("host", -1), "none");
    EXPECT_EQ(nameOf("host", 65536), "none");
}

TEST(ServerAddress, OriginLeavesTheSchemesPortOut) {
    EXPECT_EQ(ServerAddress::parse("a", 443, true)->origin(), "https://a");
    EXPECT_EQ(ServerAddress::parse("a", 80, true)->origin(), "https://a:80");
    EXPECT_EQ(ServerAddress::parse("a", 80, false)->origin(), "http://a");
}

TEST(ServerAddress, PathsAreRelativeToTheRoot) {
    EXPECT_EQ(urlOf(L""), "https://host.example/");
    EXPECT_EQ(urlOf(L"/"), "https://host.example/");
    EXPECT_EQ(urlOf(L"?page=api"), "https://host.example/?page=api");
    EXPECT_EQ(urlOf(L"000000123_main_xl.mp4"), "https://host.example/000000123_main_xl.mp4");
    EXPECT_EQ(urlOf(L"/a/b.mov?q=1&r=%20+x"), "https://host.example/a/b.mov?q=1&r=%20+x");
    EXPECT_EQ(urlOf(L"//other.example/x"), "https://host.example//other.example/x");
    EXPECT_EQ(urlOf(L"@other.example/x"), "https://host.example/@other.example/x");
}

TEST(ServerAddress, BlanksControlsAndOtherAlphabetsInAPathAreEncoded) {
    EXPECT_EQ(urlOf(L"/a b\r\nX: y\t"), "https://host.example/a%20b%0D%0AX:%20y%09");
    EXPECT_EQ(urlOf(L"/\x00fc\x7f"), "https://host.example/%C3%BC%7F");
    EXPECT_EQ(urlOf(WideString(L"\0", 1)), "https://host.example/%00");
}

TEST(ServerAddress, OfAUrlIsItsServer) {
    auto const address = ServerAddress::ofUrl("HTTPS://Host.example:8443/a?b#c");
    ASSERT_TRUE(address);
    EXPECT_EQ(address->origin(), "https://host.example:8443");
    EXPECT_EQ(ServerAddress::ofUrl("http://a")->origin(), "http://a");
    EXPECT_EQ(ServerAddress::ofUrl("http://a?b")->origin(), "http://a");
    for (char const* const url : {"", "a", "//a/b", "ftp://a/", "file:///etc/passwd", "https:/a", "https://",
                                  "https:///a", "https://u@a/", "https://u:p@a/", "http://a:b/"}) {
        EXPECT_FALSE(ServerAddress::ofUrl(url)) << url;
    }
}

TEST(PercentEncoding, KeepsTheUnreservedCharactersOnly) {
    EXPECT_EQ(engine::encodeComponent(L"AZaz09-._~"), L"AZaz09-._~");
    EXPECT_EQ(engine::encodeComponent(L" !\"#$%&'()*+,/:;=?@[]"),
              L"%20%21%22%23%24%25%26%27%28%29%2A%2B%2C%2F%3A%3B%3D%3F%40%5B%5D");
    EXPECT_EQ(engine::encodeComponent(L""), L"");
}

TEST(PercentEncoding, KeepsNoOtherCharacterOfAscii) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    for (wchar_t character = 0; character < 0x80; ++character) {
        auto const byte = static_cast<unsigned>(character);
        std::string const encoded{'%', digits[byte >> 4], digits[byte & 15]};
        bool const unreserved = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                                (byte >= '0' && byte <= '9') ||
                                std::wstring_view(L"-._~").find(character) != std::wstring_view::npos;
        WideString const itself(&character, 1);
        EXPECT_EQ(engine::encodeComponent(itself), unreserved ? itself : fromUTF8(encoded)) << byte;
    }
}

TEST(PercentEncoding, WritesUtf8WithUpperCaseDigits) {
    EXPECT_EQ(engine::encodeComponent(L"\x00fc\x20ac"), L"%C3%BC%E2%82%AC");
    EXPECT_EQ(engine::encodeComponent(L"\xd83d\xde00"), L"%F0%9F%98%80");
    EXPECT_EQ(engine::encodeComponent(WideString(L"\xd83d", 1)), L"%EF%BF%BD");
    EXPECT_EQ(engine::encodeComponent(WideString(L"\xde00", 1)), L"%EF%BF%BD");
    EXPECT_EQ(engine::encodeComponent(WideString(L"\xde00\xd83d-", 3)), L"%EF%BF%BD%EF%BF%BD-");
    EXPECT_EQ(engine::encodeComponent(WideString(L"\xd83d\xd83d\xde00", 3)), L"%EF%BF%BD%F0%9F%98%80");
}

TEST(PercentEncoding, IsWhatTheNetworkServiceOffers) {
    engine::CurlNetwork network{engine::NetworkSettings()};
    HostServices services;
    services.network = &network;
    HostServices const before = installHost(services);
    EXPECT_EQ(OSPrivate().network().encodeUrlComponent(L"rock & roll+\x00fc\xd83d\xde00~\xd83d"),
              L"rock%20%26%20roll%2B%C3%BC%F0%9F%98%80~%EF%BF%BD");
    installHost(before);
}

} // namespace
