// A process that is killed while it caches, again and again: no wrong byte is served afterwards.

#include <random>
#include <thread>

#include "tests/engine/local/OtherProcess.h"
#include "tests/engine/streaming/StreamingFixture.h"

namespace {

using test::same;

class StreamKill : public test::StreamingFixture {};

TEST_F(StreamKill, AtRandomMomentsTwoHundredTimesNoWrongByteIsServed) {
    constexpr int rounds = 200;
    constexpr std::size_t size = 1200 * 1024 + 17;
    std::mt19937 random(20);
    std::uint64_t fromStore = 0;
    for (int round = 0; round < rounds; ++round) {
        // Two names in turn, and now and then a new content under one of them.
        std::string const name = round % 2 == 0 ? "7_main_xl.mp4" : "7_prev_264.mov";
        std::uint64_t const seed = static_cast<std::uint64_t>(round % 2 + round / 10 * 2);
        std::string const bytes = test::mediaBytes(size, seed);
        media.put('/' + name, {bytes, '"' + std::to_string(seed) + '"'});
        std::size_t const before = media.requests().size();
        {
            test::OtherProcess other(
                {"read", media.name(), name, cachePath().string(), std::to_string(round)});
            media.waitForRequests(before + 1);
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 12'000)); // the moment
            other.kill();
            (void)other.wait();
        }
        ASSERT_TRUE(same(readAll(open(name)), bytes)) << "round " << round;
        fromStore += streams().statistics().bytesFromStore;
        restart();
    }
    EXPECT_GT(fromStore, size); // what the killed ones had kept was of use
}

} // namespace
