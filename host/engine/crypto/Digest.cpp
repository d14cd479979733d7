#include "host/engine/crypto/Digest.h"

#include <array>
#include <stdexcept>
#include <vector>

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

namespace engine {

namespace {

// Looking a digest up by name takes longer than the digest of a short text. Never freed: digests are taken
// until the process ends.
EVP_MD const* sha256() {
    static EVP_MD const* const digest = EVP_MD_fetch(nullptr, "SHA256", nullptr);
    return digest;
}

} // namespace

std::string toHex(std::span<unsigned char const> bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text(bytes.size() * 2, '0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text[2 * i] = digits[bytes[i] >> 4];
        text[2 * i + 1] = digits[bytes[i] & 15];
    }
    return text;
}

std::string sha256Hex(std::string_view bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    if (sha256() == nullptr ||
        EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, sha256(), nullptr) != 1) {
        throw std::runtime_error("SHA-256 is not available");
    }
    return toHex(std::span(digest).first(size));
}

std::string hmacSha256Hex(std::string_view key, std::string_view message) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int size = 0;
    auto const* const data = reinterpret_cast<unsigned char const*>(message.data());
    if (HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), data, message.size(), digest.data(),
             &size) == nullptr) {
        throw std::runtime_error("HMAC-SHA-256 is not available");
    }
    return toHex(std::span(digest).first(size));
}

std::string randomHex(std::size_t bytes) {
    std::vector<unsigned char> random(bytes);
    if (RAND_bytes(random.data(), static_cast<int>(random.size())) != 1) {
        throw std::runtime_error("no random bytes");
    }
    return toHex(random);
}

} // namespace engine
