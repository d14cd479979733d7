#include "host/text/oneLine.h"

#include <gtest/gtest.h>

#include "tests/host/core/PrintText.h"

namespace {

TEST(OneLine, EachControlCharacterAndSeparatorBecomesABlank) {
    EXPECT_EQ(Zq::onOneLine(L"a\nb\r\tc\x1b[0m\x7f\x80\x85\x9f\x2028\x2029z"), L"a b  c [0m      z");
    EXPECT_EQ(Zq::onOneLine(WideString(L"a\0b", 3)), L"a b");
}

TEST(OneLine, EverythingElseStays) {
    for (WideString const& text :
         {WideString(), WideString(L" ~\u00a0\u00e9\u2027\u202a\ufffe\uffff"), WideString(L"\xd83d\xde00")}) {
        EXPECT_EQ(Zq::onOneLine(text), text);
    }
}

TEST(OneLine, ATextThatIsOneLineSharesItsStorage) {
    WideString const text = L"one line";
    EXPECT_EQ(Zq::onOneLine(text).c_str(), text.c_str());
}

} // namespace
