// Lines of the shell as words.

#include <gmock/gmock.h>

#include "apps/zq/Words.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;
using zq::splitWords;

TEST(Words, AreSeparatedByBlanks) {
    EXPECT_THAT(splitWords("search  red\tcar "), Optional(ElementsAre("search", "red", "car")));
    EXPECT_THAT(splitWords("   "), Optional(IsEmpty()));
}

TEST(Words, KeepBlanksInQuotes) {
    EXPECT_THAT(splitWords(R"(a 'b c' "d e"f)"), Optional(ElementsAre("a", "b c", "d ef")));
}

TEST(Words, MayBeEmptyInQuotes) {
    EXPECT_THAT(splitWords(R"(login "" '')"), Optional(ElementsAre("login", "", "")));
}

TEST(Words, TakeTheCharacterBehindABackslashExceptInSingleQuotes) {
    EXPECT_THAT(splitWords(R"(a\ b "c\"d" 'e\f')"), Optional(ElementsAre("a b", "c\"d", "e\\f")));
}

TEST(Words, MeanNothingToAnyShell) {
    EXPECT_THAT(splitWords("$(reboot) `id` *.mov a|b;c&"),
                Optional(ElementsAre("$(reboot)", "`id`", "*.mov", "a|b;c&")));
}

TEST(Words, EndAtARemark) {
    EXPECT_THAT(splitWords("info # all of it"), Optional(ElementsAre("info")));
    EXPECT_THAT(splitWords("search c#"), Optional(ElementsAre("search", "c#")));
}

TEST(Words, AreNoneWhereAQuoteIsNotClosed) {
    EXPECT_EQ(splitWords("search 'red"), std::nullopt);
    EXPECT_EQ(splitWords("search \"red\\\""), std::nullopt);
    EXPECT_EQ(splitWords("search red\\"), std::nullopt);
}

} // namespace
