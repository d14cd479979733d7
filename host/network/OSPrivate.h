// OSPrivate(): the host's private root, with its hash object and its network service.
#pragma once

#include <cstddef>

#include "host/network/iHTTPServer.h"

// Digests as text.
class ZQ_API iHash : public virtual iObject {
public:
    ~iHash() override;
    // SHA-256 of the bytes, 64 lower-case hexadecimal digits. Empty when it cannot be computed. Thread: any.
    [[nodiscard]] virtual WideString computeHash(void const* bytes, std::size_t count) = 0;
    // HMAC of the message under the key, lower-case hexadecimal. Selector 0 is HMAC-SHA-256; any other gives
    // empty text. Thread: any.
    [[nodiscard]] virtual NarrowString computeHmac(int selector, NarrowString const& key,
                                                   NarrowString const& message) = 0;
};

class ZQ_API iSecurity {
public:
    virtual ~iSecurity();
    [[nodiscard]] virtual Zq::Ptr<iHash> getHash() = 0;
};

class ZQ_API iNetwork {
public:
    virtual ~iNetwork();
    // Null for a record without a server or with one that no address can be made from. Connects nothing yet.
    // Thread: any.
    [[nodiscard]] virtual Zq::Ptr<iHTTPServer> createHTTPServer(HTTPConnectionInfo const& info) = 0;
    // UTF-8, percent-encoded with upper-case digits; the unreserved characters of RFC 3986 stay. Thread: any.
    [[nodiscard]] virtual WideString encodeUrlComponent(WideString const& text) = 0;
};

class ZQ_API iOSPrivate {
public:
    [[nodiscard]] iSecurity& security() const noexcept;
    [[nodiscard]] iNetwork& network() const noexcept;
};

// Needs an installed host. Thread: any.
[[nodiscard]] ZQ_API iOSPrivate const& OSPrivate() noexcept;
