// Digests and random bytes, through OpenSSL.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace engine {

// SHA-256 of the bytes as 64 lower-case hexadecimal digits. Any thread. Throws std::runtime_error when the
// library has no such digest.
[[nodiscard]] std::string sha256Hex(std::string_view bytes);

// HMAC-SHA-256 of the message under the key as 64 lower-case hexadecimal digits (RFC 2104, FIPS 180-4).
[[nodiscard]] std::string hmacSha256Hex(std::string_view key, std::string_view message);

// Cryptographically strong random bytes as lower-case hexadecimal, two digits a byte.
[[nodiscard]] std::string randomHex(std::size_t bytes);

// The bytes as lower-case hexadecimal.
[[nodiscard]] std::string toHex(std::span<unsigned char const> bytes);

} // namespace engine
