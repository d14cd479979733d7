// The operating system's own slot and heap, as the module uses them.

#include "plugin/platform/Platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <thread>

namespace {

class Platform : public testing::Test {
protected:
    Platform() { allocated = platform::allocateSlot(); }
    ~Platform() override { platform::freeSlot(); }
    bool allocated = false;
};

TEST_F(Platform, EachThreadHasItsOwnPointerAndNoneAtFirst) {
    ASSERT_TRUE(allocated);
    EXPECT_EQ(platform::getSlot(), nullptr);
    int mine = 0;
    platform::setSlot(&mine);
    std::thread([] {
        EXPECT_EQ(platform::getSlot(), nullptr);
        int theirs = 0;
        platform::setSlot(&theirs);
        EXPECT_EQ(platform::getSlot(), &theirs);
    }).join();
    EXPECT_EQ(platform::getSlot(), &mine);
}

TEST_F(Platform, ANewSlotIsEmptyAgain) {
    ASSERT_TRUE(allocated);
    int mine = 0;
    platform::setSlot(&mine);
    platform::freeSlot();
    ASSERT_TRUE(platform::allocateSlot());
    EXPECT_EQ(platform::getSlot(), nullptr);
}

TEST_F(Platform, ABlockIsZeroedAlsoWhereAnotherOneWasBefore) {
    constexpr std::size_t bytes = 64;
    for (int round = 0; round < 16; ++round) {
        auto* const block = static_cast<unsigned char*>(platform::allocateLocal(bytes));
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(std::all_of(block, block + bytes, [](unsigned char byte) { return byte == 0; }));
        std::memset(block, 0xa5, bytes);
        platform::freeLocal(block);
    }
}

} // namespace
