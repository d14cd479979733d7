// The host's hash object and the service that hands it out, on OpenSSL.
#pragma once

#include "host/network/OSPrivate.h"

namespace engine {

// Thread: any.
class OpenSSLHash final : public iHash {
public:
    // Null bytes with a count other than 0 give empty text.
    [[nodiscard]] WideString computeHash(void const* bytes, std::size_t count) override;
    [[nodiscard]] NarrowString computeHmac(int selector, NarrowString const& key,
                                           NarrowString const& message) override;
};

// Thread: any.
class OpenSSLSecurity final : public iSecurity {
public:
    [[nodiscard]] Zq::Ptr<iHash> getHash() override { return hash_; }

private:
    Zq::Ptr<iHash> const hash_ = Zq::makeShared<OpenSSLHash>();
};

} // namespace engine
