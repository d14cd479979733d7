// The cache of fetched things as files, each named by the digest of its key.
//
// Several processes may use one folder: files appear whole, and whoever finds the folder too large removes
// what was used longest ago. A file's modification time is its last use.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>

#include "host/files/iCacheStore.h"

namespace engine {

// Thread: any.
class DiskCache final : public iCacheStore {
public:
    // "fetched" and "partial" below the folder are made where they are not there. What `fetched` holds stays
    // within the limit, apart from what other processes have added since this one last looked.
    DiskCache(std::filesystem::path const& folder, std::uint64_t limit_bytes);

    WideString find(WideString const& key) override;
    // Empty also for no bytes and for more than the limit.
    WideString store(WideString const& key, void const* bytes, std::size_t size) override;
    WideString partialFolder() override;

private:
    [[nodiscard]] std::filesystem::path pathOf(WideString const& key) const;
    void makeRoom(std::uint64_t added, std::filesystem::path const& justStored);

    std::filesystem::path const fetched_;
    std::filesystem::path const partial_;
    std::uint64_t const limit_bytes_;
    std::mutex mutex_;
    std::uint64_t size_bytes_ = 0; // at the last look, and what was added since
    std::uint64_t unseen_bytes_;   // added since the last look
};

} // namespace engine
