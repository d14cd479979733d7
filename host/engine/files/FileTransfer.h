// What a transfer and the files that it fills know of one another, past a receiver that speaks of neither:
// how much will come before a file is opened for it, and whether all of it came before a file counts as
// whole.
//
// The transfer stands in a Scope while its receiver opens files. Such a file keeps its note in the journal
// until the transfer has ended and is known to be whole, also where the file is closed before that.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "host/engine/files/WriteJournal.h"
#include "host/object/Ptr.h"

namespace engine {

// Thread: any.
class FileTransfer final : public virtual iObject {
public:
    // `announced_bytes`: 0 where the length is not known.
    explicit FileTransfer(std::uint64_t announced_bytes) noexcept : announced_bytes_(announced_bytes) {}

    [[nodiscard]] std::uint64_t announced_bytes() const noexcept { return announced_bytes_; }

    // Ends the transfer, once. What it wrote is whole, and leaves the journal, if everything came and every
    // file that was closed by now is on disk: the result says so. Without a call it is not whole.
    [[nodiscard]] bool end(bool everythingCame) noexcept;
    // A file of the transfer was closed.
    void closed(WriteJournal::Note note, bool onDisk) noexcept;

    // Makes the transfer that of the calling thread.
    class Scope {
    public:
        explicit Scope(Zq::Ptr<FileTransfer> const& transfer) noexcept;
        ~Scope();
        Scope(Scope const&) = delete;
        Scope& operator=(Scope const&) = delete;

    private:
        Zq::Ptr<FileTransfer> const* const outer_;
    };
    // The transfer in whose scope the calling thread stands; null outside of any.
    [[nodiscard]] static Zq::Ptr<FileTransfer> current() noexcept;

private:
    enum class State { running, whole, failed };

    std::uint64_t const announced_bytes_;
    std::mutex mutex_;
    State state_ = State::running;
    std::vector<WriteJournal::Note> closed_; // of files that were closed while the transfer ran
};

} // namespace engine
