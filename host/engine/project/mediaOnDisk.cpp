#include "host/engine/project/mediaOnDisk.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/engine/files/FileDescriptor.h"
#include "host/engine/files/LocalPath.h"

namespace engine {

namespace {

std::string reason(std::filesystem::path const& path) {
    return path.native() + ": " + std::strerror(errno);
}

bool isRegular(std::filesystem::path const& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// What cannot be written, such as a disc, has nothing to put on disk.
bool putOnDisk(int descriptor) {
    return ::fsync(descriptor) == 0 || errno == EINVAL || errno == EROFS;
}

bool isNowhere(int error) {
    return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

// Without replacing what bears the name already.
bool renameTo(std::filesystem::path const& from, std::filesystem::path const& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    // A file system that cannot do it in one step.
    struct stat status {};
    if (::lstat(to.c_str(), &status) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

std::string putOnDisk(WideString const& path) {
    std::filesystem::path const file = localPath(path);
    if (file.empty()) {
        return {};
    }
    FileDescriptor const opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!opened) {
        return isNowhere(errno) ? std::string() : reason(file);
    }
    struct stat status {};
    if (::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    std::error_code error;
    std::filesystem::path const real = std::filesystem::canonical(file, error);
    std::filesystem::path const folder = error ? std::filesystem::path(".") : real.parent_path();
    FileDescriptor const parent(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!putOnDisk(opened.get()) || !parent || !putOnDisk(parent.get())) {
        return reason(file);
    }
    return {};
}

std::filesystem::path setRefusedAside(WideString const& path) {
    std::filesystem::path const file = localPath(path);
    if (file.empty() || !isRegular(file)) {
        return {};
    }
    std::string const base = file.native() + ".refused";
    std::filesystem::path target = base;
    for (int i = 2; !renameTo(file, target); ++i) {
        if (errno != EEXIST) {
            return {};
        }
        target = base + "-" + std::to_string(i);
    }
    return target;
}

} // namespace engine
