#include "host/engine/project/ProjectLock.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>

namespace engine {

namespace {

FileDescriptor lock(std::filesystem::path const& file, int operation) {
    FileDescriptor opened(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    int result = opened ? ::flock(opened.get(), operation) : -1;
    while (opened && result != 0 && errno == EINTR) {
        result = ::flock(opened.get(), operation);
    }
    if (result == 0) {
        return opened;
    }
    if (opened && errno == EWOULDBLOCK) {
        return {};
    }
    throw std::system_error(errno, std::generic_category(), "it cannot be locked with " + file.native());
}

} // namespace

FileDescriptor lockForOpening(std::filesystem::path const& project) {
    return lock(project.native() + ".opening", LOCK_EX);
}

FileDescriptor tryToLockForWriting(std::filesystem::path const& project) {
    return lock(project.native() + ".lock", LOCK_EX | LOCK_NB);
}

} // namespace engine
