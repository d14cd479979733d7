// What a host lets run at the same time: one call at a time on the repository, fetches in tasks beside it,
// and readers of previews.

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "host/engine/tasks/TaskQueue.h"
#include "tests/road/RoadFixture.h"

namespace {

using namespace road_tests;
using namespace std::chrono_literals;
using testing::IsEmpty;
using testing::SizeIs;

class RoadTogether : public Road {
protected:
    // An owned clip with its edit, as a fetch needs them.
    struct Job {
        RemoteAsset asset;
        EditModifier edit; // keeps a temporary edit from ending
    };
    [[nodiscard]] std::vector<Job> allOwned() {
        std::vector<Job> jobs;
        for (RemoteAsset const& asset : host().client().getPurchasedAssets()) {
            jobs.push_back({asset, host().client().openEdit(asset, iMediaFileRepository::eOpenNormally)});
        }
        return jobs;
    }
    [[nodiscard]] engine::TaskQueue::Work fetching(RemoteAsset const& asset) {
        return [this, asset](engine::iTaskMonitor&) -> engine::TaskResult {
            return {
                host().client().fetchFullMedia(listOf(asset), 0, LoggerHandle(Zq::makeShared<FetchLog>())),
                {}};
        };
    }
    void buyAll() { ASSERT_EQ(host().client().requestCreditPurchase(host().search("").assets), 2); }
};

TEST_F(RoadTogether, SearchesOwnedListsFetchesCancelsAndPreviewsDoNotDisturbEachOther) {
    buyAll();
    std::vector<Job> const jobs = allOwned();
    ASSERT_THAT(jobs, SizeIs(2));
    WideString const preview = clip("car").proxyLocation;
    std::string const previewBytes = RoadHost::readThroughHost(preview);
    ASSERT_NE(previewBytes, "(failed)");

    std::atomic<bool> ended{false};
    std::atomic<int> wrongReads{0};
    std::atomic<int> reads{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 2; ++i) {
        readers.emplace_back([&] {
            while (!ended || reads == 0) {
                wrongReads += same(RoadHost::readThroughHost(preview), previewBytes) ? 0 : 1;
                ++reads;
            }
        });
    }
    engine::TaskQueue& tasks = host().engine().tasks();
    int cancelled = 0;
    for (int round = 0; round < 12; ++round) {
        std::vector<std::uint64_t> numbers;
        for (Job const& job : jobs) {
            numbers.push_back(tasks.add("fetch", fetching(job.asset)));
        }
        EXPECT_THAT(host().search(round % 2 == 0 ? "car" : "tape").assets, SizeIs(1));
        EXPECT_THAT(host().client().getPurchasedAssets(), SizeIs(2));
        if (round % 3 != 2) {
            cancelled += tasks.cancel(numbers[static_cast<std::size_t>(round % 2)]) ? 1 : 0;
        }
        host().client().handlePriceChange(-1);
        EXPECT_EQ(host().search("").totalCount, 2);
        for (std::uint64_t const number : numbers) {
            while (!tasks.waitFor(number, 1s)->ended) {
            }
        }
        for (Job const& job : jobs) {
            std::filesystem::path const file = host().fullFile(job.asset);
            std::string const found = bytesOf(file);
            EXPECT_TRUE(found.empty() || same(found, footageBytes("car.mov")) ||
                        same(found, footageBytes("tape.mov")))
                << "a fetch leaves a whole file or none";
            std::filesystem::remove(file);
        }
    }
    ended = true;
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrongReads, 0);
    EXPECT_GT(reads, 0);
    for (Job const& job : jobs) {
        EXPECT_TRUE(host().fetch(job.asset).result);
    }
    EXPECT_THAT(host().mediaFiles(), SizeIs(2));
    RecordProperty("cancelled", cancelled);
}

TEST_F(RoadTogether, EightDownloadsThatRunEndWithinTwoSecondsOfTheEnd) {
    for (int i = 0; i < 6; ++i) {
        addFootage(test::Footage::plain, "clip " + std::to_string(i) + ".mov");
    }
    buyAll();
    std::vector<Job> const jobs = allOwned();
    ASSERT_THAT(jobs, SizeIs(8));
    tarn7d::FaultRule silent;
    silent.path = "/full/";
    silent.kind = tarn7d::FaultKind::stall;
    silent.bytes = 20'000;
    silent.time = 5min;
    silent.count = 8;
    (void)desk().add(silent);
    engine::TaskQueue queue(8);
    for (Job const& job : jobs) {
        queue.add("fetch", fetching(job.asset));
    }
    auto const patience = std::chrono::steady_clock::now() + 30s;
    while (desk().list().at(0).met < 8 && std::chrono::steady_clock::now() < patience) {
        std::this_thread::yield();
    }
    ASSERT_EQ(desk().list().at(0).met, 8);
    auto const begin = std::chrono::steady_clock::now();
    queue.shutDown();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s);
    for (engine::TaskReport const& report : queue.reports()) {
        EXPECT_TRUE(report.ended);
    }
    EXPECT_THAT(host().mediaFiles(), IsEmpty());
    for (Job const& job : jobs) {
        EXPECT_EQ(host().playedMedia(job.asset), "");
    }
}

} // namespace
