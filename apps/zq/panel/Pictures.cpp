#include "apps/zq/panel/Pictures.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "host/engine/files/LocalPath.h"
#include "host/engine/files/WholeFile.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/log/Log.h"

namespace zq::panel {

namespace {

constexpr std::size_t largestPicture_bytes = std::size_t{8} << 20;
constexpr std::size_t mostAtOnce = 50; // so that one that is wanted now does not wait behind a long list

} // namespace

std::optional<Picture> readPicture(WideString const& path) {
    std::filesystem::path const file = engine::localPath(path);
    std::optional<std::string> bytes =
        file.empty() ? std::nullopt : engine::readWholeFile(file, largestPicture_bytes);
    if (bytes && bytes->starts_with("\xff\xd8\xff")) {
        return Picture{*std::move(bytes), "image/jpeg"};
    }
    if (bytes && bytes->starts_with("\x89PNG\r\n\x1a\n")) {
        return Picture{*std::move(bytes), "image/png"};
    }
    return std::nullopt;
}

// The cache as the network sees it: tells of each picture as it comes, and has what is no picture fetched
// anew.
class Pictures::Arrivals final : public iCacheStore {
public:
    explicit Arrivals(Pictures& owner) : owner_(owner) {}

    WideString find(WideString const& key) override {
        WideString path = owner_.cache_.find(key);
        return readPicture(path) ? path : WideString();
    }
    WideString store(WideString const& key, void const* bytes, std::size_t size) override {
        WideString path = owner_.cache_.store(key, bytes, size);
        owner_.arrived(key);
        return path;
    }
    WideString partialFolder() override { return owner_.cache_.partialFolder(); }

private:
    Pictures& owner_;
};

Pictures::Pictures(Prefetch prefetch, iCacheStore& cache) : prefetch_(std::move(prefetch)), cache_(cache) {
    for (engine::TaskState& state : states_) {
        threads_.emplace_back([this, &state] {
            engine::ScopedTask const task(state);
            work();
        });
    }
}

Pictures::~Pictures() {
    {
        std::lock_guard const lock(mutex_);
        ended_ = true;
    }
    for (engine::TaskState& state : states_) {
        state.cancel();
    }
    wake_.notify_all();
    moved_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

bool Pictures::isExpected(WideString const& address) const {
    return underWay_.contains(address) || std::ranges::find(wanted_, address) != wanted_.end();
}

void Pictures::want(std::vector<WideString> const& addresses) {
    {
        std::lock_guard const lock(mutex_);
        for (WideString const& address : addresses) {
            if (!address.isEmpty() && wanted_.size() < mostWaiting && !isExpected(address)) {
                wanted_.push_back(address);
            }
        }
    }
    wake_.notify_all();
}

std::optional<Picture> Pictures::get(WideString const& address) {
    if (std::optional<Picture> picture = readPicture(cache_.find(address))) {
        return picture;
    }
    {
        std::unique_lock lock(mutex_);
        if (!underWay_.contains(address)) {
            std::erase(wanted_, address);
            wanted_.push_front(address);
            wake_.notify_one();
        }
        constexpr std::chrono::milliseconds step{100}; // between two looks at the task's state
        while (!ended_ && isExpected(address)) {
            if (moved_.wait_for(lock, step) == std::cv_status::timeout && engine::isTaskCancelled()) {
                return std::nullopt;
            }
        }
    }
    return readPicture(cache_.find(address));
}

void Pictures::arrived(WideString const& address) {
    {
        std::lock_guard const lock(mutex_);
        underWay_.erase(address);
    }
    moved_.notify_all();
}

void Pictures::work() {
    Arrivals arrivals(*this);
    for (;;) {
        std::vector<WideString> batch;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return ended_ || !wanted_.empty(); });
            if (ended_) {
                return;
            }
            auto const end =
                wanted_.begin() + static_cast<std::ptrdiff_t>(std::min(wanted_.size(), mostAtOnce));
            batch.assign(wanted_.begin(), end);
            wanted_.erase(wanted_.begin(), end);
            underWay_.insert(batch.begin(), batch.end());
        }
        try {
            prefetch_(batch, arrivals);
        } catch (std::exception const& failure) {
            Log("Pictures could not be fetched: %s", failure.what());
        }
        {
            std::lock_guard const lock(mutex_);
            for (WideString const& address : batch) {
                underWay_.erase(address);
            }
        }
        moved_.notify_all();
    }
}

} // namespace zq::panel
