#include "host/HostServices.h"

#include <cstdlib>

#include "host/object/HostAllocated.h"
#include "host/object/RefCounts.h"
#include "host/os/OS.h"
#include "host/os/iShell.h"

namespace {

class RuntimeMemory final : public iMemory {
public:
    void* allocate(std::size_t size) noexcept override { return std::malloc(size); }
    void free(void* memory) noexcept override { std::free(memory); }
};

class AtomicRefCounts final : public iRefCounts {
public:
    void add(Zq::RefCount& handle) noexcept override {
        handle.owners.fetch_add(1, std::memory_order_relaxed);
    }
    std::uint32_t release(Zq::RefCount& handle) noexcept override {
        return handle.owners.fetch_sub(1, std::memory_order_acq_rel) - 1;
    }
};

// Never destroyed: text with static lifetime is freed after the destructors of this library have run.
template <class Service>
Service& everlasting() noexcept {
    alignas(Service) static unsigned char storage[sizeof(Service)];
    static Service* const service = ::new (static_cast<void*>(storage)) Service;
    return *service;
}

HostServices services;

// What stays the same is not written: a thread that uses only such services may go on.
template <class... Service>
void changeTo(HostServices const& next, Service* HostServices::*... place) noexcept {
    static_assert(sizeof...(place) * sizeof(void*) == sizeof(HostServices), "every service is in the list");
    ((services.*place != next.*place ? static_cast<void>(services.*place = next.*place) : void()), ...);
}

} // namespace

iMemory::~iMemory() = default;
iRefCounts::~iRefCounts() = default;
iShell::~iShell() = default;

HostServices installHost(HostServices const& next) noexcept {
    HostServices const before = services;
    changeTo(next, &HostServices::memory, &HostServices::refCounts, &HostServices::files,
             &HostServices::shell, &HostServices::security, &HostServices::network,
             &HostServices::preferences, &HostServices::configuration, &HostServices::strings,
             &HostServices::log, &HostServices::json, &HostServices::clock, &HostServices::cache,
             &HostServices::images, &HostServices::tasks, &HostServices::edits, &HostServices::externalIds,
             &HostServices::actions, &HostServices::streams);
    return before;
}

HostServices const& installedHost() noexcept {
    return services;
}

iOS const& OS() noexcept {
    static constexpr iOS root;
    return root;
}

iMemory& iOS::memory() const noexcept {
    return services.memory != nullptr ? *services.memory : everlasting<RuntimeMemory>();
}

iRefCounts& iOS::refCounts() const noexcept {
    return services.refCounts != nullptr ? *services.refCounts : everlasting<AtomicRefCounts>();
}

iFileManager& iOS::fileManager() const noexcept {
    return *services.files;
}

iShell& iOS::shell() const noexcept {
    return *services.shell;
}

namespace Zq {

void addReference(RefCount& handle) noexcept {
    OS().refCounts().add(handle);
}

std::uint32_t releaseReference(RefCount& handle) noexcept {
    return OS().refCounts().release(handle);
}

} // namespace Zq

void* HostAllocated::operator new(std::size_t size) noexcept {
    return OS().memory().allocate(size);
}

void HostAllocated::operator delete(void* memory) noexcept {
    OS().memory().free(memory);
}
