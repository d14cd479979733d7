#include "host/engine/files/copyLocalFile.h"

#include <vector>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/files/FileDescriptor.h"
#include "host/engine/files/ReplacementFile.h"
#include "host/engine/os/isTaskCancelled.h"

namespace engine {

namespace {

constexpr std::size_t block_bytes = std::size_t{1} << 20;

} // namespace

iFileManager::eCopyRC copyLocalFile(std::filesystem::path const& source,
                                    std::filesystem::path const& destination, bool overwrite,
                                    iFileManager::ProgressCallback progress) {
    FileDescriptor const from(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status {};
    if (!from || ::fstat(from.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return iFileManager::eSourceNotOpened;
    }
    if (destination.empty() || (!overwrite && ::access(destination.c_str(), F_OK) == 0)) {
        return iFileManager::eDestinationNotWritten;
    }
    ReplacementFile const replacement(destination);
    if (!replacement.file()) {
        return iFileManager::eDestinationNotWritten;
    }
    std::vector<char> block(block_bytes);
    std::uint64_t done = 0;
    for (;;) {
        if (isTaskCancelled()) {
            return iFileManager::eCancelled;
        }
        ssize_t const count = ::read(from.get(), block.data(), block.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return iFileManager::eTransferFailed;
        }
        if (count == 0) {
            break;
        }
        if (!replacement.file().writeAll(block.data(), static_cast<std::size_t>(count))) {
            return iFileManager::eDestinationNotWritten;
        }
        done += static_cast<std::uint64_t>(count);
        if (progress.function != nullptr) {
            progress.function(progress.context, done, static_cast<std::uint64_t>(status.st_size));
        }
    }
    return replacement.become(destination, overwrite) ? iFileManager::eCopied
                                                      : iFileManager::eDestinationNotWritten;
}

} // namespace engine
