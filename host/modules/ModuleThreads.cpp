#include "host/modules/ModuleThreads.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace Zq {

namespace {

struct Modules {
    std::mutex mutex;
    std::vector<ModuleNotification> attached;
    bool refused = false;
};

// Never destroyed: a module that is still loaded when the program ends detaches after the destructors of this
// library have run.
Modules& modules() noexcept {
    alignas(Modules) static unsigned char storage[sizeof(Modules)];
    static Modules* const all = ::new (static_cast<void*>(storage)) Modules;
    return *all;
}

void notifyAll(ModuleReason reason) noexcept {
    // The list is held while modules are told, so that none of them is unloaded in the middle of its call.
    std::lock_guard const lock(modules().mutex);
    for (ModuleNotification const notification : modules().attached) {
        notification(reason);
    }
}

} // namespace

void attachModule(ModuleNotification notification) noexcept {
    std::lock_guard const lock(modules().mutex);
    if (notification(ModuleReason::processAttach)) {
        modules().attached.push_back(notification);
    } else {
        modules().refused = true;
    }
}

void detachModule(ModuleNotification notification) noexcept {
    std::lock_guard const lock(modules().mutex);
    auto const found = std::ranges::find(modules().attached, notification);
    if (found != modules().attached.end()) {
        modules().attached.erase(found);
        notification(ModuleReason::processDetach);
    }
}

bool takeRefusal() noexcept {
    std::lock_guard const lock(modules().mutex);
    return std::exchange(modules().refused, false);
}

ThreadAttachment::ThreadAttachment() noexcept {
    notifyAll(ModuleReason::threadAttach);
}

ThreadAttachment::~ThreadAttachment() {
    notifyAll(ModuleReason::threadDetach);
}

} // namespace Zq
