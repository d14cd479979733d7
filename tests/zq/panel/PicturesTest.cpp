// Pictures that several requests want at once.

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <latch>
#include <semaphore>
#include <thread>

#include "apps/zq/Text.h"
#include "apps/zq/panel/Pictures.h"
#include "host/HostServices.h"
#include "host/engine/files/DiskCache.h"
#include "host/engine/os/TaskContext.h"
#include "host/engine/os/isTaskCancelled.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::SizeIs;
using zq::panel::Picture;
using zq::panel::Pictures;

constexpr std::string_view jpeg = "\xff\xd8\xff\xe0 a picture";
constexpr std::string_view png = "\x89PNG\r\n\x1a\n a picture";

class GatheredPictures : public testing::Test {
protected:
    GatheredPictures() : before_(installHost(services())) {}
    ~GatheredPictures() override { static_cast<void>(installHost(before_)); }

    // Stores a picture for each address that the store has not, but none for those that begin with "no".
    void deliver(std::vector<WideString> const& addresses, iCacheStore& store) {
        {
            std::lock_guard const lock(mutex_);
            calls_.push_back(addresses);
        }
        for (WideString const& address : addresses) {
            if (!store.find(address).isEmpty()) {
                continue;
            }
            {
                std::lock_guard const lock(mutex_);
                fetched_.push_back(address);
            }
            if (!address.startsWith(L"no")) {
                std::string const bytes = std::string(jpeg) + zq::utf8(address);
                static_cast<void>(store.store(address, bytes.data(), bytes.size()));
            }
        }
    }
    Pictures::Prefetch delivering() {
        return [this](auto const& addresses, iCacheStore& store) { deliver(addresses, store); };
    }
    // Has those that begin with "not".
    Pictures::FetchOne oneByOne() {
        return [this](WideString const& address) {
            std::lock_guard const lock(mutex_);
            single_.push_back(address);
            if (address.startsWith(L"not")) {
                static_cast<void>(cache_.store(address, png.data(), png.size()));
            }
        };
    }
    // However long it takes.
    static std::optional<Picture> get(Pictures& pictures, WideString const& address) {
        return pictures.get(address, std::chrono::hours(1)).picture;
    }
    void awaitCalls(std::size_t count) {
        while (calls().size() < count) {
            std::this_thread::yield();
        }
    }
    std::vector<std::vector<WideString>> calls() {
        std::lock_guard const lock(mutex_);
        return calls_;
    }

    test::TemporaryFolder folder_;
    engine::DiskCache cache_{folder_.path() / "cache", 1 << 20};
    std::mutex mutex_;
    std::vector<std::vector<WideString>> calls_;
    std::vector<WideString> fetched_;
    std::vector<WideString> single_;

private:
    HostServices services() {
        HostServices services = installedHost();
        services.tasks = &tasks_;
        return services;
    }
    engine::TaskContext tasks_;
    HostServices const before_;
};

TEST_F(GatheredPictures, OnlyJPEGAndPNGArePictures) {
    auto const typeOf = [this](std::string_view bytes) {
        std::filesystem::path const file = folder_.path() / "file";
        std::ofstream(file, std::ios::binary) << bytes;
        std::optional<Picture> const picture = zq::panel::readPicture(zq::wide(file.string()));
        EXPECT_TRUE(!picture || picture->bytes == bytes);
        return picture ? std::string(picture->type) : "none";
    };
    EXPECT_EQ(typeOf(jpeg), "image/jpeg");
    EXPECT_EQ(typeOf(png), "image/png");
    EXPECT_EQ(typeOf("<svg onload='alert(1)'/>"), "none");
    EXPECT_EQ(typeOf("<html>"), "none");
    EXPECT_EQ(typeOf("\xff\xd8"), "none");
    EXPECT_EQ(typeOf(""), "none");
    EXPECT_FALSE(zq::panel::readPicture(L""));
    EXPECT_FALSE(zq::panel::readPicture(zq::wide(folder_.path().string())));
}

TEST_F(GatheredPictures, WhatTheCacheHasIsNotFetched) {
    static_cast<void>(cache_.store(L"a", png.data(), png.size()));
    Pictures pictures(delivering(), oneByOne(), cache_);
    std::optional<Picture> const picture = get(pictures, L"a");
    ASSERT_TRUE(picture);
    EXPECT_STREQ(picture->type, "image/png");
    EXPECT_THAT(calls(), SizeIs(0));
}

