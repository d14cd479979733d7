// A record on disk of the files that are being written, so that a file that a killed host left short is not
// taken for a whole one later.
//
// Each such file has a note of its own in the journal's folder, locked for as long as its writer lives: the
// system gives the lock back when a process ends, however it ends.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "host/engine/files/FileDescriptor.h"

namespace engine {

class WriteJournal {
public:
    // The note on one file that is being written.
    class Note {
    public:
        Note() = default;
        // The file is whole: takes the note out of the journal. Without this call the note stays, and the
        // file counts as cut short from the end of this object on.
        void finish();

    private:
        friend class WriteJournal;
        Note(std::filesystem::path where, FileDescriptor lock)
            : where_(std::move(where)), lock_(std::move(lock)) {}
        std::filesystem::path where_;
        FileDescriptor lock_;
    };

    // Keeps its notes in that folder, which is made when it is first needed.
    explicit WriteJournal(std::filesystem::path folder) : folder_(std::move(folder)) {}

    // Notes that the file is about to be written; on disk on return. Nothing where the note cannot be made.
    // Thread: any.
    [[nodiscard]] std::optional<Note> begin(std::filesystem::path const& file) const;

    // Takes out of the journal what was noted of that file by writers that have ended: for when the file is
    // gone, was replaced by a whole one, or has been emptied to be written anew. Thread: any.
    void forgetEnded(std::filesystem::path const& file) const;

    // Removes every file whose writer has ended before it was whole, with its note, and gives their paths.
    // Files that a living process writes stay. Thread: any.
    std::vector<std::filesystem::path> removeUnfinished() const;

private:
    // A note whose writer has ended.
    struct Ended {
        std::filesystem::path where;
        std::filesystem::path target;
    };

    [[nodiscard]] FileDescriptor lockFolder() const;
    // Needs the folder's lock.
    [[nodiscard]] std::vector<Ended> takeEnded() const;

    std::filesystem::path folder_;
};

} // namespace engine
