#include "apps/tarn7d/DataFolder.h"

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(char const* what, fs::path const& path, std::string const& why) {
    throw std::runtime_error(std::string(what) + " " + path.string() + ": " + why);
}

std::string reason(int error) {
    return std::generic_category().message(error);
}

} // namespace

void makePrivateFolder(fs::path const& folder) {
    std::error_code error;
    if (fs::create_directories(folder, error)) {
        fs::permissions(folder, fs::perms::owner_all, error);
    }
    if (error || !fs::is_directory(folder, error)) {
        fail("cannot use the data folder", folder, error ? error.message() : "not a folder");
    }
}

DataFolder::DataFolder(fs::path const& folder) {
    makePrivateFolder(folder);
    std::error_code error;
    path_ = fs::canonical(folder, error);
    fs::path const lockFile = path_ / "lock";
    lock_ = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock_ < 0) {
        fail("cannot write in the data folder", folder, reason(errno));
    }
    if (::flock(lock_, LOCK_EX | LOCK_NB) != 0) {
        int const code = errno;
        ::close(lock_);
        fail("cannot use the data folder", folder,
             code == EWOULDBLOCK ? "another tarn7d runs on it" : reason(code));
    }
}

DataFolder::~DataFolder() {
    ::close(lock_);
}

} // namespace tarn7d
