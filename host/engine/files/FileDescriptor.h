// An open file of the system, closed by its owner's end.
#pragma once

#include <cstddef>
#include <utility>

namespace engine {

class FileDescriptor {
public:
    FileDescriptor() = default;
    // -1 stands for none.
    explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~FileDescriptor();

    [[nodiscard]] int get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }

    // Writes all bytes, also where the system takes them in pieces; false on an error.
    [[nodiscard]] bool writeAll(void const* bytes, std::size_t size) const noexcept;

private:
    int descriptor_ = -1;
};

} // namespace engine
