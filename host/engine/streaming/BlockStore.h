// Where the blocks of one remote file are kept.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "host/engine/streaming/ByteRange.h"
#include "host/engine/streaming/StoreHeader.h"

namespace engine {

// Thread: any. While one thread resets the store, what another reads from it may be of either content: its
// caller tells by the file's generation.
class iBlockStore {
public:
    virtual ~iBlockStore() = default;

    // Drops every block and begins anew with that head. False when it cannot be written.
    [[nodiscard]] virtual bool reset(StoreHeader const& header) = 0;
    // Notes what was learnt about the file; the blocks stay.
    virtual void note(StoreHeader const& header) = 0;
    // Copies bytes from the position on, as far as blocks are there without a gap. 0 where the first one is
    // absent or turns out to be damaged; a damaged one is absent from then on.
    [[nodiscard]] virtual std::size_t read(std::uint64_t position, std::span<char> out) = 0;
    // For `count` blocks from the first one on, whether each is there.
    [[nodiscard]] virtual std::vector<bool> presence(std::uint64_t first, std::size_t count) = 0;
    // Keeps a whole block. False when it cannot be kept at all.
    [[nodiscard]] virtual bool put(std::uint64_t block, std::string_view bytes) = 0;
    // True when every block is there.
    [[nodiscard]] virtual bool isComplete() = 0;
    // True when what is put stays however much is put.
    [[nodiscard]] virtual bool keepsAll() const noexcept = 0;
};

} // namespace engine