TEST_F(GatheredPictures, AFewGoOutInOneCall) {
    Pictures pictures(delivering(), oneByOne(), cache_);
    pictures.want("one", {L"a", L"b", L"", L"c", L"a"});
    awaitCalls(1);
    EXPECT_THAT(calls(), ElementsAre(ElementsAre(WideString(L"a"), WideString(L"b"), WideString(L"c"))));
}

TEST_F(GatheredPictures, NoMoreGoOutTogetherThanOneThatStallsMayHoldUp) {
    std::vector<WideString> page;
    for (wchar_t letter = L'a'; letter <= L'z'; ++letter) {
        page.emplace_back(std::wstring(1, letter).c_str());
    }
    {
        Pictures pictures(delivering(), oneByOne(), cache_);
        pictures.want("one", page);
        for (WideString const& address : page) {
            EXPECT_TRUE(get(pictures, address));
        }
    }
    for (std::vector<WideString> const& call : calls()) {
        EXPECT_LE(call.size(), Pictures::mostTogether);
    }
}

// Until it ends, or the test opens the gate, no address that begins with "slow" arrives.
class StalledPictures : public GatheredPictures {
protected:
    Pictures::Prefetch stalling() {
        return [this](std::vector<WideString> const& addresses, iCacheStore& store) {
            std::vector<WideString> quick;
            std::vector<WideString> slow;
            for (WideString const& address : addresses) {
                (address.startsWith(L"slow") ? slow : quick).push_back(address);
            }
            if (!quick.empty()) {
                deliver(quick, store);
            }
            if (!slow.empty()) {
                ++stalled_;
                while (!isOpen_ && !engine::isTaskCancelled()) {
                    std::this_thread::yield();
                }
                if (isOpen_) {
                    deliver(slow, store);
                }
            }
        };
    }
    static std::vector<WideString> slowOnes(int count) {
        std::vector<WideString> all;
        for (int i = 0; i < count; ++i) {
            all.push_back(zq::wide("slow " + std::to_string(i)));
        }
        return all;
    }
    void awaitStalled(int count) {
        while (stalled_ < count) {
            std::this_thread::yield();
        }
    }
    std::atomic<int> stalled_{0}; // calls
    std::atomic<bool> isOpen_{false};
};

TEST_F(StalledPictures, OneThatARequestWaitsForPassesAllThatAreOnlyWanted) {
    Pictures pictures(stalling(), oneByOne(), cache_);
    pictures.want("one", slowOnes(100));
    awaitStalled(2);
    pictures.want("one", {L"quick"});
    EXPECT_TRUE(get(pictures, L"quick")) << "while nothing of what is fetched ahead moves";
    EXPECT_TRUE(get(pictures, L"quick, and never wanted"));
}

TEST_F(StalledPictures, WhatItsAskerLooksAtNoLongerIsNotFetched) {
    Pictures pictures(stalling(), oneByOne(), cache_);
    pictures.want("one", slowOnes(12));
    awaitStalled(2);
    pictures.want("one", {L"of the search before"});
    pictures.want("two", {L"of another page"});
    pictures.forget("one");
    isOpen_ = true;
    awaitCalls(3); // what stalled, and what comes behind it
    EXPECT_THAT(calls(), testing::Contains(ElementsAre(WideString(L"of another page"))));
    EXPECT_TRUE(get(pictures, L"of the search before")) << "it can be had all the same";
}

TEST_F(StalledPictures, OneThatIsLateIsSaidToBeAndIsFetchedOnce) {
    Pictures pictures(stalling(), oneByOne(), cache_);
    for (int i = 0; i < 3; ++i) {
        Pictures::Answer const answer = pictures.get(L"slow", std::chrono::milliseconds(0));
        EXPECT_TRUE(answer.isLate);
        EXPECT_FALSE(answer.picture);
    }
    isOpen_ = true;
    EXPECT_TRUE(get(pictures, L"slow"));
    std::lock_guard const lock(mutex_);
    EXPECT_THAT(fetched_, ElementsAre(WideString(L"slow")));
}

