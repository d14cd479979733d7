// The pictures of clips, gathered: those that a page of results will show are fetched ahead, and one that a
// request waits for goes before all others.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
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
    using Prefetch = std::function<void(std::vector<WideString> const& addresses, iCacheStore& store)>;
    // Fetches one address into the cache, in more ways than those: it follows redirects. Both are called on
    // threads of the gatherer's own, each in a task that ends with the gatherer.
    using FetchOne = std::function<void(WideString const& address)>;
    static constexpr std::size_t mostWaiting = 2'000; // beyond, only those are taken that a request waits for
    // One that stalls holds up no more than these: as many as a server of HTTP/1.1 is asked for at once.
    static constexpr std::size_t mostTogether = 6;

    // The cache outlives it, and is what both fetch into.
    Pictures(Prefetch prefetch, FetchOne fetchOne, iCacheStore& cache);
    // Cancels what runs.
    ~Pictures();
    Pictures(Pictures const&) = delete;
    Pictures& operator=(Pictures const&) = delete;

    // Has the pictures fetched that the cache does not have, and waits for nothing. They are what that asker
    // looks at now.
    void want(std::string const& asker, std::vector<WideString> const& addresses);
    // The asker looks at something else: what it wanted and nobody has begun to fetch is dropped.
    void forget(std::string const& asker);

    struct Answer {
        std::optional<Picture> picture; // nothing where it could not be had, and when the task is cancelled
        bool isLate = false;            // it is not there yet, and may be when it is asked for again
    };
    // The picture of that address, from the cache or fetched before those that nobody waits for, the one
    // asked for last first. Waits no longer than that; the fetching goes on.
    [[nodiscard]] Answer get(WideString const& address, std::chrono::milliseconds atMost);

private:
    using Clock = std::chrono::steady_clock;
    using Batch = std::vector<WideString>;
    struct Wish {
        WideString address;
        std::string asker;
    };
    class Arrivals;

    // What a thread does, again and again until the end.
    void fetchAll();
    void fetchAsked();
    void fetchSingles();
    void start(void (Pictures::*work)());
    // Empty at the end.
    [[nodiscard]] Batch nextBatch(bool askedOnly);
    void fetch(Batch const& batch);
    [[nodiscard]] bool isExpected(WideString const& address) const; // under the lock, as the next two
    [[nodiscard]] bool isWanted(WideString const& address) const;
    void noteMissing(WideString const& address);
    void arrived(WideString const& address);

    Prefetch const prefetch_;
    FetchOne const fetchOne_;
    iCacheStore& cache_;
    std::mutex mutex_;
    std::condition_variable wake_;  // of the threads
    std::condition_variable moved_; // of those who wait
    std::deque<Wish> wanted_;
    std::deque<WideString> asked_;  // those that a request wants, the next one in front
    std::deque<WideString> single_; // those of them that did not come side by side
    std::set<WideString> underWay_;
    std::set<WideString> looked_;                     // a request has wanted them; until they are decided
    std::map<WideString, Clock::time_point> missing_; // decided so for a request that had given up waiting
    bool ended_ = false;
    std::list<engine::TaskState> states_;
    std::vector<std::thread> threads_;
};

} // namespace zq::panel
