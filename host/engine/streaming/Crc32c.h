// CRC32C: the checksum of a stored block. Polynomial of Castagnoli, Braeuer and Herrmann (1993), in the
// reflected form and with the test values of RFC 3720, appendix B.4.
#pragma once

#include <cstdint>
#include <string_view>

namespace engine {

// Thread: any.
[[nodiscard]] std::uint32_t crc32c(std::string_view bytes) noexcept;

} // namespace engine
