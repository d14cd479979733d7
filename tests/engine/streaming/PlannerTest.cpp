// What is asked for next: the rules alone, without a network.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

#include "host/engine/streaming/RangeAnswer.h"
#include "host/engine/streaming/RangePlanner.h"
#include "host/engine/streaming/ReadAhead.h"
#include "host/engine/streaming/indexInFront.h"

namespace {

using engine::ByteRange;
using engine::planRanges;
using engine::RangePlan;
using engine::ReadNeed;
using engine::RunningRange;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t kib = 1024;
constexpr std::uint64_t mib = 1024 * kib;
constexpr std::uint64_t total = 100 * mib;

class Planner : public testing::Test {
protected:
    RangePlan plan(std::size_t room = 2) {
        return planRanges(
            total, running, needs,
            [this](std::uint64_t first, std::size_t count) {
                std::vector<bool> there(count);
                for (std::size_t i = 0; i < count; ++i) {
                    there[i] = present.contains(first + i);
                }
                return there;
            },
            room);
    }
    std::vector<ByteRange> starts(std::size_t room = 2) {
        std::vector<ByteRange> ranges;
        for (engine::PlannedRange const& planned : plan(room).start) {
            ranges.push_back(planned.range);
        }
        return ranges;
    }
    static ReadNeed waiting(std::uint64_t begin, std::uint64_t size) {
        return {{begin, begin + size}, begin, 0, 0};
    }
    static ReadNeed goingOn(std::uint64_t position, std::uint64_t piece) {
        return {{}, position, piece, 2 * piece};
    }

