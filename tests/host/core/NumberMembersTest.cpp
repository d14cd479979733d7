#include "host/json/NumberMembers.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "host/json/Tree.h"

namespace {

// An element whose only number has the key "n".
Zq::Ptr<JSON::Tree> holding(double value) {
    Zq::Ptr<JSON::Tree> tree = Zq::makeShared<JSON::Tree>();
    tree->addNumber(tree->root(), "n", value);
    return tree;
}

std::int32_t cut(double value) {
    return JSON::getInt32(holding(value)->root(), "n");
}

TEST(NumberMembers, TheFirstOfAnExactNameIsFound) {
    Zq::Ptr<JSON::Tree> const tree = Zq::makeShared<JSON::Tree>();
    tree->addNumber(tree->root(), "N", 1);
    tree->addNumber(tree->root(), "nn", 2);
    tree->addNumber(tree->root(), "n", 12.48);
    tree->addNumber(tree->root(), "n", 4);
    EXPECT_EQ(JSON::findNumber(tree->root(), "n"), 12.48);
    EXPECT_EQ(JSON::getInt32(tree->root(), "n"), 12);
    EXPECT_EQ(JSON::findNumber(tree->root(), "nn"), 2.0);
    EXPECT_EQ(JSON::findNumber(tree->root(), ""), std::nullopt);
}

TEST(NumberMembers, TextsFlagsAndChildrenAreNone) {
    Zq::Ptr<JSON::Tree> const tree = Zq::makeShared<JSON::Tree>();
    tree->addString(tree->root(), "n", "7");
    tree->addFlag(tree->root(), "n", true);
    tree->addNumber(tree->addChild(tree->root(), "n"), "n", 7);
    EXPECT_EQ(JSON::findNumber(tree->root(), "n"), std::nullopt);
    EXPECT_EQ(JSON::getInt32(tree->root(), "n"), -1);
    EXPECT_EQ(JSON::getInt32(tree->root(), "n", 5), 5);
}

TEST(NumberMembers, AnIntegerIsCutTowardZeroAndToItsLow32Bits) {
    EXPECT_EQ(cut(7.9), 7);
    EXPECT_EQ(cut(-7.9), -7);
    EXPECT_EQ(cut(0.9), 0);
    EXPECT_EQ(cut(2147483648.0), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(cut(4294967303.0), 7);
    EXPECT_EQ(cut(1e99), -1);
    EXPECT_EQ(cut(-1e99), 0);
}

TEST(NumberMembers, ANumberThatIsThereIsNeverTheOtherValue) {
    EXPECT_EQ(JSON::getInt32(holding(-1)->root(), "n", 5), -1);
    EXPECT_EQ(JSON::getInt32(holding(0)->root(), "n", 5), 0);
}

} // namespace
