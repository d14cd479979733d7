// What the module needs of the operating system itself: one thread-local slot and a local heap.
//
// A small border of its own so that the failure of each call can be driven.
#pragma once

#include <cstddef>

namespace platform {

// The module has one slot. Thread: loader for these two.
[[nodiscard]] bool allocateSlot() noexcept;
void freeSlot() noexcept;

// The calling thread's pointer in the slot; null on a thread that has set none. Thread: any.
[[nodiscard]] void* getSlot() noexcept;
void setSlot(void* block) noexcept;

// Zeroed bytes of the local heap, null when there are none. Thread: any.
[[nodiscard]] void* allocateLocal(std::size_t bytes) noexcept;
void freeLocal(void* block) noexcept;

} // namespace platform
