#include "apps/zq/panel/CacheFolder.h"

#include <string_view>
#include <system_error>
#include <vector>

#include <sys/stat.h>

#include "host/engine/streaming/DiskBlockStore.h"

namespace zq::panel {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view indexSuffix = ".idx";

// What a file takes up, holes left out.
std::uint64_t allocated_bytes(fs::path const& file) {
    constexpr std::uint64_t block_bytes = 512;
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)
               ? static_cast<std::uint64_t>(status.st_blocks) * block_bytes
               : 0;
}

std::vector<fs::path> filesOf(fs::path const& folder) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        files.push_back(entry->path());
    }
    return files;
}

bool isFetched(fs::path const& file) {
    std::string const name = file.filename().native();
    constexpr std::size_t digestLength = 64;
    return name.size() == digestLength && name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

} // namespace

std::uint64_t cacheSize(fs::path const& folder) {
    std::uint64_t sum = 0;
    for (char const* const part : {"fetched", "partial"}) {
        for (fs::path const& file : filesOf(folder / part)) {
            sum += allocated_bytes(file);
        }
    }
    return sum;
}

std::uint64_t clearCacheFolder(fs::path const& folder) {
    std::uint64_t freed = 0;
    for (fs::path const& file : filesOf(folder / "fetched")) {
        std::uint64_t const size = allocated_bytes(file);
        std::error_code error;
        if (isFetched(file) && fs::remove(file, error)) {
            freed += size;
        }
    }
    for (fs::path const& index : filesOf(folder / "partial")) {
        std::string const name = index.native();
        if (!name.ends_with(indexSuffix)) {
            continue;
        }
        fs::path const store = name.substr(0, name.size() - indexSuffix.size());
        std::uint64_t const size = allocated_bytes(store) + allocated_bytes(index);
        // Another program may name its files so too.
        if (engine::DiskBlockStore::isStore(store) && engine::DiskBlockStore::remove(store)) {
            freed += size;
        }
    }
    return freed;
}

} // namespace zq::panel
