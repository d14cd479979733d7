// Received bytes in one growing buffer, followed by readable padding: a reader that works in wide steps reads
// them where they are.
#pragma once

#include <string_view>

#include "host/network/iMemHolder.h"

namespace engine {

// Thread: one at a time while it grows, any afterwards.
class ResponseBody final : public iMemHolder {
public:
    static constexpr std::size_t padding = 64; // bytes, zero

    ResponseBody() noexcept = default;
    ~ResponseBody() override;
    ResponseBody(ResponseBody const&) = delete;
    ResponseBody& operator=(ResponseBody const&) = delete;

    [[nodiscard]] char const* getData() const noexcept override;
    [[nodiscard]] std::size_t getSize() const noexcept override { return size_; }
    [[nodiscard]] std::size_t getPadding() const noexcept override { return padding; }

    // Room for so many bytes in all; false when the host has no memory for them.
    [[nodiscard]] bool reserve(std::size_t bytes) noexcept;
    // False when the host has no memory; the body is then as before.
    [[nodiscard]] bool append(std::string_view bytes) noexcept;
    // Forgets the bytes and keeps the buffer.
    void clear() noexcept { size_ = 0; }

private:
    char* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0; // without the padding
};

} // namespace engine
