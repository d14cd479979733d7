// OS(): the host's platform root. Every service that a plug-in needs of the system is reached from here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/object/Api.h"
#include "host/object/RefCount.h"

class iFileManager;
class iShell;

// Memory for all objects of the program. Thread: any.
class ZQ_API iMemory {
public:
    virtual ~iMemory();
    // Room for `size` bytes, aligned for every fundamental type; null when there is none.
    [[nodiscard]] virtual void* allocate(std::size_t size) noexcept = 0;
    // Null is allowed and does nothing.
    virtual void free(void* memory) noexcept = 0;
};

// Counts of owners. Thread: any.
class ZQ_API iRefCounts {
public:
    virtual ~iRefCounts();
    virtual void add(Zq::RefCount& handle) noexcept = 0;
    // Gives the number of owners that remain. Whoever gets 0 ends the object, and sees all that others did
    // to it.
    [[nodiscard]] virtual std::uint32_t release(Zq::RefCount& handle) noexcept = 0;
};

class ZQ_API iOS {
public:
    // Never fail: without a host in place they are the C runtime's memory and plain atomic counts.
    [[nodiscard]] iMemory& memory() const noexcept;
    [[nodiscard]] iRefCounts& refCounts() const noexcept;
    // Need an installed host.
    [[nodiscard]] iFileManager& fileManager() const noexcept;
    [[nodiscard]] iShell& shell() const noexcept;
};

// Thread: any.
[[nodiscard]] ZQ_API iOS const& OS() noexcept;
