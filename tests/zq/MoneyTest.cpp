// Prices, what a sequence costs, and its table for a spreadsheet.

#include <gtest/gtest.h>

#include "apps/zq/Csv.h"
#include "apps/zq/Money.h"
#include "apps/zq/UsageReport.h"

namespace {

using zq::csvCell;
using zq::Ownership;
using zq::parsePrice;
using zq::Price;

TEST(Price, IsReadWithItsCurrency) {
    EXPECT_EQ(parsePrice("$5"), (Price{"$", 500}));
    EXPECT_EQ(parsePrice("$19.99"), (Price{"$", 1999}));
    EXPECT_EQ(parsePrice("4.9"), (Price{"", 490}));
    EXPECT_EQ(parsePrice("€0.05"), (Price{"€", 5}));
    EXPECT_EQ(parsePrice("$0"), (Price{"$", 0}));
}

TEST(Price, WithAPartOfACentRoundsUp) {
    EXPECT_EQ(parsePrice("$1.001"), (Price{"$", 101}));
    EXPECT_EQ(parsePrice("$1.000"), (Price{"$", 100}));
}

TEST(Price, IsNoOtherText) {
    for (char const* const text : {"", "$", "free", "$5 or more", "$5.", "5.x", "1.2.3", "-5", "$-5", ".5",
                                   "$1000000000", "$5\n", "99999999999999999999999"}) {
        EXPECT_EQ(parsePrice(text), std::nullopt) << text;
    }
}

TEST(Price, IsWrittenAsTheServicesWriteIt) {
    EXPECT_EQ(zq::priceText({"$", 500}), "$5");
    EXPECT_EQ(zq::priceText({"$", 1990}), "$19.90");
    EXPECT_EQ(zq::priceText({"$", 5}), "$0.05");
}

TEST(Csv, QuotesWhatHoldsACommaOrAQuote) {
    EXPECT_EQ(csvCell("plain"), "plain");
    EXPECT_EQ(csvCell(""), "");
    EXPECT_EQ(csvCell("a,b"), "\"a,b\"");
    EXPECT_EQ(csvCell("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(csvCell(" padded "), "\" padded \"");
}

TEST(Csv, NeverHoldsAFormulaOrASecondLine) {
    EXPECT_EQ(csvCell("=1+1"), "'=1+1");
    EXPECT_EQ(csvCell("+1"), "'+1");
    EXPECT_EQ(csvCell("-1"), "'-1");
    EXPECT_EQ(csvCell("@SUM(A1)"), "'@SUM(A1)");
    EXPECT_EQ(csvCell("＝1"), "'＝1");
    EXPECT_EQ(csvCell("=HYPERLINK(\"http://x\",\"y\")"), "\"'=HYPERLINK(\"\"http://x\"\",\"\"y\"\")\"");
    EXPECT_EQ(csvCell("\t=1"), "' =1") << "a tab before a formula becomes a blank, and does not hide it";
    EXPECT_EQ(csvCell("a\r\nb"), "a  b");
}

TEST(Csv, EndsARecordWithBothCharacters) {
    std::string const cells[] = {"1", "a,b", ""};
    EXPECT_EQ(zq::csvRecord(cells), "1,\"a,b\",\r\n");
}

// A sequence of clips by number and price.
class Usage : public testing::Test {
protected:
    void use(char const* clip, char const* price) {
        zq::SequencePiece piece;
        piece.clipId = clip;
        piece.edit.logAttributes.add(LogAttribute(LogAttribute::ePrice), NarrowString(price));
        view_.pieces.push_back(piece);
    }
    [[nodiscard]] zq::UsageReport report(std::optional<std::set<std::string>> const& owned) const {
        return zq::reportUsage(view_, owned);
    }

    zq::SequenceView view_;
};

TEST_F(Usage, CountsAClipThatIsUsedTwiceOnce) {
    use("7", "$5");
    use("8", "$19.99");
    use("7", "$5");
    zq::UsageReport const found = report(std::set<std::string>());
    EXPECT_EQ(found.uses.size(), 3U);
    EXPECT_EQ(found.clipsToBuy, 2U);
    EXPECT_EQ(found.total, (Price{"$", 2499}));
    EXPECT_EQ(zq::totalInWords(found), "to buy: 2 clips, $24.99");
}

TEST_F(Usage, LeavesOutWhatIsOwned) {
    use("7", "$5");
    use("8", "$10");
    zq::UsageReport const found = report(std::set<std::string>{"7"});
    EXPECT_EQ(found.uses[0].ownership, Ownership::owned);
    EXPECT_EQ(found.uses[1].ownership, Ownership::notOwned);
    EXPECT_EQ(found.total, (Price{"$", 1000}));
    EXPECT_EQ(zq::totalInWords(report(std::set<std::string>{"7", "8"})), "everything is owned");
}

TEST_F(Usage, SaysSoWhereNobodyKnowsWhatIsOwned) {
    use("7", "$5");
    zq::UsageReport const found = report(std::nullopt);
    EXPECT_EQ(found.uses[0].ownership, Ownership::unknown);
    EXPECT_EQ(found.total, (Price{"$", 500}));
    EXPECT_EQ(zq::totalInWords(found), "to buy: 1 clip, $5; less what is owned, which a sign-in tells");
}

TEST_F(Usage, PassesOverClipsThatAreNotOfTheRepository) {
    use("", "$5");
    zq::UsageReport const found = report(std::set<std::string>());
    EXPECT_TRUE(found.uses.empty());
    EXPECT_EQ(zq::totalInWords(found), "no clip of this repository is used");
}

TEST_F(Usage, TellsOfPricesThatItCannotAdd) {
    use("7", "$5");
    use("8", "on request");
    zq::UsageReport const partly = report(std::set<std::string>());
    EXPECT_EQ(partly.clipsWithoutPrice, 1U);
    EXPECT_EQ(zq::totalInWords(partly), "to buy: 2 clips, $5 and 1 of unknown price");
    use("9", "€7");
    zq::UsageReport const mixed = report(std::set<std::string>());
    EXPECT_EQ(mixed.total, std::nullopt);
    EXPECT_EQ(zq::totalInWords(mixed), "to buy: 3 clips, in several currencies and 1 of unknown price");
}

} // namespace
