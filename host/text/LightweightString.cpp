#include "host/text/LightweightString.h"

#include <new>

#include "host/os/OS.h"

namespace Zq {

TextBuffer* TextBuffer::allocate(std::size_t bytes) noexcept {
    void* const memory = OS().memory().allocate(sizeof(TextBuffer) + bytes);
    return memory != nullptr ? new (memory) TextBuffer{RefCount{1}} : nullptr;
}

void TextBuffer::free(TextBuffer* buffer) noexcept {
    OS().memory().free(buffer);
}

} // namespace Zq
