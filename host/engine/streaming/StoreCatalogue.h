// The stores on disk of all streamed files, which together stay within a bound.
//
// What a store holds, its index tells; the catalogue knows where stores lie and when each was used. One that
// is lost or damaged is made anew from the folders as they are used.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

namespace engine {

class Database;

// Thread: any. The work is done on a thread of its own, which begins with the first use.
class StoreCatalogue {
public:
    // A catalogue that cannot be opened leaves the stores unbounded, with a line in the log.
    StoreCatalogue(std::filesystem::path file, std::uint64_t limit_bytes);
    ~StoreCatalogue();
    StoreCatalogue(StoreCatalogue const&) = delete;
    StoreCatalogue& operator=(StoreCatalogue const&) = delete;

    // Notes that a store is used now, and has what exceeds the bound removed: what was used longest ago
    // first, and nothing that is open, here or in another process.
    void used(std::filesystem::path const& store) noexcept;
    // Does what is still to be done, and ends the thread.
    void stop() noexcept;

private:
    void run() noexcept;
    void openDatabase();
    void note(std::filesystem::path const& store);
    void addUnknownStoresOf(std::filesystem::path const& folder);
    void makeRoom();

    std::filesystem::path const file_;
    std::uint64_t const limit_bytes_;
    std::unique_ptr<Database> database_; // the thread's own
    std::set<std::filesystem::path> seenFolders_;
    std::int64_t lastUse_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::filesystem::path> used_;
    bool stopping_ = false;
    std::thread thread_;
};

} // namespace engine
