#include "host/engine/files/WriteJournal.h"

#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/crypto/Digest.h"
#include "host/engine/files/WholeFile.h"
#include "host/log/Log.h"

namespace engine {

namespace {

constexpr std::size_t longestPath = std::size_t{64} << 10;

bool syncFolder(std::filesystem::path const& folder) {
    FileDescriptor const opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return opened && ::fsync(opened.get()) == 0;
}

} // namespace

void WriteJournal::Note::finish() {
    if (!where_.empty()) {
        std::error_code error;
        std::filesystem::remove(where_, error);
        where_.clear();
    }
}

// Held while a note is made and while the journal is read: a note that is not yet locked is never seen.
FileDescriptor WriteJournal::lockFolder() const {
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    FileDescriptor lock(::open((folder_ / ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (lock && ::flock(lock.get(), LOCK_EX) != 0) {
        return {};
    }
    return lock;
}

std::optional<WriteJournal::Note> WriteJournal::begin(std::filesystem::path const& file) const {
    FileDescriptor const folderLock = lockFolder();
    if (!folderLock) {
        return std::nullopt;
    }
    std::error_code error;
    std::string const target = std::filesystem::absolute(file, error).lexically_normal().native();
    std::filesystem::path const where = folder_ / (randomHex(16) + ".path");
    FileDescriptor note(::open(where.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (error || !note || ::flock(note.get(), LOCK_EX | LOCK_NB) != 0 ||
        !note.writeAll(target.data(), target.size()) || ::fsync(note.get()) != 0 || !syncFolder(folder_)) {
        std::filesystem::remove(where, error);
        return std::nullopt;
    }
    return Note(where, std::move(note));
}

std::vector<WriteJournal::Ended> WriteJournal::takeEnded() const {
    std::vector<Ended> ended;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder_, error), end; !error && entry != end;
         entry.increment(error)) {
        std::filesystem::path const& where = entry->path();
        if (where.extension() != ".path") {
            continue;
        }
        FileDescriptor const note(::open(where.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        if (note && ::flock(note.get(), LOCK_EX | LOCK_NB) == 0) { // else its writer lives
            ended.push_back({where, readWholeFile(where, longestPath).value_or(std::string())});
        }
    }
    return ended;
}

void WriteJournal::forgetEnded(std::filesystem::path const& file) const {
    std::error_code error;
    if (!std::filesystem::is_directory(folder_, error)) {
        return;
    }
    FileDescriptor const folderLock = lockFolder();
    if (!folderLock) {
        return;
    }
    std::filesystem::path const target = std::filesystem::absolute(file, error).lexically_normal();
    for (Ended const& note : takeEnded()) {
        if (note.target == target) {
            std::filesystem::remove(note.where, error);
        }
    }
}

std::vector<std::filesystem::path> WriteJournal::removeUnfinished() const {
    std::vector<std::filesystem::path> removed;
    std::error_code error;
    if (!std::filesystem::is_directory(folder_, error)) {
        return removed;
    }
    FileDescriptor const folderLock = lockFolder();
    if (!folderLock) {
        return removed;
    }
    for (Ended const& note : takeEnded()) {
        struct stat status {};
        bool const isFile =
            !note.target.empty() && ::lstat(note.target.c_str(), &status) == 0 && S_ISREG(status.st_mode);
        if (isFile && ::unlink(note.target.c_str()) == 0) {
            Log("Removed %s: it was cut short when the host last ended", note.target.c_str());
            removed.push_back(note.target);
        }
        std::filesystem::remove(note.where, error);
    }
    return removed;
}

} // namespace engine
