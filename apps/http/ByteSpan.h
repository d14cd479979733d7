// The part of some bytes that a Range header asks for (RFC 9110, section 14).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace http {

struct ByteSpan {
    std::uint64_t first = 0;
    std::uint64_t length = 0;
};

// One part of bytes of that size; with length 0 where they have no such part; nothing where all are to be
// sent, as the header is empty, names several ranges or makes no sense. Thread: any.
[[nodiscard]] std::optional<ByteSpan> byteSpanOf(std::string_view header, std::uint64_t size);

} // namespace http
