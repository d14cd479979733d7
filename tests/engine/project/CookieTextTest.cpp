#include <gtest/gtest.h>

#include "host/engine/project/EditRecord.h"

namespace engine {
namespace {

constexpr char const* counting = "000102030405060708090a0b0c0d0e0f101112";

Cookie countingCookie() {
    Cookie cookie;
    for (std::size_t i = 0; i < cookie.uuid.bytes.size(); ++i) {
        cookie.uuid.bytes[i] = static_cast<std::uint8_t>(i);
    }
    cookie.kind = {0x10, 0x11, 0x12};
    return cookie;
}

TEST(CookieText, IsTheIdentityAndThenTheKindInHexadecimal) {
    EXPECT_EQ(cookieText(countingCookie()), counting);
}

TEST(CookieText, LeadsBackToTheCookieInEitherLetterCase) {
    EXPECT_EQ(cookieFromText(counting), countingCookie());
    EXPECT_EQ(cookieFromText("000102030405060708090A0B0C0D0E0F101112"), countingCookie());
}

TEST(CookieText, AnyOtherTextIsTheNullCookie) {
    std::string const text = counting;
    for (std::string const& other :
         {std::string(), text.substr(1), text + "0", "x" + text.substr(1), text.substr(0, 37) + "g",
          text.substr(0, 37) + " ", std::string(38, '@'), std::string(38, '\0')}) {
        EXPECT_TRUE(cookieFromText(other).isNull()) << other;
    }
}

TEST(CookieText, TheNullCookieIsZeros) {
    EXPECT_EQ(cookieText(Cookie()), std::string(38, '0'));
}

} // namespace
} // namespace engine
