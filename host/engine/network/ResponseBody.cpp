#include "host/engine/network/ResponseBody.h"

#include <algorithm>
#include <cstring>

#include "host/os/OS.h"

namespace engine {

namespace {

constexpr std::size_t smallestBuffer = std::size_t{16} << 10;

} // namespace

ResponseBody::~ResponseBody() {
    OS().memory().free(data_);
}

char const* ResponseBody::getData() const noexcept {
    static constexpr char nothing[padding] = {};
    return data_ != nullptr ? data_ : nothing;
}

bool ResponseBody::reserve(std::size_t bytes) noexcept {
    if (bytes <= capacity_) {
        return true;
    }
    auto* const fresh = static_cast<char*>(OS().memory().allocate(bytes + padding));
    if (fresh == nullptr) {
        return false;
    }
    if (size_ != 0) {
        std::memcpy(fresh, data_, size_);
    }
    std::memset(fresh + size_, 0, padding);
    OS().memory().free(data_);
    data_ = fresh;
    capacity_ = bytes;
    return true;
}

bool ResponseBody::append(std::string_view bytes) noexcept {
    if (bytes.empty()) {
        return true;
    }
    std::size_t const needed = size_ + bytes.size();
    if (needed > capacity_ && !reserve(std::max({needed, 2 * capacity_, smallestBuffer}))) {
        return false;
    }
    std::memcpy(data_ + size_, bytes.data(), bytes.size());
    size_ = needed;
    std::memset(data_ + size_, 0, padding);
    return true;
}

} // namespace engine
