#include "host/engine/streaming/StoreCatalogue.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

#include <sys/stat.h>

#include "host/engine/storage/Database.h"
#include "host/engine/streaming/DiskBlockStore.h"
#include "host/log/Log.h"

namespace engine {

namespace {

constexpr int schema = 1;
constexpr std::string_view indexSuffix = ".partial.idx";
constexpr std::uint64_t statBlock_bytes = 512; // POSIX leaves it open; Linux and the BSDs count in these

std::int64_t now_us() {
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

// What a file takes up on the disk, holes left out.
std::uint64_t allocated_bytes(std::filesystem::path const& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)
               ? static_cast<std::uint64_t>(status.st_blocks) * statBlock_bytes
               : 0;
}

std::int64_t modified_us(std::filesystem::path const& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0
               ? std::int64_t{status.st_mtim.tv_sec} * 1'000'000 + status.st_mtim.tv_nsec / 1000
               : 0;
}

} // namespace

StoreCatalogue::StoreCatalogue(std::filesystem::path file, std::uint64_t limit_bytes)
    : file_(std::move(file)), limit_bytes_(limit_bytes) {}

StoreCatalogue::~StoreCatalogue() {
    stop();
}

void StoreCatalogue::used(std::filesystem::path const& store) noexcept {
    try {
        std::lock_guard const lock(mutex_);
        if (stopping_) {
            return;
        }
        used_.push_back(store);
        if (!thread_.joinable()) {
            thread_ = std::thread([this] { run(); });
        }
        changed_.notify_one();
    } catch (std::exception const& failure) {
        Log("The use of a stream's store is not noted: %s", failure.what());
    }
}

void StoreCatalogue::stop() noexcept {
    {
        std::lock_guard const lock(mutex_);
        stopping_ = true;
        changed_.notify_one();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
}

void StoreCatalogue::run() noexcept {
    for (;;) {
        std::deque<std::filesystem::path> stores;
        {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [this] { return stopping_ || !used_.empty(); });
            stores.swap(used_);
        }
        if (stores.empty()) {
            return;
        }
        try {
            if (!database_) {
                openDatabase();
            }
            for (std::filesystem::path const& store : stores) {
                addUnknownStoresOf(store.parent_path());
                note(store);
            }
            makeRoom();
        } catch (std::exception const& failure) {
            database_.reset();
            Log("The catalogue of the streams' stores cannot be used: %s", failure.what());
        }
    }
}

void StoreCatalogue::openDatabase() {
    auto const open = [this] {
        auto database = std::make_unique<Database>(file_, Database::Sync::normal);
        database->execute("CREATE TABLE IF NOT EXISTS store ("
                          "path TEXT PRIMARY KEY, used_us INTEGER NOT NULL) WITHOUT ROWID");
        if (database->schemaVersion() == 0) {
            database->setSchemaVersion(schema);
        }
        return database;
    };
    try {
        database_ = open();
    } catch (DatabaseError const& error) {
        if (!error.isDamage()) {
            throw;
        }
        // Nothing in it is worth keeping: the folders tell what there is.
        for (char const* const part : {"", "-wal", "-shm"}) {
            std::error_code ignored;
            std::filesystem::remove(std::filesystem::path(file_).concat(part), ignored);
        }
        seenFolders_.clear();
        database_ = open();
    }
}

void StoreCatalogue::addUnknownStoresOf(std::filesystem::path const& folder) {
    if (!seenFolders_.insert(folder).second) {
        return;
    }
    Transaction transaction(*database_);
    Statement add = database_->prepare("INSERT OR IGNORE INTO store (path, used_us) VALUES (?, ?)");
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string const name = entry->path().native();
        if (!name.ends_with(indexSuffix)) {
            continue;
        }
        // Another program may name its files so too: they are not ours to remove.
        std::string const store = name.substr(0, name.size() - std::string_view(".idx").size());
        if (DiskBlockStore::isStore(store)) {
            add.bind(1, std::string_view(store)).bind(2, modified_us(entry->path())).run();
        }
    }
    transaction.commit();
}

void StoreCatalogue::note(std::filesystem::path const& store) {
    lastUse_ = std::max(lastUse_ + 1, now_us()); // two uses are never at the same moment
    Statement note = database_->prepare("INSERT INTO store (path, used_us) VALUES (?, ?) "
                                        "ON CONFLICT (path) DO UPDATE SET used_us = excluded.used_us");
    note.bind(1, std::string_view(store.native())).bind(2, lastUse_).run();
}

void StoreCatalogue::makeRoom() {
    struct Entry {
        std::filesystem::path path;
        std::uint64_t size_bytes = 0;
    };
    std::vector<Entry> entries;
    std::uint64_t sum = 0;
    {
        Statement all = database_->prepare("SELECT path FROM store ORDER BY used_us");
        while (all.step()) {
            Entry entry{std::string(all.text(0)), 0};
            entry.size_bytes =
                allocated_bytes(entry.path) + allocated_bytes(DiskBlockStore::indexOf(entry.path));
            sum += entry.size_bytes;
            entries.push_back(std::move(entry));
        }
    }
    Statement forget = database_->prepare("DELETE FROM store WHERE path = ?");
    for (Entry const& entry : entries) {
        bool const isGone = entry.size_bytes == 0;
        if (!isGone && (sum <= limit_bytes_ || !DiskBlockStore::remove(entry.path))) {
            continue;
        }
        sum -= entry.size_bytes;
        forget.bind(1, std::string_view(entry.path.native())).run();
    }
}

} // namespace engine
