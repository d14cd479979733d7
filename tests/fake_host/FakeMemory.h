// Memory that counts what is out and can refuse.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>

#include "host/os/OS.h"

namespace fake {

// Thread: any.
class Memory final : public iMemory {
public:
    void* allocate(std::size_t size) noexcept override {
        long const left = refuseAfter_.load();
        if (left >= 0 && refuseAfter_.fetch_sub(1) == 0) {
            return nullptr;
        }
        if (size == refusedSize_.load()) {
            return nullptr;
        }
        live_.fetch_add(1);
        return std::malloc(size);
    }
    void free(void* memory) noexcept override {
        if (memory != nullptr) {
            live_.fetch_sub(1);
            std::free(memory);
        }
    }

    // Lets `count` allocations pass and refuses the one after them, once.
    void refuseAfter(long count) { refuseAfter_ = count; }
    // Refuses every allocation of exactly this size; 0 refuses none.
    void refuseSize(std::size_t size) { refusedSize_ = size; }
    [[nodiscard]] long liveAllocations() const { return live_; }

private:
    std::atomic<long> refuseAfter_{-1};
    std::atomic<std::size_t> refusedSize_{0};
    std::atomic<long> live_{0};
};

} // namespace fake
