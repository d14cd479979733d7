#include "host/engine/files/WholeFile.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/crypto/Digest.h"
#include "host/engine/files/FileDescriptor.h"

namespace engine {

namespace {

std::string unfinishedName() {
    return std::string(unfinishedPrefix) + randomHex(8);
}

} // namespace

std::optional<std::string> readWholeFile(std::filesystem::path const& file, std::size_t limit_bytes) {
    FileDescriptor const opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!opened || ::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::size_t>(status.st_size) > limit_bytes) {
        return std::nullopt;
    }
    // One byte more than announced tells the end from a file that is growing.
    std::string content(static_cast<std::size_t>(status.st_size) + 1, '\0');
    std::size_t filled = 0;
    for (;;) {
        ssize_t const count = ::read(opened.get(), content.data() + filled, content.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            content.resize(filled);
            return content;
        }
        filled += static_cast<std::size_t>(count);
        if (filled > limit_bytes) {
            return std::nullopt;
        }
        if (filled == content.size()) {
            content.resize(content.size() * 2);
        }
    }
}

bool writeWholeFile(std::filesystem::path const& file, std::string_view content, Durability durability,
                    Readers readers) {
    std::filesystem::path const unfinished = file.parent_path() / unfinishedName();
    int const flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    bool written = false;
    {
        FileDescriptor const opened(
            ::open(unfinished.c_str(), flags, readers == Readers::owner ? 0600 : 0644));
        if (!opened) {
            return false;
        }
        written = opened.writeAll(content.data(), content.size()) &&
                  (durability == Durability::cache || ::fsync(opened.get()) == 0);
    }
    std::error_code error;
    if (written) {
        std::filesystem::rename(unfinished, file, error);
    }
    if (!written || error) {
        std::filesystem::remove(unfinished, error);
        return false;
    }
    if (durability == Durability::synced) {
        FileDescriptor const folder(::open(file.parent_path().empty() ? "." : file.parent_path().c_str(),
                                           O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return folder && ::fsync(folder.get()) == 0;
    }
    return true;
}

} // namespace engine
