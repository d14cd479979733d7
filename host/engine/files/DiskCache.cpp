#include "host/engine/files/DiskCache.h"

#include <algorithm>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/crypto/Digest.h"
#include "host/engine/files/LocalPath.h"
#include "host/engine/files/WholeFile.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

constexpr std::time_t staleAfter_s = 3600;

struct Entry {
    std::filesystem::path path;
    timespec used;
    std::uint64_t size_bytes;
};

bool isEntryName(std::string_view name) {
    return name.size() == 64 && name.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// The entries of the folder. Removes what a killed process left unfinished.
std::vector<Entry> entriesOf(std::filesystem::path const& folder) {
    std::vector<Entry> entries;
    std::error_code error;
    std::time_t const now = std::time(nullptr);
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string const name = entry->path().filename().native();
        struct stat status {};
        if (::lstat(entry->path().c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
            continue;
        }
        if (isEntryName(name)) {
            entries.push_back({entry->path(), status.st_mtim, static_cast<std::uint64_t>(status.st_size)});
        } else if (name.starts_with(unfinishedPrefix) && status.st_mtim.tv_sec < now - staleAfter_s) {
            ::unlink(entry->path().c_str());
        }
    }
    return entries;
}

bool isOlder(Entry const& a, Entry const& b) {
    return a.used.tv_sec != b.used.tv_sec ? a.used.tv_sec < b.used.tv_sec : a.used.tv_nsec < b.used.tv_nsec;
}

bool makeFolder(std::filesystem::path const& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    return ::access(folder.c_str(), W_OK | X_OK) == 0;
}

} // namespace

DiskCache::DiskCache(std::filesystem::path const& folder, std::uint64_t limit_bytes)
    : fetched_(folder / "fetched"), partial_(folder / "partial"), limit_bytes_(limit_bytes),
      unseen_bytes_(limit_bytes) {
    (void)makeFolder(fetched_);
    (void)makeFolder(partial_);
}

std::filesystem::path DiskCache::pathOf(WideString const& key) const {
    return fetched_ / sha256Hex(toUTF8(key).view());
}

WideString DiskCache::find(WideString const& key) {
    std::filesystem::path const path = pathOf(key);
    struct stat status {};
    // A file without content is one that a power cut emptied.
    if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size == 0) {
        return {};
    }
    ::utimensat(AT_FDCWD, path.c_str(), nullptr, 0);
    return wideText(path);
}

WideString DiskCache::store(WideString const& key, void const* bytes, std::size_t size) {
    if (size == 0 || size > limit_bytes_ || !makeFolder(fetched_)) {
        return {};
    }
    std::filesystem::path const path = pathOf(key);
    std::string_view const content(static_cast<char const*>(bytes), size);
    if (!writeWholeFile(path, content, Durability::cache)) {
        return {};
    }
    std::lock_guard const lock(mutex_);
    makeRoom(size, path);
    return wideText(path);
}

void DiskCache::makeRoom(std::uint64_t added, std::filesystem::path const& justStored) {
    size_bytes_ += added;
    unseen_bytes_ += added;
    // A look now and then even within the limit: other processes add too.
    if (size_bytes_ <= limit_bytes_ && unseen_bytes_ <= limit_bytes_ / 16) {
        return;
    }
    std::vector<Entry> entries = entriesOf(fetched_);
    std::ranges::sort(entries, isOlder);
    size_bytes_ = 0;
    for (Entry const& entry : entries) {
        size_bytes_ += entry.size_bytes;
    }
    unseen_bytes_ = 0;
    // Going a little below the limit lets the next stores pass without a look.
    std::uint64_t const target = size_bytes_ > limit_bytes_ ? limit_bytes_ - limit_bytes_ / 16 : limit_bytes_;
    for (Entry const& entry : entries) {
        if (size_bytes_ <= target) {
            break;
        }
        if (entry.path != justStored && ::unlink(entry.path.c_str()) == 0) {
            size_bytes_ -= entry.size_bytes;
        }
    }
}

WideString DiskCache::partialFolder() {
    return makeFolder(partial_) ? wideText(partial_) : WideString();
}

} // namespace engine
