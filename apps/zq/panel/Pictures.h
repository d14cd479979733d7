// The pictures of clips, gathered: those that several requests want go out side by side, and each request
// waits for its own alone.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "host/engine/os/TaskContext.h"
#include "host/files/iCacheStore.h"

namespace zq::panel {

struct Picture {
    std::string bytes;
    char const* type = ""; // media type
};

// The JPEG or PNG picture in a file, told by its first bytes; nothing for any other file. Thread: any.
[[nodiscard]] std::optional<Picture> readPicture(WideString const& path);

// Thread: any.
class Pictures {
public:
    // Fetches the addresses side by side into the store, each under its address, as the network's prefetch.
    // Called on threads of the gatherer's own, each in a task that ends with the gatherer.
    using Prefetch = std::function<void(std::vector<WideString> const& addresses, iCacheStore& store)>;
    static constexpr std::size_t mostWaiting = 2'000; // beyond, only those are taken that a request waits for

    // The cache outlives it.
    Pictures(Prefetch prefetch, iCacheStore& cache);
    // Cancels what runs.
    ~Pictures();
    Pictures(Pictures const&) = delete;
    Pictures& operator=(Pictures const&) = delete;

    // Has the pictures fetched that the cache does not have, and waits for nothing.
    void want(std::vector<WideString> const& addresses);
    // The picture of that address, from the cache or fetched before the others that wait. Nothing where it
    // could not be had, and when the calling task is cancelled.
    [[nodiscard]] std::optional<Picture> get(WideString const& address);

private:
    class Arrivals;
    void work();
    [[nodiscard]] bool isExpected(WideString const& address) const; // under the lock
    void arrived(WideString const& address);

    Prefetch const prefetch_;
    iCacheStore& cache_;
    std::mutex mutex_;
    std::condition_variable wake_;  // of the threads
    std::condition_variable moved_; // of those who wait
    std::deque<WideString> wanted_;
    std::set<WideString> underWay_;
    bool ended_ = false;
    engine::TaskState states_[3];
    std::vector<std::thread> threads_;
};

} // namespace zq::panel
