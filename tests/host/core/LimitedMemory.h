// Memory that runs out after a stated number of allocations and stays exhausted.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>

#include "host/os/OS.h"
#include "tests/host/core/InstalledHost.h"

// Behind OS() for its life. Thread: one at a time.
class LimitedMemory final : public iMemory {
public:
    LimitedMemory() : installed_(services(*this)) {}

    void* allocate(std::size_t size) noexcept override {
        if (left_ == 0) {
            return nullptr;
        }
        --left_;
        ++allocations_;
        ++live_;
        return std::malloc(size);
    }
    void free(void* memory) noexcept override {
        if (memory != nullptr) {
            --live_;
            std::free(memory);
        }
    }

    void allow(long allocations) { left_ = allocations; }
    [[nodiscard]] long allocations() const { return allocations_; }
    [[nodiscard]] long live() const { return live_; }

private:
    static HostServices services(iMemory& memory) {
        HostServices services;
        services.memory = &memory;
        return services;
    }

    long left_ = std::numeric_limits<long>::max();
    long allocations_ = 0;
    long live_ = 0;
    InstalledHost installed_;
};
