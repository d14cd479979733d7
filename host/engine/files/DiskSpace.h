// Room on disk for a file whose length is known before its first byte, and the way of its bytes there.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace engine {

// Empty where a file of that length fits at that place, with a little left over for others on the same disk;
// else one line that says why not. What a file that is there now takes up counts as free: it is to be
// replaced. Thread: any.
[[nodiscard]] std::string explainNoRoom(std::filesystem::path const& file, std::uint64_t length_bytes);

// Reserves the blocks of an open file of that length; its size and content stay as they are. False only where
// the disk, or the user's part of it, has not that much: a file system that cannot reserve reserves nothing.
// Thread: any.
[[nodiscard]] bool reserveSpace(int file, std::uint64_t length_bytes) noexcept;

// Gives back what is reserved behind the end of an open file. Thread: any.
void releaseBehindEnd(int file) noexcept;

// Brings the bytes of a long file to disk while more of them arrive. Else the system keeps gigabytes of them
// in memory, and closing the file waits for all: for minutes, and deaf to the cancelling of its task.
class WriteBehind {
public:
    // So many bytes more were written in order. False when earlier ones could not be brought to disk.
    [[nodiscard]] bool wrote(int file, std::uint64_t bytes) noexcept;

private:
    std::uint64_t written_bytes_ = 0;
    std::uint64_t begun_bytes_ = 0; // on their way to disk
};

} // namespace engine