TEST_F(StalledPictures, OneThatIsLateAndThenCannotBeHadIsSaidToBeNoneOnce) {
    Pictures pictures(
        [this](std::vector<WideString> const& addresses, iCacheStore& store) {
            stalling()(slowOnes(1), store);
            deliver(addresses, store);
        },
        oneByOne(), cache_);
    EXPECT_TRUE(pictures.get(L"none", std::chrono::milliseconds(0)).isLate);
    isOpen_ = true;
    Pictures::Answer answer;
    do {
        answer = pictures.get(L"none", std::chrono::milliseconds(0));
    } while (answer.isLate);
    EXPECT_FALSE(answer.picture);
    EXPECT_THAT(single_, ElementsAre(WideString(L"none"))) << "it was not fetched anew for that";
    EXPECT_FALSE(get(pictures, L"none"));
    EXPECT_THAT(single_, SizeIs(2));
}

TEST_F(GatheredPictures, OneThatCannotBeHadIsNoneAndIsAskedForAgain) {
    Pictures pictures(delivering(), oneByOne(), cache_);
    EXPECT_FALSE(get(pictures, L"none"));
    EXPECT_FALSE(get(pictures, L"none"));
    EXPECT_THAT(calls(), SizeIs(2));
}

TEST_F(GatheredPictures, WhatDoesNotComeSideBySideIsFetchedByItselfOnceSomebodyLooksAtIt) {
    Pictures pictures(delivering(), oneByOne(), cache_);
    pictures.want("one", {L"a", L"not side by side"});
    EXPECT_TRUE(get(pictures, L"a"));
    EXPECT_THAT(single_, SizeIs(0));
    std::optional<Picture> const picture = get(pictures, L"not side by side");
    ASSERT_TRUE(picture);
    EXPECT_STREQ(picture->type, "image/png");
    EXPECT_THAT(single_, ElementsAre(WideString(L"not side by side")));
}

TEST_F(GatheredPictures, WhatIsNoPictureInTheCacheIsFetchedAnew) {
    static_cast<void>(cache_.store(L"a", "<html>", 6));
    Pictures pictures(delivering(), oneByOne(), cache_);
    EXPECT_TRUE(get(pictures, L"a"));
}

TEST_F(GatheredPictures, AFetchThatThrowsLeavesTheOthersToGoOn) {
    std::atomic<int> count{0};
    Pictures pictures(
        [&](auto const& addresses, iCacheStore& store) {
            if (++count == 1) {
                throw std::runtime_error("no network");
            }
            deliver(addresses, store);
        },
        oneByOne(), cache_);
    EXPECT_FALSE(get(pictures, L"a"));
    EXPECT_TRUE(get(pictures, L"a"));
}

TEST_F(GatheredPictures, ARequestWaitsForItsOwnPictureAlone) {
    std::binary_semaphore goOn(0);
    Pictures pictures(
        [&](auto const& addresses, iCacheStore& store) {
            deliver({addresses.front()}, store);
            goOn.acquire();
            deliver(addresses, store);
        },
        oneByOne(), cache_);
    pictures.want("one", {L"first", L"second"});
    awaitCalls(1); // for both: a request would take its own out of what is only wanted
    EXPECT_TRUE(get(pictures, L"first")) << "the call that brings the second one still runs";
    goOn.release();
    EXPECT_TRUE(get(pictures, L"second"));
}

TEST_F(GatheredPictures, ManyRequestsForTheSamePicturesFetchEachOnce) {
    Pictures pictures(delivering(), oneByOne(), cache_);
    std::vector<std::thread> all;
    std::atomic<int> had{0};
    for (int i = 0; i < 8; ++i) {
        all.emplace_back([&] {
            for (wchar_t const* address : {L"a", L"b", L"c", L"d"}) {
                had += get(pictures, address) ? 1 : 0;
            }
        });
    }
    for (std::thread& one : all) {
        one.join();
    }
    EXPECT_EQ(had, 32);
    std::lock_guard const lock(mutex_);
    EXPECT_THAT(fetched_, testing::UnorderedElementsAre(WideString(L"a"), WideString(L"b"), WideString(L"c"),
                                                        WideString(L"d")));
}

TEST_F(GatheredPictures, ACancelledRequestWaitsNoLongerAndTheEndCancelsWhatRuns) {
    std::latch running(1);
    {
        Pictures pictures(
            [&](auto const&, iCacheStore&) {
                running.count_down();
                while (!engine::isTaskCancelled()) {
                    std::this_thread::yield();
                }
            },
            oneByOne(), cache_);
        engine::TaskState state;
        std::thread request([&] {
            engine::ScopedTask const task(state);
            EXPECT_FALSE(get(pictures, L"a"));
        });
        running.wait();
        state.cancel();
        request.join();
    }
    SUCCEED() << "both have ended";
}

} // namespace
