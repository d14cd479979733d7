#include "host/json/Arena.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "host/os/OS.h"

namespace JSON {

namespace {

constexpr std::size_t alignment = alignof(std::max_align_t) < 16 ? alignof(std::max_align_t) : 16;
constexpr std::size_t largestChunk = 1 << 20;

std::size_t aligned(std::size_t bytes) {
    return (bytes + alignment - 1) & ~(alignment - 1);
}

} // namespace

Arena::Arena(Arena&& other) noexcept
    : chunks_(std::exchange(other.chunks_, nullptr)), next_(std::exchange(other.next_, nullptr)),
      left_(std::exchange(other.left_, 0)), chunkSize_(other.chunkSize_) {}

Arena& Arena::operator=(Arena&& other) noexcept {
    std::swap(chunks_, other.chunks_);
    std::swap(next_, other.next_);
    std::swap(left_, other.left_);
    std::swap(chunkSize_, other.chunkSize_);
    return *this;
}

Arena::~Arena() {
    while (chunks_ != nullptr) {
        OS().memory().free(std::exchange(chunks_, chunks_->next));
    }
}

void Arena::reserve(std::size_t bytes) {
    bytes = aligned(bytes);
    if (bytes <= left_) {
        return;
    }
    std::size_t const header = aligned(sizeof(Chunk));
    void* const memory = OS().memory().allocate(header + bytes);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    chunks_ = new (memory) Chunk{chunks_};
    next_ = static_cast<std::byte*>(memory) + header;
    left_ = bytes;
}

void* Arena::allocate(std::size_t bytes) {
    bytes = aligned(bytes);
    if (bytes > left_) {
        reserve(std::max(bytes, chunkSize_));
        chunkSize_ = std::min(chunkSize_ * 2, largestChunk);
    }
    left_ -= bytes;
    return std::exchange(next_, next_ + bytes);
}

std::string_view Arena::store(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    auto* const copy = static_cast<char*>(allocate(text.size()));
    std::memcpy(copy, text.data(), text.size());
    return {copy, text.size()};
}

} // namespace JSON
