#include "apps/tarn7d/ClipQuery.h"

#include <gtest/gtest.h>

#include "apps/tarn7d/Text.h"

namespace {

using tarn7d::ClipQuery;
using tarn7d::parseClipQuery;

TEST(ClipQuery, AnEmptyTextRestrictsNothing) {
    EXPECT_EQ(parseClipQuery("  \t "), ClipQuery());
}

TEST(ClipQuery, WordsBecomeQuotedPrefixes) {
    EXPECT_EQ(parseClipQuery("sunset sea").expression, R"("sunset"* "sea"*)");
}

TEST(ClipQuery, FilterWordsMayStandAnywhere) {
    ClipQuery const query = parseClipQuery("pricelt:5 sunset linesgt:719 sea durationgt:10");
    EXPECT_EQ(query.expression, R"("sunset"* "sea"*)");
    EXPECT_EQ(query.highestPrice_cents, 500);
    EXPECT_EQ(query.linesAbove, 719);
    EXPECT_EQ(query.durationAbove_ms, 10000);
}

TEST(ClipQuery, OfSeveralFiltersTheStrictestHolds) {
    ClipQuery const query = parseClipQuery("pricelt:50 pricelt:10 linesgt:100 linesgt:700");
    EXPECT_EQ(query.highestPrice_cents, 1000);
    EXPECT_EQ(query.linesAbove, 700);
}

TEST(ClipQuery, AFilterWithoutANumberIsAWord) {
    ClipQuery const query = parseClipQuery("pricelt: pricelt:cheap");
    EXPECT_EQ(query.expression, R"("pricelt:"* "pricelt:cheap"*)");
    EXPECT_EQ(query.highestPrice_cents, ClipQuery().highestPrice_cents);
}

TEST(ClipQuery, HugeNumbersAreBounds) {
    ClipQuery const query = parseClipQuery("durationgt:99999999999999999999 linesgt:-99999999999999999999");
    EXPECT_GT(query.durationAbove_ms, std::int64_t{1} << 60);
    EXPECT_EQ(query.linesAbove, -1);
}

TEST(ClipQuery, QuotationMarksAreDoubled) {
    EXPECT_EQ(parseClipQuery(R"(a"b)").expression, R"("a""b"*)");
}

TEST(ClipQuery, WordsOfPunctuationArePassedOver) {
    EXPECT_EQ(parseClipQuery("* - \" ( ^ ' ;").expression, "");
}

TEST(ClipQuery, EastAsianBlanksSeparateWordsAndCharactersFormPhrases) {
    EXPECT_EQ(parseClipQuery("夕日　東京").expression, R"("夕 日"* "東 京"*)");
}

TEST(ClipQuery, WordsBehindTheThirtySecondArePassedOver) {
    std::string text;
    for (int i = 0; i < 100; ++i) {
        text += "w" + std::to_string(i) + " ";
    }
    std::string const expression = parseClipQuery(text + " linesgt:5").expression;
    EXPECT_NE(expression.find("\"w31\""), std::string::npos);
    EXPECT_EQ(expression.find("\"w32\""), std::string::npos);
}

TEST(Text, LinesStayLines) {
    EXPECT_EQ(tarn7d::cleanText("a\r\nb\t\x1b[31m c  "), "a b [31m c");
    EXPECT_EQ(tarn7d::cleanText("a\xff\xc0z"), "a\uFFFD\uFFFDz");
    EXPECT_EQ(tarn7d::cleanText("x\u202Ey"), "x y");
    EXPECT_EQ(tarn7d::cleanText("abcdef", 3), "abc");
}

TEST(Text, TitlesComeFromFileNames) {
    EXPECT_EQ(tarn7d::titleFromFileName("beach_sunset-2.final.mov"), "Beach sunset 2 final");
    EXPECT_EQ(tarn7d::titleFromFileName("---.mov"), "Untitled");
    EXPECT_EQ(tarn7d::titleFromFileName("東京.mov"), "東京");
}

} // namespace
