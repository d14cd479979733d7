#include "host/engine/files/LocalFile.h"

#include <cerrno>
#include <limits>

#include <sys/stat.h>
#include <unistd.h>

#include "host/log/Log.h"

namespace engine {

LocalFile::~LocalFile() {
    if (!note_) {
        return;
    }
    if (transfer_ && getSize() < transfer_->announced_bytes()) {
        releaseBehindEnd(opened_.get());
    }
    bool const onDisk = ::fdatasync(opened_.get()) == 0;
    if (!onDisk) {
        Log("A written file could not be brought to disk (error %d); it is removed at the next start", errno);
    }
    if (transfer_) {
        transfer_->closed(std::move(*note_), onDisk);
    } else if (onDisk) {
        note_->finish();
    }
}

bool LocalFile::write(void const* bytes, std::uint32_t size) {
    return opened_.writeAll(bytes, size) && (!transfer_ || behind_.wrote(opened_.get(), size));
}

std::int64_t LocalFile::read(void* bytes, std::uint32_t size) {
    std::uint32_t filled = 0;
    while (filled < size) {
        ssize_t const count = ::read(opened_.get(), static_cast<char*>(bytes) + filled, size - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<std::uint32_t>(count);
    }
    return filled;
}

bool LocalFile::setPosition(std::uint64_t position) {
    return position <= getSize() && ::lseek(opened_.get(), static_cast<off_t>(position), SEEK_SET) >= 0;
}

std::uint64_t LocalFile::getPosition() {
    off_t const position = ::lseek(opened_.get(), 0, SEEK_CUR);
    return position >= 0 ? static_cast<std::uint64_t>(position) : 0;
}

std::uint64_t LocalFile::getSize() {
    struct stat status {};
    return ::fstat(opened_.get(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

} // namespace engine
