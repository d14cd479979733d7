#include "host/engine/files/DiskSpace.h"

#include <cerrno>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace engine {

namespace {

// For the host's own databases and log, among others.
constexpr std::uint64_t leftOver_bytes = std::uint64_t{8} << 20;
constexpr std::uint64_t window_bytes = std::uint64_t{8} << 20;
constexpr std::uint64_t underWay_bytes = std::uint64_t{32} << 20;
constexpr std::uint64_t statBlock_bytes = 512;

std::string inMiB(std::uint64_t bytes) {
    return std::to_string(bytes >> 20) + " MiB";
}

} // namespace

std::string explainNoRoom(std::filesystem::path const& file, std::uint64_t length_bytes) {
    struct stat old {};
    bool const replaces = ::stat(file.c_str(), &old) == 0 && S_ISREG(old.st_mode);
    std::filesystem::path const folder = file.has_parent_path() ? file.parent_path() : ".";
    struct statvfs disk {};
    if (::statvfs(replaces ? file.c_str() : folder.c_str(), &disk) != 0) {
        return {}; // not known: opening the file will tell
    }
    std::uint64_t room = std::uint64_t{disk.f_bavail} * disk.f_frsize;
    if (replaces && old.st_nlink == 1) {
        room += static_cast<std::uint64_t>(old.st_blocks) * statBlock_bytes;
    }
    if (room >= leftOver_bytes && room - leftOver_bytes >= length_bytes) {
        return {};
    }
    return "it takes " + inMiB(length_bytes) + ", and of " + inMiB(room) + " on its disk " +
           inMiB(leftOver_bytes) + " are left free";
}

bool reserveSpace(int file, std::uint64_t length_bytes) noexcept {
    if (length_bytes == 0) {
        return true;
    }
    if (length_bytes > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
        return false;
    }
    int result = 0;
    do {
        result = ::fallocate(file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(length_bytes));
    } while (result != 0 && errno == EINTR);
    return result == 0 || (errno != ENOSPC && errno != EDQUOT && errno != EFBIG);
}

bool WriteBehind::wrote(int file, std::uint64_t bytes) noexcept {
    written_bytes_ += bytes;
    if (written_bytes_ - begun_bytes_ < window_bytes) {
        return true;
    }
    auto const offset = [](std::uint64_t value) { return static_cast<off_t>(value); };
    int result = ::sync_file_range(file, offset(begun_bytes_), offset(written_bytes_ - begun_bytes_),
                                   SYNC_FILE_RANGE_WRITE);
    begun_bytes_ = written_bytes_;
    if (result == 0 && begun_bytes_ > underWay_bytes) {
        result =
            ::sync_file_range(file, 0, offset(begun_bytes_ - underWay_bytes), SYNC_FILE_RANGE_WAIT_BEFORE);
    }
    // An error that is told here is not told again when the file is closed. Some file systems cannot do this.
    return result == 0 || (errno != EIO && errno != ENOSPC && errno != EDQUOT);
}

void releaseBehindEnd(int file) noexcept {
    struct stat status {};
    if (::fstat(file, &status) == 0) {
        // Cutting a file to the length that it has frees the blocks behind it. Without success they stay
        // taken until the file is deleted.
        [[maybe_unused]] int const ignored = ::ftruncate(file, status.st_size);
    }
}

} // namespace engine
