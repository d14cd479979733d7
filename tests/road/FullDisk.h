// A folder on a disk that has hardly any space, for as long as this stands.
#pragma once

#include <csignal>
#include <filesystem>
#include <string>

#include <sys/mount.h>
#include <sys/resource.h>

namespace test {

// Mounts a small file system on the folder where this process may. Where it may not, no file of this process
// grows beyond that size.
class FullDisk {
public:
    FullDisk(std::filesystem::path folder, std::size_t size_bytes) : folder_(std::move(folder)) {
        std::filesystem::create_directories(folder_);
        std::string const size = "size=" + std::to_string(size_bytes);
        isMounted_ = ::mount("tmpfs", folder_.c_str(), "tmpfs", 0, size.c_str()) == 0;
        if (!isMounted_) {
            ::getrlimit(RLIMIT_FSIZE, &before_);
            rlimit limit = before_;
            limit.rlim_cur = size_bytes;
            ::setrlimit(RLIMIT_FSIZE, &limit);
            signalBefore_ = ::signal(SIGXFSZ, SIG_IGN);
        }
    }
    ~FullDisk() {
        if (isMounted_) {
            ::umount2(folder_.c_str(), MNT_DETACH);
        } else {
            ::setrlimit(RLIMIT_FSIZE, &before_);
            ::signal(SIGXFSZ, signalBefore_);
        }
    }
    FullDisk(FullDisk const&) = delete;
    FullDisk& operator=(FullDisk const&) = delete;

private:
    std::filesystem::path const folder_;
    bool isMounted_ = false;
    rlimit before_{};
    void (*signalBefore_)(int) = SIG_DFL;
};

} // namespace test
