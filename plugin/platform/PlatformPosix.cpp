#include "plugin/platform/Platform.h"

#include <cstdlib>

#include <pthread.h>

namespace platform {

namespace {
pthread_key_t slot;
}

// Without a destructor: one would run code of this module on threads that outlive it.
bool allocateSlot() noexcept {
    return pthread_key_create(&slot, nullptr) == 0;
}
void freeSlot() noexcept {
    pthread_key_delete(slot);
}
void* getSlot() noexcept {
    return pthread_getspecific(slot);
}
void setSlot(void* block) noexcept {
    pthread_setspecific(slot, block);
}
void* allocateLocal(std::size_t bytes) noexcept {
    return std::calloc(1, bytes);
}
void freeLocal(void* block) noexcept {
    std::free(block);
}

} // namespace platform
