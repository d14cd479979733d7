// What service text and pictures become before they reach a terminal.

#include <gtest/gtest.h>

#include "apps/zq/RichText.h"
#include "apps/zq/terminal/Picture.h"
#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/Table.h"
#include "host/engine/pictures/HostImage.h"

namespace {

using zq::displayWidth;
using zq::fitToWidth;
using zq::plainText;
using zq::Screen;
using zq::Table;

TEST(PlainText, LosesEscapeSequencesAndControlCharacters) {
    EXPECT_EQ(plainText("a\033[31mred\033[0m"), "a[31mred[0m");
    EXPECT_EQ(plainText("bell\a null \0x"), "bell null ");
    EXPECT_EQ(plainText(std::string_view("a\0b\x7f", 4)), "ab");
    EXPECT_EQ(plainText("\u009b31m \u0090q"), "31m q") << "the controls of eight bits";
}

TEST(PlainText, StaysOnOneLine) {
    EXPECT_EQ(plainText("a\nb\r\tc"), "a b  c");
    EXPECT_EQ(plainText("a\u2028b\u2029c\u0085d"), "a b c d");
}

TEST(PlainText, LosesWhatTurnsTheDirectionOrHides) {
    EXPECT_EQ(plainText("gpj.\u202Eexe"), "gpj.exe");
    EXPECT_EQ(plainText("\u2066a\u2069\u200f\u061c\u200b\ufeffb"), "ab");
}

TEST(PlainText, KeepsLettersOfAllScriptsAndJoinedEmoji) {
    std::string const text = "Zoë 東京 غروب 👩\u200d🚀";
    EXPECT_EQ(plainText(text), text);
}

TEST(PlainText, ReplacesMalformedBytes) {
    EXPECT_EQ(plainText("a\xff\xc3z"), "a\uFFFD\uFFFDz");
    EXPECT_EQ(plainText("\xed\xa0\x80").find('\xed'), std::string::npos) << "a surrogate is no character";
}

TEST(DisplayWidth, CountsColumnsAndNotBytes) {
    EXPECT_EQ(displayWidth("plain"), 5);
    EXPECT_EQ(displayWidth("東京"), 4);
    EXPECT_EQ(displayWidth("🌅"), 2);
    EXPECT_EQ(displayWidth("e\u0301"), 1) << "a combining accent takes no column";
    EXPECT_EQ(displayWidth("غروب"), 4);
}

TEST(DisplayWidth, FittingCutsBetweenCharacters) {
    EXPECT_EQ(fitToWidth("plain", 5), "plain");
    EXPECT_EQ(fitToWidth("plain", 4), "pla…");
    EXPECT_EQ(fitToWidth("東京の夕日", 6), "東京…");
    EXPECT_EQ(fitToWidth("plain", 0), "");
}

Table exampleTable() {
    Table table({{"Id", Table::Align::right}, {"Name", Table::Align::left, true}, {"Price"}});
    table.addRow({"7", "東京の夕日", "$5"});
    table.addRow({"1234", "Zoë", "$10"});
    return table;
}

TEST(Table, AlignsWideAndNarrowText) {
    EXPECT_EQ(exampleTable().render(Screen{}), "  Id  Name        Price\n"
                                               "   7  東京の夕日  $5\n"
                                               "1234  Zoë         $10\n");
}

TEST(Table, ShrinksTheColumnThatMayToTheScreen) {
    Table table({{"Id"}, {"Name", Table::Align::left, true}});
    table.addRow({"1", "a long name that does not fit"});
    EXPECT_EQ(table.render({.isTerminal = true, .columns = 16}), "Id  Name\n"
                                                                 "1   a long name…\n");
}

TEST(Table, MakesItsCellsPlain) {
    Table table({{"Na\033me"}});
    table.addRow({"a\033]0;title\a\nb"});
    EXPECT_EQ(table.render({}), "Name\na]0;title b\n");
}

TEST(Table, KeepsTextFromRightToLeftInItsCellOnATerminal) {
    Table table({{"A"}, {"B"}});
    table.addRow({"غروب", "1"});
    EXPECT_EQ(table.render({.isTerminal = true}), "A     B\n\u2068غروب\u2069  1\n");
    EXPECT_EQ(table.render({}), "A     B\nغروب  1\n");
}

TEST(Table, ColoursItsHeaderOnlyWhereColoursAre) {
    Table const table({{"A"}});
    EXPECT_EQ(table.render({}), "A\n");
    EXPECT_EQ(table.render({.isTerminal = true, .hasColour = true}), "\033[1mA\033[0m\n");
}

TEST(Picture, ShowsTwoPixelsACharacter) {
    engine::HostImage const image(1, 2, {255, 0, 0, 255, 0, 0, 255, 255});
    EXPECT_EQ(zq::halfBlockPicture(image, 10), "\033[38;2;255;0;0m\033[48;2;0;0;255m▀\033[0m\n");
}

TEST(Picture, IsScaledToTheColumnsByMeans) {
    engine::HostImage const image(2, 1, {100, 0, 0, 255, 200, 0, 0, 255});
    EXPECT_EQ(zq::halfBlockPicture(image, 1), "\033[38;2;150;0;0m\033[49m▀\033[0m\n");
}

TEST(Picture, WithoutPixelsIsEmpty) {
    EXPECT_EQ(zq::halfBlockPicture(engine::HostImage(0, 0, {}), 10), "");
}

TEST(RichText, LosesItsTagsAndNamedCharacters) {
    EXPECT_EQ(zq::plainFromRich("<p>a &amp;lt; <a href=\"x\">b</a> &lt;c&gt;</p>"), "a &lt; b <c>");
    EXPECT_EQ(zq::plainFromRich("open <a href="), "open ");
    EXPECT_EQ(zq::plainFromRich("R&D & more"), "R&D & more");
}

} // namespace
