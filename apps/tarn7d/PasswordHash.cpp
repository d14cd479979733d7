#include "apps/tarn7d/PasswordHash.h"

#include <stdexcept>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

namespace tarn7d {

namespace {

constexpr std::size_t saltBytes = 16;
constexpr std::size_t digestBytes = 32;
constexpr std::uint64_t cost = 1 << 15;
constexpr std::uint64_t blockSize = 8;
constexpr std::uint64_t lanes = 1;
constexpr std::uint64_t memoryLimit_bytes = 64 << 20;

unsigned char* bytesOf(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}
unsigned char const* bytesOf(std::string const& text) {
    return reinterpret_cast<unsigned char const*>(text.data());
}

std::string digestOf(std::string_view password, std::string const& salt) {
    std::string digest(digestBytes, '\0');
    // An empty view may have no pointer, which would be taken for "no password given".
    char const* const text = password.data() != nullptr ? password.data() : "";
    if (EVP_PBE_scrypt(text, password.size(), bytesOf(salt), salt.size(), cost, blockSize, lanes,
                       memoryLimit_bytes, bytesOf(digest), digest.size()) != 1) {
        throw std::runtime_error("the password cannot be hashed");
    }
    return digest;
}

} // namespace

PasswordHash hashPassword(std::string_view password) {
    PasswordHash hash{std::string(saltBytes, '\0'), {}};
    if (RAND_bytes(bytesOf(hash.salt), static_cast<int>(hash.salt.size())) != 1) {
        throw std::runtime_error("no random numbers");
    }
    hash.digest = digestOf(password, hash.salt);
    return hash;
}

bool isPassword(std::string_view password, PasswordHash const& hash) {
    return equalInConstantTime(digestOf(password, hash.salt), hash.digest);
}

bool equalInConstantTime(std::string_view a, std::string_view b) noexcept {
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

} // namespace tarn7d
