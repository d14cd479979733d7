// The module's operating system, in memory: slots and blocks are counted and can be refused.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <set>
#include <thread>

namespace fake {

// Stands behind plugin/platform/Platform.h in the test executable. Thread: any.
class Platform {
public:
    static Platform& instance();

    // Begins anew: nothing allocated, nothing refused.
    void reset();

    bool refuseSlot = false;
    bool refuseBlocks = false;

    [[nodiscard]] bool slotAllocated() const;
    [[nodiscard]] std::size_t liveBlocks() const;
    // Size of the block last allocated, and whether all its bytes were 0.
    [[nodiscard]] std::size_t lastBlockBytes() const;

    bool allocateSlot();
    void freeSlot();
    void* getSlot() const;
    void setSlot(void* block);
    void* allocateLocal(std::size_t bytes);
    void freeLocal(void* block);

private:
    mutable std::mutex mutex_;
    bool slotAllocated_ = false;
    std::map<std::thread::id, void*> slots_;
    std::set<void*> blocks_;
    std::size_t lastBlockBytes_ = 0;
};

} // namespace fake
