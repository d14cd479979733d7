#include "apps/tarn7d/PrivateFile.h"

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarn7d {

namespace {

class Descriptor {
public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    [[nodiscard]] int number() const noexcept { return number_; }
    bool close() noexcept {
        int const number = number_;
        number_ = -1;
        return number < 0 || ::close(number) == 0;
    }

private:
    int number_;
};

[[noreturn]] void fail(std::filesystem::path const& file, int error) {
    throw std::runtime_error("cannot write " + file.string() + ": " + std::generic_category().message(error));
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace

void writeFileAtomically(std::filesystem::path const& file, std::string_view bytes, mode_t mode) {
    std::filesystem::path temporary = file;
    temporary += ".new";
    ::unlink(temporary.c_str());
    Descriptor target(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
    if (target.number() < 0) {
        fail(file, errno);
    }
    if (!writeAll(target.number(), bytes) || ::fsync(target.number()) != 0 || !target.close() ||
        ::rename(temporary.c_str(), file.c_str()) != 0) {
        int const error = errno;
        ::unlink(temporary.c_str());
        fail(file, error);
    }
}

std::string readSmallFile(std::filesystem::path const& file, std::size_t limit_bytes) {
    std::ifstream in(file, std::ios::binary);
    std::string bytes(limit_bytes + 1, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    auto const got = static_cast<std::size_t>(in.gcount());
    if (got > limit_bytes) {
        return {};
    }
    bytes.resize(got);
    return bytes;
}

} // namespace tarn7d
