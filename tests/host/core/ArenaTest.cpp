#include "host/json/Arena.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/host/core/LimitedMemory.h"

namespace {

TEST(Arena, PiecesAreAlignedAndDoNotOverlap) {
    LimitedMemory memory;
    {
        JSON::Arena arena;
        std::vector<std::span<std::byte>> pieces;
        for (std::size_t size = 1; size < 3000; size = size * 3 / 2 + 1) {
            auto* const piece = static_cast<std::byte*>(arena.allocate(size));
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % alignof(double), 0U);
            pieces.emplace_back(piece, size);
            std::ranges::fill(pieces.back(), static_cast<std::byte>(pieces.size()));
        }
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            EXPECT_TRUE(std::ranges::all_of(pieces[i], [&](std::byte byte) {
                return byte == static_cast<std::byte>(i + 1);
            })) << i;
        }
    }
    EXPECT_EQ(memory.live(), 0);
}

TEST(Arena, ReservedRoomServesTheNextPiecesFromOneAllocation) {
    LimitedMemory memory;
    JSON::Arena arena;
    arena.reserve(10);
    (void)arena.allocate(10);
    EXPECT_EQ(memory.allocations(), 1);
    arena.reserve(4096);
    for (int i = 0; i < 64; ++i) {
        (void)arena.allocate(64);
    }
    EXPECT_EQ(memory.allocations(), 2);
}

TEST(Arena, StoredTextIsACopy) {
    JSON::Arena arena;
    std::string text = "text";
    std::string_view const copy = arena.store(text);
    text = "else";
    EXPECT_EQ(copy, "text");
    EXPECT_TRUE(arena.store("").empty());
}

TEST(Arena, WithoutMemoryItThrowsAndStaysUsable) {
    LimitedMemory memory;
    JSON::Arena arena;
    std::string_view const text = arena.store("text");
    memory.allow(0);
    EXPECT_THROW((void)arena.allocate(100000), std::bad_alloc);
    EXPECT_THROW(arena.reserve(100000), std::bad_alloc);
    EXPECT_EQ(text, "text");
    EXPECT_EQ(arena.store("more"), "more") << "the piece at hand still has room";
}

TEST(Arena, MovingTakesThePieces) {
    LimitedMemory memory;
    {
        JSON::Arena first;
        std::string_view const text = first.store("text");
        JSON::Arena second(std::move(first));
        EXPECT_EQ(text, "text");
        JSON::Arena third;
        (void)third.store("other");
        third = std::move(second);
        EXPECT_EQ(text, "text");
        EXPECT_EQ(first.store("usable"), "usable"); // NOLINT(bugprone-use-after-move)
    }
    EXPECT_EQ(memory.live(), 0);
}

} // namespace
