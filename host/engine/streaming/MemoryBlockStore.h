// Blocks in memory, within a bound: for a file that has no store on disk.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "host/engine/streaming/BlockStore.h"

namespace engine {

// What was used longest ago goes first.
class MemoryBlockStore final : public iBlockStore {
public:
    explicit MemoryBlockStore(std::size_t limit_bytes) noexcept
        : mostBlocks_(std::max<std::size_t>(limit_bytes / block_bytes, 1)) {}

    [[nodiscard]] bool reset(StoreHeader const& header) override;
    void note(StoreHeader const&) override {}
    [[nodiscard]] std::size_t read(std::uint64_t position, std::span<char> out) override;
    [[nodiscard]] std::vector<bool> presence(std::uint64_t first, std::size_t count) override;
    [[nodiscard]] bool put(std::uint64_t block, std::string_view bytes) override;
    [[nodiscard]] bool isComplete() override;
    [[nodiscard]] bool keepsAll() const noexcept override { return false; }

private:
    struct Kept {
        std::string bytes;
        std::uint64_t lastUse = 0;
    };

    std::size_t const mostBlocks_;
    std::mutex mutex_;
    std::map<std::uint64_t, Kept> blocks_;
    std::uint64_t total_bytes_ = 0;
    std::uint64_t uses_ = 0;
};

} // namespace engine
