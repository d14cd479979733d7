// Positions in a remote file, and the blocks in which its bytes are kept.
#pragma once

#include <algorithm>
#include <cstdint>

namespace engine {

// From `begin` up to, not including, `end`.
struct ByteRange {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;

    [[nodiscard]] constexpr std::uint64_t size() const noexcept { return end > begin ? end - begin : 0; }
    [[nodiscard]] constexpr bool isEmpty() const noexcept { return end <= begin; }
    [[nodiscard]] constexpr bool contains(std::uint64_t position) const noexcept {
        return begin <= position && position < end;
    }
    [[nodiscard]] constexpr bool meets(ByteRange other) const noexcept {
        return std::max(begin, other.begin) < std::min(end, other.end);
    }
    [[nodiscard]] constexpr bool operator==(ByteRange const&) const noexcept = default;
};

inline constexpr std::uint64_t block_bytes = std::uint64_t{32} << 10;
// What a file system takes, and far from where sums overflow. A longer file is refused.
inline constexpr std::uint64_t largestFile_bytes = std::uint64_t{1} << 43;

[[nodiscard]] constexpr std::uint64_t blockOf(std::uint64_t position) noexcept {
    return position / block_bytes;
}
// The bytes of a block; the last one of a file is shorter.
[[nodiscard]] constexpr ByteRange bytesOfBlock(std::uint64_t block, std::uint64_t total) noexcept {
    return {block * block_bytes, std::min((block + 1) * block_bytes, total)};
}
[[nodiscard]] constexpr std::uint64_t blocksIn(std::uint64_t total) noexcept {
    return (total + block_bytes - 1) / block_bytes;
}

} // namespace engine
