// Several readers of several files at once.

#include <random>
#include <thread>

#include "tests/engine/streaming/StreamingFixture.h"

namespace {

using test::same;

class StreamParallel : public test::StreamingFixture {
protected:
    void runThreads(int count, std::function<void(int)> const& work) {
        std::vector<std::thread> all;
        for (int thread = 0; thread < count; ++thread) {
            all.emplace_back(work, thread);
        }
        for (std::thread& thread : all) {
            thread.join();
        }
    }
};

TEST_F(StreamParallel, EightReadersAtRandomPlacesGetEveryByteRight) {
    std::string const bytes = test::mediaBytes(6 * mib + 321, 11);
    media.put("/clip.mov", {bytes});
    (void)streams();
    (void)network();
    std::atomic<int> right{0};
    constexpr int rounds = 25;
    runThreads(8, [&](int thread) {
        std::mt19937 random(static_cast<unsigned>(thread));
        auto const file = open("clip.mov", thread < 6 ? "clip.partial" : "");
        for (int round = 0; round < rounds; ++round) {
            std::size_t const place = random() % bytes.size();
            std::size_t const size = std::min<std::size_t>(random() % 150'000 + 1, bytes.size() - place);
            right += same(read(file, place, size), bytes.substr(place, size)) ? 1 : 0;
        }
    });
    EXPECT_EQ(right, 8 * rounds);
    // Two of the shared file, and two each of those without a store, but four to one server.
    restart();
    EXPECT_TRUE(same(readAll(open("clip.mov")), bytes));
}

TEST_F(StreamParallel, FilesAreOpenedAndLetGoWhileOthersRead) {
    std::string const one = test::mediaBytes(mib, 12);
    std::string const two = test::mediaBytes(mib, 13);
    media.put("/one.mov", {one});
    media.put("/two.mov", {two});
    (void)streams();
    (void)network();
    std::atomic<int> right{0};
    constexpr int rounds = 15;
    // Both names go to the same store.
    runThreads(6, [&](int thread) {
        std::string const& bytes = thread % 2 == 0 ? one : two;
        for (int round = 0; round < rounds; ++round) {
            auto const file = open(thread % 2 == 0 ? "one.mov" : "two.mov");
            std::size_t const place = static_cast<std::size_t>(thread * rounds + round) * 9'000;
            right += same(read(file, place, 50'000), bytes.substr(place, 50'000)) ? 1 : 0;
        }
    });
    EXPECT_EQ(right, 6 * rounds);
}

TEST_F(StreamParallel, NoMoreThanFourRequestsToAServerAndTwoOfAFileRunAtOnce) {
    constexpr int files = 4;
    std::string const bytes = test::mediaBytes(2 * mib, 14);
    auto const running = std::make_shared<std::atomic<int>>(0);
    auto const most = std::make_shared<std::atomic<int>>(0);
    for (int i = 0; i < files; ++i) {
        media.put("/" + std::to_string(i) + ".mov", {bytes});
    }
    media.setFault([this, running, most](test::RawConnection& connection, test::RawRequest const& request) {
        int const now = ++*running;
        for (int seen = *most; seen < now && !most->compare_exchange_weak(seen, now);) {
        }
        media.answer(connection, request);
        --*running;
        return true;
    });
    (void)streams();
    (void)network();
    std::atomic<int> right{0};
    runThreads(files, [&](int thread) {
        std::string const name = std::to_string(thread);
        right += same(readAll(open(name + ".mov", name + ".partial")), bytes) ? 1 : 0;
    });
    EXPECT_EQ(right, files);
    EXPECT_LE(*most, 4);
}

TEST_F(StreamParallel, ReadersOfAFileThatChangesFailOrGetOneOfTheTwoWhole) {
    std::string const one = test::mediaBytes(3 * mib, 15);
    std::string const two = test::mediaBytes(3 * mib, 16);
    media.put("/clip.mov", {one, "\"one\""});
    (void)streams();
    (void)network();
    std::atomic<int> wrong{0};
    std::atomic<int> begun{0};
    runThreads(5, [&](int thread) {
        if (thread == 4) {
            for (int seen = begun; seen < 4; seen = begun) {
                begun.wait(seen);
            }
            media.put("/clip.mov", {two, "\"two\""});
            return;
        }
        for (int round = 0; round < 3; ++round) {
            auto const file = open("clip.mov");
            (void)file->getSize();
            ++begun;
            begun.notify_all();
            std::string const got = readAll(file);
            wrong += got == one || got == two || got == "(failed)" ? 0 : 1;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(same(readAll(open("clip.mov")), two));
}

} // namespace
