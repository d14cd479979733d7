#include "plugin/ModuleNotification.h"

#include "host/modules/PluginEntry.h"
#include "plugin/Tarn7ZQD.h"
#include "plugin/platform/Platform.h"

namespace {

// Nothing reads the block: each thread has one from its start to its end, as hosts of this kind expect.
constexpr std::size_t threadBlockBytes = 64;

Tarn7ZQD* instance = nullptr;

void allocateThreadBlock() {
    if (void* const block = platform::allocateLocal(threadBlockBytes)) {
        platform::setSlot(block);
    }
}

void freeThreadBlock() {
    if (void* const block = platform::getSlot()) {
        platform::setSlot(nullptr);
        platform::freeLocal(block);
    }
}

bool attachProcess() {
    if (!platform::allocateSlot()) {
        return false;
    }
    if (instance == nullptr) {
        instance = new Tarn7ZQD; // null when the host has no memory; the module then offers nothing
    }
    allocateThreadBlock();
    return true;
}

void detachProcess() {
    delete instance;
    instance = nullptr;
    freeThreadBlock();
    platform::freeSlot();
}

} // namespace

bool moduleNotification(Zq::ModuleReason reason) {
    switch (reason) {
    case Zq::ModuleReason::processAttach:
        return attachProcess();
    case Zq::ModuleReason::threadAttach:
        allocateThreadBlock();
        break;
    case Zq::ModuleReason::threadDetach:
        freeThreadBlock();
        break;
    case Zq::ModuleReason::processDetach:
        detachProcess();
        break;
    }
    return true;
}

extern "C" ZQ_API std::uint8_t zqPluginInstance(ZqPluginBase** plugin) {
    *plugin = instance;
    return instance != nullptr ? instance->isLoaded() : std::uint8_t{0};
}
