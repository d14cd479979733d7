// Memory that is handed out piece by piece and freed as a whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/object/Api.h"

namespace JSON {

// Thread: one at a time.
class ZQ_API Arena {
public:
    Arena() noexcept = default;
    Arena(Arena&& other) noexcept;
    Arena& operator=(Arena&& other) noexcept;
    ~Arena();

    // Room for `bytes`, aligned for pointers and doubles. Throws std::bad_alloc when the host has no memory.
    [[nodiscard]] void* allocate(std::size_t bytes);
    // A copy of the text that lives as long as the arena.
    [[nodiscard]] std::string_view store(std::string_view text);
    // Makes the next allocations come from one piece of at least this many bytes.
    void reserve(std::size_t bytes);

private:
    struct Chunk {
        Chunk* next;
    };
    Chunk* chunks_ = nullptr;
    std::byte* next_ = nullptr;
    std::size_t left_ = 0;
    std::size_t chunkSize_ = 256;
};

} // namespace JSON
