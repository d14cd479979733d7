// A server of made-up files that costs as little as can be, so that the client is what is measured:
// "GET /1000000" is answered with a million bytes, by sendfile or through TLS; "GET /1000000+40" after 40 ms.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <thread>

#include <openssl/ssl.h>

#include "host/engine/files/FileDescriptor.h"

namespace bench {

// Serves until the process ends; HTTP/1.1 with kept connections, a thread for each.
class FileServer {
public:
    // Throws std::runtime_error. With a certificate and its key, PEM, TLS.
    FileServer();
    FileServer(std::filesystem::path const& certificate, std::filesystem::path const& key);
    FileServer(FileServer const&) = delete;
    FileServer& operator=(FileServer const&) = delete;

    [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
    // The byte at that place of every file.
    [[nodiscard]] static char byteAt(std::uint64_t offset) noexcept;

private:
    struct TlsFree {
        void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
    };
    void listen();
    void serve(engine::FileDescriptor socket) const;

    std::unique_ptr<SSL_CTX, TlsFree> tls_;
    engine::FileDescriptor content_;
    char const* mapped_ = nullptr;
    engine::FileDescriptor listener_;
    std::uint16_t port_ = 0;
};

} // namespace bench
