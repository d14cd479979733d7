// A file on disk, as the contract's iFile.
//
// What was written is on disk when the last owner lets go, so that nothing points at a file that a power cut
// would shorten. Its note in the journal goes then too, unless a transfer fills the file: that decides.
#pragma once

#include <optional>

#include "host/engine/files/DiskSpace.h"
#include "host/engine/files/FileDescriptor.h"
#include "host/engine/files/FileTransfer.h"
#include "host/engine/files/WriteJournal.h"
#include "host/files/iFile.h"

namespace engine {

class LocalFile final : public iFile {
public:
    // Takes an open file at position 0, and the note that it is being written; none for a file that is read.
    // `transfer`: what fills it, null where that is no transfer.
    LocalFile(FileDescriptor opened, std::optional<WriteJournal::Note> note, Zq::Ptr<FileTransfer> transfer)
        : note_(std::move(note)), transfer_(std::move(transfer)), opened_(std::move(opened)) {}
    ~LocalFile() override;

    bool write(void const* bytes, std::uint32_t size) override;
    std::int64_t read(void* bytes, std::uint32_t size) override;
    bool setPosition(std::uint64_t position) override;
    std::uint64_t getPosition() override;
    std::uint64_t getSize() override;

private:
    std::optional<WriteJournal::Note> note_;
    Zq::Ptr<FileTransfer> const transfer_;
    FileDescriptor opened_;
    WriteBehind behind_;
};

} // namespace engine
