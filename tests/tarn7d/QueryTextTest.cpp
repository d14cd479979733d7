#include "apps/tarn7d/QueryText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using tarn7d::parseQueryText;
using tarn7d::QueryField;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(QueryText, IsFieldsInTheirOrderAlsoWhereANameComesTwice) {
    EXPECT_THAT(parseQueryText("b=1&a=2&b=3"),
                ElementsAre(QueryField{"b", "1"}, QueryField{"a", "2"}, QueryField{"b", "3"}));
}

TEST(QueryText, HasEscapesInNamesAndValues) {
    EXPECT_THAT(parseQueryText("k%65y=a%26b%3Dc%2B+d%C3%BC%c3%9F"),
                ElementsAre(QueryField{"key", "a&b=c+ d\u00fc\u00df"}));
    EXPECT_THAT(parseQueryText("a=x%00y"), ElementsAre(QueryField{"a", std::string("x\0y", 3)}));
}

TEST(QueryText, KeepsAPercentSignThatBeginsNoEscape) {
    for (std::string const value : {"%", "%4", "100%", "%zz", "%4z", "%z4", "% 41", "%-1", "%u00fc"}) {
        EXPECT_THAT(parseQueryText("a=" + value), ElementsAre(QueryField{"a", value})) << value;
    }
    EXPECT_THAT(parseQueryText("a=%2541"), ElementsAre(QueryField{"a", "%41"}));
}

TEST(QueryText, MayLackValuesAndNames) {
    EXPECT_THAT(parseQueryText(""), IsEmpty());
    EXPECT_THAT(parseQueryText("&&"), IsEmpty());
    EXPECT_THAT(parseQueryText("a&b=&=c&d=e=f&"), ElementsAre(QueryField{"a", ""}, QueryField{"b", ""},
                                                              QueryField{"", "c"}, QueryField{"d", "e=f"}));
}

} // namespace
