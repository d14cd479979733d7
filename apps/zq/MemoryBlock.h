// Bytes of this program as the host's doors take them.
#pragma once

#include <string>
#include <utility>

#include "host/network/iMemHolder.h"

namespace zq {

class MemoryBlock final : public iMemHolder {
public:
    explicit MemoryBlock(std::string bytes) : bytes_(std::move(bytes)) {}
    [[nodiscard]] char const* getData() const noexcept override { return bytes_.data(); }
    [[nodiscard]] std::size_t getSize() const noexcept override { return bytes_.size(); }

private:
    std::string const bytes_;
};

} // namespace zq
