// Pictures that several requests want at once.

#include <gmock/gmock.h>

#include <atomic>
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
using testing::UnorderedElementsAre;
using zq::panel::Picture;
using zq::panel::Pictures;

constexpr std::string_view jpeg = "\xff\xd8\xff\xe0 a picture";
constexpr std::string_view png = "\x89PNG\r\n\x1a\n a picture";

class GatheredPictures : public testing::Test {
protected:
    GatheredPictures() : before_(installHost(services())) {}
    ~GatheredPictures() override { static_cast<void>(installHost(before_)); }

    // Stores a picture for each address, but none for those that begin with "no".
    void deliver(std::vector<WideString> const& addresses, iCacheStore& store) {
        {
            std::lock_guard const lock(mutex_);
            calls_.push_back(addresses);
        }
        for (WideString const& address : addresses) {
            if (store.find(address).isEmpty() && !address.startsWith(L"no")) {
                std::string const bytes = std::string(jpeg) + zq::utf8(address);
                static_cast<void>(store.store(address, bytes.data(), bytes.size()));
            }
        }
    }
    Pictures::Prefetch delivering() {
        return [this](auto const& addresses, iCacheStore& store) { deliver(addresses, store); };
    }
    std::vector<std::vector<WideString>> calls() {
        std::lock_guard const lock(mutex_);
        return calls_;
    }

    test::TemporaryFolder folder_;
    engine::DiskCache cache_{folder_.path() / "cache", 1 << 20};
    std::mutex mutex_;
    std::vector<std::vector<WideString>> calls_;

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
    Pictures pictures(delivering(), cache_);
    std::optional<Picture> const picture = pictures.get(L"a");
    ASSERT_TRUE(picture);
    EXPECT_STREQ(picture->type, "image/png");
    EXPECT_THAT(calls(), SizeIs(0));
}

TEST_F(GatheredPictures, APageGoesOutInOneCall) {
    Pictures pictures(delivering(), cache_);
    pictures.want({L"a", L"b", L"", L"c", L"a"});
    EXPECT_TRUE(pictures.get(L"c"));
    EXPECT_THAT(calls(),
                ElementsAre(UnorderedElementsAre(WideString(L"a"), WideString(L"b"), WideString(L"c"))));
}

TEST_F(GatheredPictures, OneThatCannotBeHadIsNoneAndIsAskedForAgain) {
    Pictures pictures(delivering(), cache_);
    EXPECT_FALSE(pictures.get(L"none"));
    EXPECT_FALSE(pictures.get(L"none"));
    EXPECT_THAT(calls(), SizeIs(2));
}

TEST_F(GatheredPictures, WhatIsNoPictureInTheCacheIsFetchedAnew) {
    static_cast<void>(cache_.store(L"a", "<html>", 6));
    Pictures pictures(delivering(), cache_);
    EXPECT_TRUE(pictures.get(L"a"));
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
        cache_);
    EXPECT_FALSE(pictures.get(L"a"));
    EXPECT_TRUE(pictures.get(L"a"));
}

TEST_F(GatheredPictures, ARequestWaitsForItsOwnPictureAlone) {
    std::binary_semaphore goOn(0);
    Pictures pictures(
        [&](auto const& addresses, iCacheStore& store) {
            deliver({addresses.front()}, store);
            goOn.acquire();
            deliver(addresses, store);
        },
        cache_);
    pictures.want({L"first", L"second"});
    EXPECT_TRUE(pictures.get(L"first")) << "the call that brings the second one still runs";
    goOn.release();
    EXPECT_TRUE(pictures.get(L"second"));
}

TEST_F(GatheredPictures, ManyRequestsForTheSamePicturesFetchEachOnce) {
    Pictures pictures(delivering(), cache_);
    std::vector<std::thread> all;
    std::atomic<int> had{0};
    for (int i = 0; i < 8; ++i) {
        all.emplace_back([&] {
            for (wchar_t const* address : {L"a", L"b", L"c", L"d"}) {
                had += pictures.get(address) ? 1 : 0;
            }
        });
    }
    for (std::thread& one : all) {
        one.join();
    }
    EXPECT_EQ(had, 32);
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
            cache_);
        engine::TaskState state;
        std::thread request([&] {
            engine::ScopedTask const task(state);
            EXPECT_FALSE(pictures.get(L"a"));
        });
        running.wait();
        state.cancel();
        request.join();
    }
    SUCCEED() << "both have ended";
}

} // namespace
