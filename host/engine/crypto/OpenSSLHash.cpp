#include "host/engine/crypto/OpenSSLHash.h"

#include <exception>
#include <string>

#include "host/engine/crypto/Digest.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

constexpr int hmacSha256 = 0;

} // namespace

WideString OpenSSLHash::computeHash(void const* bytes, std::size_t count) {
    if (bytes == nullptr && count != 0) {
        return {};
    }
    try {
        return fromUTF8(sha256Hex({static_cast<char const*>(bytes), count}));
    } catch (std::exception const&) {
        return {};
    }
}

NarrowString OpenSSLHash::computeHmac(int selector, NarrowString const& key, NarrowString const& message) {
    if (selector != hmacSha256) {
        return {};
    }
    try {
        return NarrowString(std::string_view(hmacSha256Hex(key.view(), message.view())));
    } catch (std::exception const&) {
        return {};
    }
}

} // namespace engine
