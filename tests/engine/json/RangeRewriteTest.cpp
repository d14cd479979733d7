#include "host/engine/json/RangeRewrite.h"

#include <gtest/gtest.h>

namespace {

using engine::rewriteIntoRange;

TEST(RangeRewrite, LeavesATextThatNeedsNothingAsItIs) {
    for (char const* const text :
         {"", "[1,2.5,-3e7]", "{\"a\":\"1e999\\\"1e999\"}", "[123456789012345678]",
          "\"\\ud83d\\ude00\\u0041\"", "[01e999,1.e999,1e999x,+1e999]", "\"open \\"}) {
        EXPECT_EQ(rewriteIntoRange(text), text);
    }
}

TEST(RangeRewrite, WritesNumbersThatADoubleCannotHoldAsTheNearestDouble) {
    EXPECT_EQ(rewriteIntoRange("[1e400,-1E+400,1e-400,-1e-400]"),
              "[1.7976931348623157e308,-1.7976931348623157e308,0.0,-0.0]");
}

TEST(RangeRewrite, GivesLongIntegersAnExponent) {
    EXPECT_EQ(rewriteIntoRange("{\"id\":-18446744073709551616}"), "{\"id\":-18446744073709551616e0}");
}

TEST(RangeRewrite, ReplacesUnpairedSurrogatesOnly) {
    EXPECT_EQ(rewriteIntoRange(R"("\ud800 \udc00 \uD83D\uDE00 \ud800\u0041 \\ud800")"),
              R"("\ufffd \ufffd \uD83D\uDE00 \ufffd\u0041 \\ud800")");
}

} // namespace
