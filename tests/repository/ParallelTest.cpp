// The parts of the base that several threads use at once.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <latch>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

// Runs the work on so many threads, all let off at once, and waits for their end.
void onThreads(int count, std::function<void(int)> const& work) {
    std::latch start(count);
    std::vector<std::jthread> threads;
    for (int number = 0; number < count; ++number) {
        threads.emplace_back([&start, &work, number] {
            start.arrive_and_wait();
            work(number);
        });
    }
}

SearchResultCache::Key keyOf(std::uint16_t page) {
    SearchResultCache::Key key;
    key.text = L"sea";
    key.page = page;
    key.pageSize = 25;
    return key;
}

TEST(ParallelSearchResultCache, AFoundPageIsAlwaysThatOfItsKey) {
    SearchResultCache cache(16);
    std::atomic<int> wrong = 0;
    onThreads(4, [&](int thread) {
        for (int round = 0; round < 2000; ++round) {
            auto const page = static_cast<std::uint16_t>((round * 7 + thread) % 40);
            SearchResults results = pageOf(L"sea", 1);
            results.totalCount = page;
            cache.store(keyOf(page), results, cache.generation());
            std::optional<SearchResults> const found = cache.find(keyOf(page));
            if ((found && found->totalCount != page) || cache.size() > 16) {
                ++wrong;
            }
            if (round % 97 == 0) {
                cache.clear();
            }
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(cache.size(), 16U);
}

TEST(ParallelSearchResultCache, NoPageFromBeforeAClearIsFoundAfterIt) {
    SearchResultCache cache;
    std::atomic<std::uint16_t> version = 0;
    std::atomic<bool> done = false;
    int stale = 0;
    onThreads(4, [&](int thread) {
        if (thread != 0) {
            while (!done) {
                std::uint64_t const generation = cache.generation();
                SearchResults results = pageOf(L"sea", 1);
                results.totalCount = version;
                cache.store(keyOf(1), results, generation);
            }
            return;
        }
        for (std::uint16_t next = 1; next <= 2000; ++next) {
            version = next;
            cache.clear();
            std::optional<SearchResults> const found = cache.find(keyOf(1));
            stale += found && found->totalCount < next ? 1 : 0;
        }
        done = true;
    });
    EXPECT_EQ(stale, 0);
}

class Counter final : public iMediaFileRepository::Listener {
public:
    int operator()(NotifyMsg) override {
        ++calls;
        return 0;
    }
    std::atomic<int> calls = 0;
};

TEST(ParallelListeners, OneThatStaysHearsEveryNotificationWhileOthersComeAndGo) {
    fake::Host const host;
    TestRepository repository;
    auto const standing = Zq::makeShared<Counter>();
    Zq::Ptr<Zq::Guard> const guard = repository.addListener(standing);
    onThreads(4, [&](int thread) {
        for (int round = 0; round < 1000; ++round) {
            if (thread < 2) {
                repository.notifier.issueNotification(NotifyMsg(), 24);
            } else {
                Zq::Ptr<Zq::Guard> const passing = repository.addListener(Zq::makeShared<Counter>());
            }
        }
    });
    EXPECT_EQ(standing->calls, 2000);
}

TEST(ParallelListeners, OneThatIsGoneHearsNothingThatIsIssuedLater) {
    fake::Host const host;
    TestRepository repository;
    std::atomic<int> late = 0;
    onThreads(4, [&](int) {
        for (int round = 0; round < 500; ++round) {
            auto const listener = Zq::makeShared<Counter>();
            Zq::Ptr<Zq::Guard> passing = repository.addListener(listener);
            repository.notifier.issueNotification(NotifyMsg(), 24);
            if (listener->calls == 0) {
                ++late; // its own thread's notification must have reached it
            }
        }
    });
    EXPECT_EQ(late, 0);
}

class ParallelThumbnails : public testing::Test {
protected:
    fake::Host host;
    TestRepository repository;
};

TEST_F(ParallelThumbnails, ThoseWhoAskForOnePictureAtOnceShareItsTransfer) {
    host.network.answerWith("picture");
    for (int number = 0; number < 50; ++number) {
        RemoteAsset const asset = assetWithId(std::to_wstring(number).c_str());
        host.network.forgetRequests();
        std::atomic<int> pictures = 0;
        onThreads(4, [&](int) { pictures += repository.getThumbnail(asset) ? 1 : 0; });
        EXPECT_EQ(pictures, 4);
        EXPECT_EQ(host.network.requestCount(), 1U);
    }
}

TEST_F(ParallelThumbnails, ADamagedEntryIsReplacedOnce) {
    host.network.answerWith("picture");
    for (int number = 0; number < 50; ++number) {
        RemoteAsset const asset = assetWithId(std::to_wstring(number).c_str());
        (void)host.cache.store(L"https://media.test/" + asset.id + L".jpeg", "damaged", 7);
        host.network.forgetRequests();
        std::atomic<int> pictures = 0;
        onThreads(4, [&](int) { pictures += repository.getThumbnail(asset) ? 1 : 0; });
        EXPECT_EQ(pictures, 4);
        EXPECT_EQ(host.network.requestCount(), 1U);
    }
}

TEST_F(ParallelThumbnails, OneAddressIsNeverTransferredTwiceAtATimeEvenIfItFails) {
    std::atomic<int> underWay = 0;
    std::atomic<int> most = 0;
    host.network.answerWith([&](fake::Request const&) -> std::optional<fake::Answer> {
        int const now = ++underWay;
        int before = most;
        while (before < now && !most.compare_exchange_weak(before, now)) {
        }
        std::this_thread::yield();
        --underWay;
        return std::nullopt;
    });
    std::atomic<int> pictures = 0;
    onThreads(4, [&](int) {
        for (int round = 0; round < 200; ++round) {
            pictures += repository.getThumbnail(assetWithId(L"1")) ? 1 : 0;
        }
    });
    EXPECT_EQ(pictures, 0);
    EXPECT_EQ(most, 1);
}

TEST_F(ParallelThumbnails, DifferentPicturesAreTransferredSideBySide) {
    std::mutex mutex;
    std::condition_variable met;
    int here = 0;
    std::atomic<int> alone = 0;
    host.network.answerWith([&](fake::Request const&) -> std::optional<fake::Answer> {
        std::unique_lock lock(mutex);
        ++here;
        met.notify_all();
        if (!met.wait_for(lock, std::chrono::seconds(20), [&] { return here == 2; })) {
            ++alone;
        }
        return fake::Answer{"picture", 200};
    });
    onThreads(
        2, [&](int thread) { (void)repository.getThumbnail(assetWithId(std::to_wstring(thread).c_str())); });
    EXPECT_EQ(alone, 0);
}

} // namespace
} // namespace repository_tests
