// Blocks on disk: a sparse file that has each byte at its own place, and beside it an index with a head and a
// checksum for each block.
//
// A block's bytes are written before its word in the index, and a block that this process did not write is
// checked when it is first read. So nothing needs to be synced, and a process or a machine that ends at any
// moment costs at most some blocks.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>

#include "host/engine/files/FileDescriptor.h"
#include "host/engine/streaming/BlockStore.h"
#include "host/engine/streaming/SparseBits.h"

namespace engine {

class DiskBlockStore final : public iBlockStore {
public:
    // Null when the files cannot be opened or made, and when another store has them open, in this process or
    // in another one.
    [[nodiscard]] static std::unique_ptr<DiskBlockStore> open(std::filesystem::path const& path);
    // The index that belongs to a file of blocks.
    [[nodiscard]] static std::filesystem::path indexOf(std::filesystem::path const& path);
    // True where the index is one of these, whoever has it open.
    [[nodiscard]] static bool isStore(std::filesystem::path const& path);
    // Removes both files unless they are open. True when they are gone.
    [[nodiscard]] static bool remove(std::filesystem::path const& path);

    DiskBlockStore(FileDescriptor data, FileDescriptor index) noexcept
        : data_(std::move(data)), index_(std::move(index)) {}

    // What the index says about the blocks as it was opened; nothing where it says nothing sound.
    [[nodiscard]] std::optional<StoreHeader> header() const;

    [[nodiscard]] bool reset(StoreHeader const& header) override;
    void note(StoreHeader const& header) override;
    [[nodiscard]] std::size_t read(std::uint64_t position, std::span<char> out) override;
    [[nodiscard]] std::vector<bool> presence(std::uint64_t first, std::size_t count) override;
    [[nodiscard]] bool put(std::uint64_t block, std::string_view bytes) override;
    [[nodiscard]] bool isComplete() override;
    [[nodiscard]] bool keepsAll() const noexcept override { return true; }
    // Makes the blocks of the head that was found usable; without it, and before reset, nothing is there.
    void keep(StoreHeader const& header);

private:
    [[nodiscard]] bool isSound(std::uint64_t block, std::uint64_t total);
    void distrust(std::uint64_t block);

    FileDescriptor const data_;
    FileDescriptor const index_;
    std::mutex mutex_;
    SparseBits checked_; // blocks that this process has written or checked
    std::uint64_t total_bytes_ = 0;
    std::uint64_t epoch_ = 0; // rises with each reset
};

} // namespace engine
