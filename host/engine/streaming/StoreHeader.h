// The head of a store's index: which file of which server its blocks belong to.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/engine/streaming/ContentState.h"

namespace engine {

struct StoreHeader {
    static constexpr std::size_t size_bytes = 4096;

    std::string remoteName; // without what signs an address
    std::string identity;   // digest of server and path, 64 hexadecimal digits
    ContentState content;
    std::uint64_t generation = 0;   // rises whenever the blocks were dropped
    std::int64_t validatedAt_s = 0; // Unix seconds
    bool indexInFront = false;      // the file's own index stands before its media

    // The bytes of the head, with a checksum of their own.
    [[nodiscard]] std::string encode() const;
    // Nothing for bytes that are no such head, or one that was written half.
    [[nodiscard]] static std::optional<StoreHeader> decode(std::string_view bytes);
};

} // namespace engine