    std::vector<RunningRange> running;
    std::vector<ReadNeed> needs;
    std::set<std::uint64_t> present;
};

TEST_F(Planner, NobodyWaitsNothingIsAsked) {
    EXPECT_THAT(starts(), IsEmpty());
    needs = {ReadNeed{}};
    EXPECT_THAT(starts(), IsEmpty());
}

TEST_F(Planner, AWantIsAskedForInWholeBlocks) {
    needs = {waiting(mib + 10, 100)};
    EXPECT_THAT(starts(), ElementsAre(ByteRange{mib, mib + 32 * kib}));
    needs = {waiting(total - 5, 5)};
    EXPECT_THAT(starts(), ElementsAre(ByteRange{total - 32 * kib, total}));
}

TEST_F(Planner, AByteNotFarAheadOfARunningRangeIsWaitedFor) {
    running = {{{mib, 2 * mib}, false}};
    needs = {waiting(mib + 128 * kib, 10)};
    EXPECT_THAT(starts(), IsEmpty());
    EXPECT_THAT(plan().abort, IsEmpty());
}

TEST_F(Planner, AByteFarAheadGetsARequestOfItsOwn) {
    running = {{{mib, mib + 250 * kib}, false}};
    needs = {waiting(mib + 160 * kib, 10)};
    EXPECT_THAT(starts(), ElementsAre(ByteRange{mib + 160 * kib, mib + 192 * kib}));
}

TEST_F(Planner, SmallGapsAreMergedAndLargeOnesAreNot) {
    needs = {waiting(0, 320 * kib)};
    present = {2, 3};
    EXPECT_THAT(starts(), ElementsAre(ByteRange{0, 320 * kib}));
    present = {2, 3, 4};
    EXPECT_THAT(starts(), ElementsAre(ByteRange{0, 64 * kib}));
}

TEST_F(Planner, PresentBlocksAreClippedOut) {
    needs = {waiting(0, 128 * kib)};
    present = {0, 3};
    needs[0].want.begin = 32 * kib;
    EXPECT_THAT(starts(), ElementsAre(ByteRange{32 * kib, 96 * kib}));
}

TEST_F(Planner, AfterASeekARangeWithLittleToGoFinishesAndOthersAreLeft) {
    running = {{{0, 256 * kib}, false}, {{10 * mib, 10 * mib + 257 * kib}, false}};
    needs = {waiting(50 * mib, 10)};
    RangePlan const after = plan(0);
    EXPECT_THAT(after.abort, ElementsAre(1));
    ASSERT_EQ(after.start.size(), 1u);
    EXPECT_EQ(after.start[0].range.begin, 50 * mib);
}

TEST_F(Planner, TheFirstAnswersAreKeptUnlessSomebodyWaitsForTheirPlace) {
    running = {{{0, 512 * kib}, true}, {{total - 64 * kib, total}, true}};
    needs = {ReadNeed{}};
    EXPECT_THAT(plan(0).abort, IsEmpty());
    needs = {waiting(50 * mib, 10)};
    EXPECT_THAT(plan(0).abort, ElementsAre(0));
}

TEST_F(Planner, NoRequestBeginsWithoutAPlace) {
    running = {{{0, 100 * kib}, false}, {{mib, mib + 100 * kib}, false}};
    needs = {waiting(50 * mib, 10)};
    RangePlan const full = plan(0);
    EXPECT_THAT(full.start, IsEmpty());
    EXPECT_TRUE(full.starved);
}

TEST_F(Planner, TwoReadersCloseTogetherShareARequest) {
    needs = {waiting(0, 10), waiting(96 * kib, 10), waiting(10 * mib, 10)};
    EXPECT_THAT(starts(), ElementsAre(ByteRange{0, 128 * kib}, ByteRange{10 * mib, 10 * mib + 32 * kib}));
}

TEST_F(Planner, WhatComesNextIsAskedForAlongWithWhatIsWaitedFor) {
    needs = {{{mib, mib + 10}, mib, 256 * kib, 512 * kib}};
    EXPECT_THAT(starts(), ElementsAre(ByteRange{mib, mib + 256 * kib}));
}

TEST_F(Planner, APieceAheadStartsWhenHalfAPieceIsUnderWay) {
    needs = {goingOn(0, mib)};
    running = {{{100 * kib, 100 * kib + mib}, false}};
    EXPECT_THAT(starts(1), IsEmpty());
    running = {{{mib, mib + mib / 2}, false}};
    for (std::uint64_t block = 0; block < 32; ++block) {
        present.insert(block);
    }
    needs = {goingOn(mib / 2, mib)};
    EXPECT_THAT(starts(1), ElementsAre(ByteRange{mib + mib / 2, mib / 2 + 2 * mib}));
}

TEST_F(Planner, NothingIsAskedAheadWhereEverythingIsThere) {
    for (std::uint64_t block = 0; block < 64; ++block) {
        present.insert(block);
    }
    needs = {goingOn(0, mib)};
    EXPECT_THAT(starts(), IsEmpty());
}

TEST(ReadAhead, BeginsWithTheSecondConsecutiveReadThatMisses) {
    engine::ReadAhead ahead;
    engine::ReadAhead::Time const now;
    ahead.begin({0, 1000}, now);
    ahead.miss();
    EXPECT_EQ(ahead.piece_bytes(), 0u);
    ahead.begin({1000, 2000}, now);
    EXPECT_EQ(ahead.piece_bytes(), 0u);
    ahead.miss();
    EXPECT_EQ(ahead.piece_bytes(), 256 * kib);
}

TEST(ReadAhead, DoublesUpToItsLargestAndEndsWithASeek) {
    engine::ReadAhead ahead;
    engine::ReadAhead::Time now;
    std::uint64_t place = 0;
    std::vector<std::uint64_t> pieces;
    for (int i = 0; i < 6; ++i) {
        ahead.begin({place, place + 1000}, now);
        ahead.miss();
        pieces.push_back(ahead.piece_bytes());
        ahead.issued(place + 10 * mib);
        place += 1000;
        now += std::chrono::microseconds(10);
    }
    EXPECT_THAT(pieces, ElementsAre(0, 512 * kib, mib, 2 * mib, 2 * mib, 2 * mib));
    ahead.begin({50 * mib, 50 * mib + 10}, now);
    ahead.miss();
    EXPECT_EQ(ahead.piece_bytes(), 0u);
}

TEST(ReadAhead, ReachesTwoMebibytesAtMostForASlowReader) {
    engine::ReadAhead ahead;
    engine::ReadAhead::Time now;
    for (std::uint64_t place = 0; place < 20; ++place) {
        ahead.begin({place * 1000, place * 1000 + 1000}, now);
        ahead.miss();
        ahead.issued((place + 1) * 1000);
        now += std::chrono::seconds(1);
    }
    EXPECT_EQ(ahead.window_bytes(), 2 * mib);
}

TEST(ReadAhead, IsNothingWhileEveryReadHits) {
    engine::ReadAhead ahead;
    for (std::uint64_t place = 0; place < 20; ++place) {
        ahead.begin({place * 1000, place * 1000 + 1000}, {});
        EXPECT_EQ(ahead.piece_bytes(), 0u);
    }
}

TEST(ContentRange, ValuesAreReadStrictly) {
    auto const whole = engine::parseContentRange("bytes 0-9/10");
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->range, (ByteRange{0, 10}));
    EXPECT_EQ(whole->total, 10u);
    EXPECT_FALSE(engine::parseContentRange("bytes 5-9/*")->total);
    EXPECT_EQ(engine::parseContentRange("bytes */0")->total, 0u);
    for (char const* const wrong :
         {"", "bytes", "bytes 0-9", "bytes 9-0/10", "bytes 0-10/10", "bytes */*", "bytes -1-5/10",
          "bytes 0-9/10 ", "items 0-9/10", "bytes 0-99999999999999999999/100", "bytes 0x0-9/10"}) {
        EXPECT_FALSE(engine::parseContentRange(wrong)) << wrong;
    }
}

TEST(Validator, AStrongTagComesFirstThenTheDateThenAWeakTag) {
    using Kind = engine::Validator::Kind;
    EXPECT_EQ(engine::validatorOf("\"a\"", "date").kind, Kind::strongETag);
    EXPECT_EQ(engine::validatorOf("W/\"a\"", "date").kind, Kind::lastModified);
    EXPECT_EQ(engine::validatorOf("W/\"a\"", "").kind, Kind::weakETag);
    EXPECT_EQ(engine::validatorOf("", "").kind, Kind::none);
    EXPECT_EQ(engine::validatorOf("\"" + std::string(5000, 'x') + "\"", "").kind, Kind::none);
    EXPECT_EQ(engine::validatorOf("\"a\nb\"", "").kind, Kind::none);
}

TEST(IndexInFront, IsSeenByTheOrderOfTheBoxes) {
    std::string const type("\0\0\0\x10"
                           "ftypisom\0\0\0\0",
                           16);
    std::string const index("\0\0\1\0"
                            "moov"
                            "\0\0\0\0\0\0\0\0",
                            16);
    std::string const media("\0\0\1\0"
                            "mdat"
                            "\0\0\0\0\0\0\0\0",
                            16);
    EXPECT_TRUE(engine::indexStandsInFront(type + index));
    EXPECT_FALSE(engine::indexStandsInFront(type + media + index));
    EXPECT_FALSE(engine::indexStandsInFront(""));
    EXPECT_FALSE(engine::indexStandsInFront(std::string(100, '\0')));
}

} // namespace
