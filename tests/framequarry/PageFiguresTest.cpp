#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

class PageFigures : public FrameQuarryTest {
protected:
    // "pages/clips" of a page of that size in an answer with this member of the count.
    std::string figuresOf(std::string const& count, std::uint16_t pageSize) {
        SearchResults const page =
            pageOf(answerOf("[]", count.empty() ? "" : R"(,"totalSearchResults":)" + count), pageSize);
        return std::to_string(page.pageCount) + "/" + std::to_string(page.totalCount);
    }
};

TEST_F(PageFigures, PagesAreRoundedUp) {
    EXPECT_EQ(figuresOf("0", 25), "0/0");
    EXPECT_EQ(figuresOf("1", 25), "1/1");
    EXPECT_EQ(figuresOf("25", 25), "1/25");
    EXPECT_EQ(figuresOf("26", 25), "2/26");
    EXPECT_EQ(figuresOf("95", 10), "10/95");
}

TEST_F(PageFigures, AnyNumberOfPagesIsOffered) {
    EXPECT_EQ(figuresOf("10000", 25), "400/10000");
    EXPECT_EQ(figuresOf("65535", 1), "65535/65535");
}

TEST_F(PageFigures, AMissingCountIsTheLargest) {
    EXPECT_EQ(figuresOf("", 25), "2622/65535");
    EXPECT_EQ(figuresOf("", 65535), "1/65535");
}

TEST_F(PageFigures, OnlyTheLow16BitsOfACountAreKept) {
    EXPECT_EQ(figuresOf("65536", 25), "0/0");
    EXPECT_EQ(figuresOf("65537", 25), "1/1");
    EXPECT_EQ(figuresOf("70000", 25), "179/4464");
    EXPECT_EQ(figuresOf("4295032832", 25), "0/0");
}

TEST_F(PageFigures, AFractionOfAClipIsCutOff) {
    EXPECT_EQ(figuresOf("25.9", 25), "1/25");
    EXPECT_EQ(figuresOf("-0.5", 25), "0/0");
}

TEST_F(PageFigures, ANegativeCountKeepsItsLow16Bits) {
    EXPECT_EQ(figuresOf("-1", 25), "2622/65535");
    EXPECT_EQ(figuresOf("-65536", 25), "0/0");
    EXPECT_EQ(figuresOf("-70000", 25), "2443/61072");
}

TEST_F(PageFigures, ACountThatIsNoNumberIsMissing) {
    for (char const* const count : {R"("60")", "null", "[60]", R"({"n":60})", "true"}) {
        EXPECT_EQ(figuresOf(count, 25), "2622/65535") << count;
    }
}

TEST_F(PageFigures, TheFirstOfTwoCountsIsTaken) {
    EXPECT_EQ(figuresOf(R"(50,"totalSearchResults":99)", 25), "2/50");
    EXPECT_EQ(figuresOf(R"("50","totalSearchResults":99)", 25), "4/99");
}

TEST_F(PageFigures, CountsBeyondEveryIntegerAreHarmless) {
    EXPECT_EQ(figuresOf("1e30", 25), "2622/65535");
    EXPECT_EQ(figuresOf("-1e30", 25), "0/0");
    EXPECT_EQ(figuresOf("1e400", 25), "2622/65535");
}

TEST_F(PageFigures, NoNumberOfPagesOfSizeZeroHoldsTheClips) {
    EXPECT_EQ(figuresOf("60", 0), "0/60");
    EXPECT_EQ(figuresOf("0", 0), "0/0");
    EXPECT_EQ(figuresOf("", 0), "0/65535");
}

TEST_F(PageFigures, TheClipsOfThePageAreNotCounted) {
    SearchResults const page =
        pageOf(answerOf("[" + itemWith("") + "," + itemWith("") + "]", R"(,"totalSearchResults":1)"), 1);
    EXPECT_EQ(page.assets.size(), 2U);
    EXPECT_EQ(page.totalCount, 1);
    EXPECT_EQ(page.pageCount, 1);
}

} // namespace
} // namespace framequarry_tests
