// The one line that tells how far something has come.

#include <gtest/gtest.h>

#include <limits>

#include "apps/zq/terminal/PlainText.h"
#include "apps/zq/terminal/ProgressBar.h"

namespace {

using zq::displayWidth;
using zq::progressLine;

TEST(ProgressLine, HasALabelABarAndPercent) {
    EXPECT_EQ(progressLine("red car", 0.5, 38), "red car [#####.....]  50%");
    EXPECT_EQ(progressLine("red car", 0.0, 38), "red car [..........]   0%");
    EXPECT_EQ(progressLine("red car", 1.0, 38), "red car [##########] 100%");
}

TEST(ProgressLine, WithoutAFractionIsItsLabel) {
    EXPECT_EQ(progressLine("waiting", std::nullopt, 40), "waiting");
}

TEST(ProgressLine, NeverFillsTheScreen) {
    std::string const label = "a clip with a very long name indeed, 東京の夕日 and more";
    for (int columns = 2; columns <= 120; ++columns) {
        EXPECT_LT(displayWidth(progressLine(label, 0.7, columns)), std::max(columns, 7)) << columns;
        EXPECT_LT(displayWidth(progressLine(label, std::nullopt, columns)), columns) << columns;
    }
}

TEST(ProgressLine, TakesOnlyFractionsThatAreSome) {
    EXPECT_EQ(progressLine("a", 7.0, 40), progressLine("a", 1.0, 40));
    EXPECT_EQ(progressLine("a", -1.0, 40), progressLine("a", 0.0, 40));
    EXPECT_EQ(progressLine("a", std::numeric_limits<double>::quiet_NaN(), 40), progressLine("a", 0.0, 40));
}

TEST(ProgressLine, LosesWhatATerminalWouldObey) {
    EXPECT_EQ(progressLine("a\033[2J\r\nb", 0.5, 38), "a[2J  b [#####.....]  50%");
}

} // namespace
