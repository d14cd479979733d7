#include "host/web/ParsedURI.h"

#include <gtest/gtest.h>

#include "tests/host/core/PrintText.h"

namespace {

struct Address {
    wchar_t const* text;
    wchar_t const* server;
    wchar_t const* path;
    int secure;
};

void expectParts(Address const& expected) {
    ParsedURI const parsed = ParsedURI::parse(expected.text);
    NarrowString const shown = toUTF8(expected.text);
    EXPECT_TRUE(parsed.valid()) << shown.c_str();
    EXPECT_EQ(parsed.server, expected.server) << shown.c_str();
    EXPECT_EQ(parsed.path, expected.path) << shown.c_str();
    EXPECT_EQ(parsed.secure, expected.secure) << shown.c_str();
}

void expectInvalid(WideString const& text) {
    ParsedURI const parsed = ParsedURI::parse(text);
    EXPECT_FALSE(parsed.valid()) << toUTF8(text).c_str();
    EXPECT_TRUE(parsed.server.isEmpty()) << toUTF8(text).c_str();
    EXPECT_TRUE(parsed.path.isEmpty()) << toUTF8(text).c_str();
    EXPECT_EQ(parsed.secure, 0) << toUTF8(text).c_str();
}

TEST(ParsedURI, SplitsServerPathAndFlag) {
    Address const addresses[] = {
        {L"https://www.tarn7.example/a/b.mov", L"www.tarn7.example", L"/a/b.mov", 1},
        {L"http://www.tarn7.example/a/b.mov", L"www.tarn7.example", L"/a/b.mov", 0},
        {L"http://h/", L"h", L"/", 0},
        {L"https://h//a//b/", L"h", L"//a//b/", 1},
        {L"https://h/a%20b/%2e%2e", L"h", L"/a%20b/%2e%2e", 1},
    };
    for (Address const& address : addresses) {
        expectParts(address);
    }
}

TEST(ParsedURI, AnAddressWithoutAPathHasTheRoot) {
    expectParts({L"https://h", L"h", L"/", 1});
    expectParts({L"https://h:8443", L"h:8443", L"/", 1});
}

TEST(ParsedURI, TheQueryBelongsToThePath) {
    expectParts({L"https://h/a?b=c&d=/e", L"h", L"/a?b=c&d=/e", 1});
    expectParts({L"https://h/?", L"h", L"/?", 1});
    expectParts({L"https://h?x", L"h", L"/?x", 1});
    expectParts({L"https://h?u=http://other/p", L"h", L"/?u=http://other/p", 1});
}

TEST(ParsedURI, AFragmentIsNotSent) {
    expectParts({L"https://h/a#part", L"h", L"/a", 1});
    expectParts({L"https://h/a?q#part?x", L"h", L"/a?q", 1});
    expectParts({L"https://h#part", L"h", L"/", 1});
    expectParts({L"https://h#/a/b", L"h", L"/", 1});
    expectParts({L"https://h?x#y", L"h", L"/?x", 1});
}

TEST(ParsedURI, TheSchemeIsReadInAnyLetterCase) {
    expectParts({L"HTTPS://h/A", L"h", L"/A", 1});
    expectParts({L"Http://H/A", L"H", L"/A", 0});
}

TEST(ParsedURI, TheServerKeepsItsPort) {
    expectParts({L"https://h:1/a", L"h:1", L"/a", 1});
    expectParts({L"https://h:8443/a", L"h:8443", L"/a", 1});
    expectParts({L"http://127.0.0.1:65535/a", L"127.0.0.1:65535", L"/a", 0});
}

TEST(ParsedURI, APortThatIsNoneIsRefused) {
    for (wchar_t const* const text :
         {L"https://h:/a", L"https://h:0/a", L"https://h:65536/a", L"https://h:99999999999999999999/a",
          L"https://h:-1/a", L"https://h:+1/a", L"https://h:80a/a", L"https://h: 80/a", L"https://h:80:80/a",
          L"https://:80/a", L"https://:/a"}) {
        expectInvalid(text);
    }
}

TEST(ParsedURI, AnIPv6AddressStandsInBrackets) {
    expectParts({L"https://[::1]/a", L"[::1]", L"/a", 1});
    expectParts({L"https://[2001:DB8::1]:8443/a", L"[2001:DB8::1]:8443", L"/a", 1});
    expectParts({L"http://[::ffff:127.0.0.1]?q", L"[::ffff:127.0.0.1]", L"/?q", 0});
    for (wchar_t const* const text :
         {L"https://[::1/a", L"https://[]/a", L"https://[::1]x/a", L"https://[::1]:/a", L"https://[::1]:0/a",
          L"https://[fe80::1%25eth0]/a", L"https://[host]/a", L"https://::1/a", L"https://x[::1]/a",
          L"https://[::1]]/a"}) {
        expectInvalid(text);
    }
}

TEST(ParsedURI, UserInfoIsRefused) {
    for (wchar_t const* const text :
         {L"https://user@h/a", L"https://user:word@h/a", L"https://@h/a",
          L"https://www.tarn7.example@other/a", L"https://www.tarn7.example:80@other/a",
          L"https://user@[::1]/a", L"https://[::1]@other/a"}) {
        expectInvalid(text);
    }
    expectParts({L"https://h/a@b:c", L"h", L"/a@b:c", 1});
}

TEST(ParsedURI, OtherSchemesAndNoSchemeAreRefused) {
    for (wchar_t const* const text :
         {L"", L"h/a", L"/a", L"//h/a", L"ftp://h/a", L"file:///etc/passwd", L"javascript:alert(1)",
          L"https:/h/a", L"https:h/a", L"https//h/a", L"httpss://h/a", L"https", L"https:", L"https:/",
          L" https://h/a", L"data:text/html,x", L"https\u200b://h/a"}) {
        expectInvalid(text);
    }
}

TEST(ParsedURI, AnEmptyServerIsRefused) {
    for (wchar_t const* const text : {L"https://", L"https:///a", L"https://?a", L"https://#a"}) {
        expectInvalid(text);
    }
}

TEST(ParsedURI, CharactersThatNoServerNameHasAreRefused) {
    for (wchar_t const character :
         {L' ', L'@', L'\\', L'<', L'>', L'"', L'\'', L'`', L'{', L'}', L'|', L'^', L'%'}) {
        expectInvalid(L"https://h" + WideString(1, character) + L"x/a");
    }
}

TEST(ParsedURI, ControlCharactersAnywhereAreRefused) {
    for (wchar_t code = 0; code < 0xa0; ++code) {
        if (code >= 0x20 && code < 0x7f) {
            continue;
        }
        WideString const control(1, code);
        expectInvalid(control + L"https://h/a");
        expectInvalid(L"https://h" + control + L"/a");
        expectInvalid(L"https://h/a" + control);
        expectInvalid(L"https://h/a?q=" + control + L"b");
        expectInvalid(L"https://h/a#" + control);
    }
    expectInvalid(L"https://h/a HTTP/1.1\r\nX-Other: 1");
}

TEST(ParsedURI, AVirtualPathIsItsLocation) {
    expectParts({L"Virtual:T7 https://h:8443/a/b.mov?q", L"h:8443", L"/a/b.mov?q", 1});
    expectParts({L"Virtual:FQ http://h/a b.mov", L"h", L"/a b.mov", 0});
    for (wchar_t const* const text :
         {L"Virtual:", L"Virtual:T7", L"Virtual:T7 ", L"Virtual:T7 /local/file", L"Virtual:T7  https://h/a",
          L"Virtual:T7https://h/a", L"virtual:T7 https://h/a", L"Virtual:T7 Virtual:T7 https://h/a",
          L"Virtual:T7 file:///a", L"Virtual:T7 https://user@h/a"}) {
        expectInvalid(text);
    }
}

TEST(ParsedURI, TheDefaultIsInvalid) {
    EXPECT_FALSE(ParsedURI().valid());
}

} // namespace
