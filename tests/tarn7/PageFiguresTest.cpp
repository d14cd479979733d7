#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class PageFigures : public Tarn7Test {
protected:
    // "pages/clips" of a page of that size in a reply with this member of the count.
    std::string figuresOf(std::string const& rows, std::uint16_t pageSize) {
        SearchResults const page =
            pageOf(foundItems("[]", rows.empty() ? "" : R"(,"tot_nbr_rows":)" + rows), pageSize);
        return std::to_string(page.pageCount) + "/" + std::to_string(page.totalCount);
    }
};

TEST_F(PageFigures, PagesAreRoundedUp) {
    EXPECT_EQ(figuresOf("0", 25), "0/0");
    EXPECT_EQ(figuresOf("1", 25), "1/1");
    EXPECT_EQ(figuresOf("25", 25), "1/25");
    EXPECT_EQ(figuresOf("26", 25), "2/26");
    EXPECT_EQ(figuresOf("7", 1), "7/7");
}

TEST_F(PageFigures, AtMost275PagesAreOffered) {
    EXPECT_EQ(figuresOf("6875", 25), "275/6875");
    EXPECT_EQ(figuresOf("6876", 25), "275/6875");
    EXPECT_EQ(figuresOf("10000", 25), "275/6875");
    EXPECT_EQ(figuresOf("276", 1), "275/275");
}

TEST_F(PageFigures, AMissingCountIsTheLargestAndIsCappedUpToAPageSizeOf238) {
    EXPECT_EQ(figuresOf("", 25), "275/6875");
    EXPECT_EQ(figuresOf("", 238), "275/65450");
    EXPECT_EQ(figuresOf("", 239), "275/65535");
    EXPECT_EQ(figuresOf("", 240), "274/65535");
    EXPECT_EQ(figuresOf("", 65535), "1/65535");
}

TEST_F(PageFigures, ACountBeyond16BitsWrapsAround) {
    EXPECT_EQ(figuresOf("70000", 25), "179/4464");
    EXPECT_EQ(figuresOf("65536", 25), "0/0");
    EXPECT_EQ(figuresOf("65537", 25), "1/1");
}

TEST_F(PageFigures, AFractionOfAClipIsCutOff) {
    EXPECT_EQ(figuresOf("25.9", 25), "1/25");
    EXPECT_EQ(figuresOf("-0.5", 25), "0/0");
}

TEST_F(PageFigures, ANegativeCountKeepsItsLow16Bits) {
    EXPECT_EQ(figuresOf("-1", 240), "274/65535");
    EXPECT_EQ(figuresOf("-65536", 25), "0/0");
}

TEST_F(PageFigures, ACountThatIsNoNumberIsMissing) {
    EXPECT_EQ(figuresOf(R"("60")", 240), "274/65535");
    EXPECT_EQ(figuresOf("null", 240), "274/65535");
    EXPECT_EQ(figuresOf("[60]", 240), "274/65535");
}

TEST_F(PageFigures, TheFirstOfTwoCountsIsTaken) {
    EXPECT_EQ(figuresOf(R"(50,"tot_nbr_rows":99)", 25), "2/50");
}

TEST_F(PageFigures, CountsBeyondEveryIntegerAreHarmless) {
    EXPECT_EQ(figuresOf("1e30", 240), "274/65535");
    EXPECT_EQ(figuresOf("-1e30", 25), "0/0");
    EXPECT_EQ(figuresOf("1e400", 240), "274/65535");
}

TEST_F(PageFigures, NoNumberOfPagesOfSizeZeroHoldsTheClips) {
    EXPECT_EQ(figuresOf("60", 0), "0/60");
    EXPECT_EQ(figuresOf("0", 0), "0/0");
}

} // namespace
} // namespace tarn7_tests
