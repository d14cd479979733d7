#include "plugin/platform/Platform.h"

#include <windows.h>

namespace platform {

namespace {
DWORD slot = TLS_OUT_OF_INDEXES;
}

bool allocateSlot() noexcept {
    slot = TlsAlloc();
    return slot != TLS_OUT_OF_INDEXES;
}
void freeSlot() noexcept {
    TlsFree(slot);
}
void* getSlot() noexcept {
    return TlsGetValue(slot);
}
void setSlot(void* block) noexcept {
    TlsSetValue(slot, block);
}
void* allocateLocal(std::size_t bytes) noexcept {
    return LocalAlloc(LPTR, bytes);
}
void freeLocal(void* block) noexcept {
    LocalFree(block);
}

} // namespace platform
