#include "host/engine/streaming/MemoryBlockStore.h"

#include <algorithm>
#include <cstring>

namespace engine {

bool MemoryBlockStore::reset(StoreHeader const& header) {
    std::lock_guard const lock(mutex_);
    blocks_.clear();
    total_bytes_ = header.content.total_bytes;
    return true;
}

std::size_t MemoryBlockStore::read(std::uint64_t position, std::span<char> out) {
    std::lock_guard const lock(mutex_);
    std::size_t filled = 0;
    while (filled < out.size()) {
        auto const found = blocks_.find(blockOf(position + filled));
        std::size_t const offset = static_cast<std::size_t>((position + filled) % block_bytes);
        if (found == blocks_.end() || found->second.bytes.size() <= offset) {
            break;
        }
        found->second.lastUse = ++uses_;
        std::size_t const count = std::min(found->second.bytes.size() - offset, out.size() - filled);
        std::memcpy(out.data() + filled, found->second.bytes.data() + offset, count);
        filled += count;
    }
    return filled;
}

std::vector<bool> MemoryBlockStore::presence(std::uint64_t first, std::size_t count) {
    std::lock_guard const lock(mutex_);
    std::vector<bool> present(count);
    for (auto block = blocks_.lower_bound(first); block != blocks_.end() && block->first < first + count;
         ++block) {
        present[static_cast<std::size_t>(block->first - first)] = true;
    }
    return present;
}

bool MemoryBlockStore::put(std::uint64_t block, std::string_view bytes) {
    std::lock_guard const lock(mutex_);
    if (blocks_.size() >= mostBlocks_ && !blocks_.contains(block)) {
        auto const older = [](auto const& a, auto const& b) { return a.second.lastUse < b.second.lastUse; };
        blocks_.erase(std::ranges::min_element(blocks_, older));
    }
    blocks_[block] = {std::string(bytes), ++uses_};
    return true;
}

bool MemoryBlockStore::isComplete() {
    std::lock_guard const lock(mutex_);
    return blocks_.size() == blocksIn(total_bytes_);
}

} // namespace engine
