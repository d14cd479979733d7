#include "apps/zq/panel/Pictures.h"

#include <algorithm>
#include <utility>

#include "host/engine/files/LocalPath.h"
#include "host/engine/files/WholeFile.h"
#include "host/engine/os/isTaskCancelled.h"
#include "host/log/Log.h"

namespace zq::panel {

namespace {

constexpr std::size_t largestPicture_bytes = std::size_t{8} << 20;
// Threads that only fetch what a request waits for: what is fetched ahead cannot hold that up.
constexpr int threadsForAll = 2;
constexpr int threadsForAsked = 3;
constexpr int threadsForSingles = 2;
// How long a request may stay away before it is told that there was no picture; then it is fetched anew.
constexpr std::chrono::seconds longestMemory{10};

// Media type by the first bytes; null for what is no picture.
char const* typeOf(std::string_view bytes) {
    if (bytes.starts_with("\xff\xd8\xff")) {
        return "image/jpeg";
    }
    return bytes.starts_with("\x89PNG\r\n\x1a\n") ? "image/png" : nullptr;
}

} // namespace

std::optional<Picture> readPicture(WideString const& path) {
    std::filesystem::path const file = engine::localPath(path);
    std::optional<std::string> bytes =
        file.empty() ? std::nullopt : engine::readWholeFile(file, largestPicture_bytes);
    char const* const type = bytes ? typeOf(*bytes) : nullptr;
    return type != nullptr ? std::optional(Picture{*std::move(bytes), type}) : std::nullopt;
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
        if (typeOf({static_cast<char const*>(bytes), size}) != nullptr) {
            owner_.arrived(key);
        }
        return path;
    }
    WideString partialFolder() override { return owner_.cache_.partialFolder(); }

private:
    Pictures& owner_;
};

Pictures::Pictures(Prefetch prefetch, FetchOne fetchOne, iCacheStore& cache)
    : prefetch_(std::move(prefetch)), fetchOne_(std::move(fetchOne)), cache_(cache) {
    for (int i = 0; i < threadsForAll; ++i) {
        start(&Pictures::fetchAll);
    }
    for (int i = 0; i < threadsForAsked; ++i) {
        start(&Pictures::fetchAsked);
    }
    for (int i = 0; i < threadsForSingles; ++i) {
        start(&Pictures::fetchSingles);
    }
}

void Pictures::start(void (Pictures::*work)()) {
    engine::TaskState& state = states_.emplace_back();
    threads_.emplace_back([this, work, &state] {
        engine::ScopedTask const task(state);
        (this->*work)();
    });
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
    return underWay_.contains(address) || std::ranges::find(asked_, address) != asked_.end() ||
           std::ranges::find(single_, address) != single_.end();
}

bool Pictures::isWanted(WideString const& address) const {
    return std::ranges::find(wanted_, address, &Wish::address) != wanted_.end();
}

void Pictures::want(std::string const& asker, std::vector<WideString> const& addresses) {
    {
        std::lock_guard const lock(mutex_);
        for (WideString const& address : addresses) {
            if (!address.isEmpty() && wanted_.size() < mostWaiting && !isExpected(address) &&
                !isWanted(address)) {
                wanted_.push_back({address, asker});
            }
        }
    }
    wake_.notify_all();
}

void Pictures::forget(std::string const& asker) {
    std::lock_guard const lock(mutex_);
    std::erase_if(wanted_, [&](Wish const& wish) { return wish.asker == asker; });
}

Pictures::Answer Pictures::get(WideString const& address, std::chrono::milliseconds atMost) {
    if (std::optional<Picture> picture = readPicture(cache_.find(address))) {
        return {std::move(picture), false};
    }
    Clock::time_point const end = Clock::now() + atMost;
    {
        std::unique_lock lock(mutex_);
        if (auto const known = missing_.extract(address);
            !known.empty() && Clock::now() - known.mapped() < longestMemory) {
            return {};
        }
        looked_.insert(address);
        if (!underWay_.contains(address) && std::ranges::find(single_, address) == single_.end()) {
            std::erase_if(wanted_, [&](Wish const& wish) { return wish.address == address; });
            std::erase(asked_, address);
            asked_.push_front(address);
            wake_.notify_all();
        }
        constexpr std::chrono::milliseconds step{100}; // between two looks at the task's state
        while (!ended_ && isExpected(address)) {
            if (engine::isTaskCancelled()) {
                return {};
            }
            Clock::time_point const now = Clock::now();
            if (now >= end) {
                return {std::nullopt, true};
            }
            moved_.wait_until(lock, std::min(end, now + step));
        }
        missing_.erase(address); // it is told now
    }
    return {readPicture(cache_.find(address)), false};
}

void Pictures::arrived(WideString const& address) {
    {
        std::lock_guard const lock(mutex_);
        underWay_.erase(address);
        looked_.erase(address);
    }
    moved_.notify_all();
}

void Pictures::noteMissing(WideString const& address) {
    if (missing_.size() >= mostWaiting) {
        missing_.clear();
    }
    missing_.insert_or_assign(address, Clock::now());
    looked_.erase(address);
}

Pictures::Batch Pictures::nextBatch(bool askedOnly) {
    std::unique_lock lock(mutex_);
    wake_.wait(lock, [&] { return ended_ || !asked_.empty() || (!askedOnly && !wanted_.empty()); });
    Batch batch;
    while (!ended_ && !asked_.empty() && batch.size() < mostTogether) {
        batch.push_back(std::move(asked_.front()));
        asked_.pop_front();
    }
    while (!ended_ && !askedOnly && !wanted_.empty() && batch.size() < mostTogether) {
        batch.push_back(std::move(wanted_.front().address));
        wanted_.pop_front();
    }
    underWay_.insert(batch.begin(), batch.end());
    return batch;
}

void Pictures::fetch(Batch const& batch) {
    Arrivals arrivals(*this);
    try {
        prefetch_(batch, arrivals);
    } catch (std::exception const& failure) {
        Log("Pictures could not be fetched: %s", failure.what());
    }
    {
        std::lock_guard const lock(mutex_);
        for (WideString const& address : batch) {
            if (underWay_.erase(address) != 0 && looked_.contains(address)) {
                single_.push_back(address);
            }
        }
    }
    wake_.notify_all();
    moved_.notify_all();
}

void Pictures::fetchAll() {
    for (Batch batch = nextBatch(false); !batch.empty(); batch = nextBatch(false)) {
        fetch(batch);
    }
}

void Pictures::fetchAsked() {
    for (Batch batch = nextBatch(true); !batch.empty(); batch = nextBatch(true)) {
        fetch(batch);
    }
}

void Pictures::fetchSingles() {
    for (;;) {
        WideString address;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return ended_ || !single_.empty(); });
            if (ended_) {
                return;
            }
            address = std::move(single_.front());
            single_.pop_front();
            underWay_.insert(address);
        }
        try {
            if (!readPicture(cache_.find(address))) {
                fetchOne_(address);
            }
        } catch (std::exception const& failure) {
            Log("A picture could not be fetched: %s", failure.what());
        }
        bool const isThere = readPicture(cache_.find(address)).has_value();
        {
            std::lock_guard const lock(mutex_);
            underWay_.erase(address);
            if (isThere) {
                looked_.erase(address);
            } else {
                noteMissing(address);
            }
        }
        moved_.notify_all();
    }
}

} // namespace zq::panel
