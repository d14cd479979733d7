#include "host/engine/files/FileDescriptor.h"

#include <cerrno>

#include <unistd.h>

namespace engine {

FileDescriptor::~FileDescriptor() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

bool FileDescriptor::writeAll(void const* bytes, std::size_t size) const noexcept {
    auto const* next = static_cast<char const*>(bytes);
    while (size > 0) {
        ssize_t const written = ::write(descriptor_, next, size);
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        next += written;
        size -= static_cast<std::size_t>(written);
    }
    return true;
}

} // namespace engine
