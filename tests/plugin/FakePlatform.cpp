#include "tests/plugin/FakePlatform.h"

#include <cstdlib>

#include "plugin/platform/Platform.h"

namespace fake {

Platform& Platform::instance() {
    static Platform platform;
    return platform;
}

void Platform::reset() {
    std::lock_guard const lock(mutex_);
    for (void* const block : blocks_) {
        std::free(block);
    }
    blocks_.clear();
    slots_.clear();
    slotAllocated_ = false;
    refuseSlot = false;
    refuseBlocks = false;
    lastBlockBytes_ = 0;
}

bool Platform::slotAllocated() const {
    std::lock_guard const lock(mutex_);
    return slotAllocated_;
}

std::size_t Platform::liveBlocks() const {
    std::lock_guard const lock(mutex_);
    return blocks_.size();
}

std::size_t Platform::lastBlockBytes() const {
    std::lock_guard const lock(mutex_);
    return lastBlockBytes_;
}

bool Platform::allocateSlot() {
    std::lock_guard const lock(mutex_);
    slotAllocated_ = !refuseSlot;
    return slotAllocated_;
}

void Platform::freeSlot() {
    std::lock_guard const lock(mutex_);
    slotAllocated_ = false;
    slots_.clear();
}

void* Platform::getSlot() const {
    std::lock_guard const lock(mutex_);
    auto const found = slots_.find(std::this_thread::get_id());
    return found != slots_.end() ? found->second : nullptr;
}

void Platform::setSlot(void* block) {
    std::lock_guard const lock(mutex_);
    slots_[std::this_thread::get_id()] = block;
}

void* Platform::allocateLocal(std::size_t bytes) {
    std::lock_guard const lock(mutex_);
    if (refuseBlocks) {
        return nullptr;
    }
    lastBlockBytes_ = bytes;
    void* const block = std::calloc(1, bytes);
    blocks_.insert(block);
    return block;
}

void Platform::freeLocal(void* block) {
    std::lock_guard const lock(mutex_);
    // A block that is not in the set was freed twice; std::free then tells under the sanitizer.
    blocks_.erase(block);
    std::free(block);
}

} // namespace fake

namespace platform {

bool allocateSlot() noexcept {
    return fake::Platform::instance().allocateSlot();
}
void freeSlot() noexcept {
    fake::Platform::instance().freeSlot();
}
void* getSlot() noexcept {
    return fake::Platform::instance().getSlot();
}
void setSlot(void* block) noexcept {
    fake::Platform::instance().setSlot(block);
}
void* allocateLocal(std::size_t bytes) noexcept {
    return fake::Platform::instance().allocateLocal(bytes);
}
void freeLocal(void* block) noexcept {
    fake::Platform::instance().freeLocal(block);
}

} // namespace platform
