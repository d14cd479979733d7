// Keeping passwords: only a slow, salted digest is stored (scrypt, RFC 7914).
#pragma once

#include <string>
#include <string_view>

namespace tarn7d {

struct PasswordHash {
    std::string salt;   // 16 random bytes
    std::string digest; // 32 bytes
};

// A new salt and the digest of the password under it. Takes about a tenth of a second and 32 MiB. Any thread.
// Throws std::runtime_error when the cryptographic library fails.
[[nodiscard]] PasswordHash hashPassword(std::string_view password);

// True if the password is the one that was hashed. The time does not tell how much of it is right. As slow as
// hashPassword; throws as it does.
[[nodiscard]] bool isPassword(std::string_view password, PasswordHash const& hash);

// Compares two texts in a time that depends on their lengths alone.
[[nodiscard]] bool equalInConstantTime(std::string_view a, std::string_view b) noexcept;

} // namespace tarn7d
