// A server of the files of one folder that gives parts, over HTTP or HTTPS, and counts what it gives.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <openssl/ssl.h>

#include "host/engine/files/FileDescriptor.h"

namespace bench {

// HTTP/1.1 with kept connections, a thread for each. Serves until the process ends, and is not destroyed
// before.
class RangeServer {
public:
    // The files that lie in the folder now. With a certificate and its key, PEM, TLS. Throws
    // std::runtime_error.
    explicit RangeServer(std::filesystem::path const& folder, std::filesystem::path const& certificate = {},
                         std::filesystem::path const& key = {});
    RangeServer(RangeServer const&) = delete;
    RangeServer& operator=(RangeServer const&) = delete;

    [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
    [[nodiscard]] std::uint64_t requests() const noexcept { return requests_; }

private:
    class Connection;
    struct TlsFree {
        void operator()(SSL_CTX* context) const noexcept { SSL_CTX_free(context); }
    };
    struct File {
        std::string_view bytes; // mapped, for good
        std::string etag;
    };
    void serve(engine::FileDescriptor const& socket);
    [[nodiscard]] bool answer(Connection const& connection, std::string const& head) const;

    std::unique_ptr<SSL_CTX, TlsFree> tls_;
    std::map<std::string, File> files_; // by "/name"
    std::uint16_t port_ = 0;            // set while listener_ is made
    engine::FileDescriptor const listener_;
    std::atomic<std::uint64_t> requests_{0};
};

} // namespace bench
