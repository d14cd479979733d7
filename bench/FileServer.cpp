#include "bench/FileServer.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <unistd.h>

namespace bench {

namespace {

// The file, over and over: small enough to stay in memory.
constexpr std::size_t content_bytes = std::size_t{32} << 20;
constexpr std::size_t tlsPiece_bytes = std::size_t{128} << 10;

// One accepted connection, plain or TLS.
class Connection {
public:
    Connection(int socket, SSL_CTX* tls) : socket_(socket), tls_(tls != nullptr ? SSL_new(tls) : nullptr) {
        int const one = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        if (tls_ != nullptr) {
            SSL_set_fd(tls_, socket);
            usable_ = SSL_accept(tls_) == 1;
        }
    }
    ~Connection() { SSL_free(tls_); }
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    [[nodiscard]] bool usable() const { return usable_; }
    // Up to and with the empty line; empty at the end of the connection.
    [[nodiscard]] std::string readHead() {
        std::string head;
        char buffer[4096];
        while (!head.ends_with("\r\n\r\n")) {
            auto const count = tls_ != nullptr ? SSL_read(tls_, buffer, sizeof buffer)
                                               : static_cast<int>(::recv(socket_, buffer, sizeof buffer, 0));
            if (count <= 0) {
                return {};
            }
            head.append(buffer, static_cast<std::size_t>(count));
        }
        return head;
    }
    [[nodiscard]] bool send(char const* bytes, std::size_t size) const {
        while (size > 0) {
            auto const count = tls_ != nullptr ? SSL_write(tls_, bytes, static_cast<int>(size))
                                               : static_cast<int>(::send(socket_, bytes, size, MSG_MORE));
            if (count <= 0) {
                return false;
            }
            bytes += count;
            size -= static_cast<std::size_t>(count);
        }
        return true;
    }
    [[nodiscard]] bool sendBody(int content, char const* mapped, std::uint64_t length) const {
        std::uint64_t sent = 0;
        while (sent < length) {
            std::uint64_t const offset = sent % content_bytes;
            std::uint64_t const rest = std::min(length - sent, content_bytes - offset);
            if (tls_ != nullptr) {
                std::size_t const piece = std::min<std::uint64_t>(rest, tlsPiece_bytes);
                if (!send(mapped + offset, piece)) {
                    return false;
                }
                sent += piece;
            } else {
                auto from = static_cast<off_t>(offset);
                ssize_t const count = ::sendfile(socket_, content, &from, rest);
                if (count <= 0) {
                    return false;
                }
                sent += static_cast<std::uint64_t>(count);
            }
        }
        return true;
    }

private:
    int socket_;
    SSL* tls_;
    bool usable_ = true;
};

} // namespace

char FileServer::byteAt(std::uint64_t offset) noexcept {
    std::uint64_t const place = offset % content_bytes;
    return static_cast<char>((place * 2654435761U) >> 13);
}

FileServer::FileServer() {
    listen();
}

FileServer::FileServer(std::filesystem::path const& certificate, std::filesystem::path const& key)
    : tls_(SSL_CTX_new(TLS_server_method())) {
    if (!tls_ || SSL_CTX_use_certificate_chain_file(tls_.get(), certificate.c_str()) != 1 ||
        SSL_CTX_use_PrivateKey_file(tls_.get(), key.c_str(), SSL_FILETYPE_PEM) != 1) {
        throw std::runtime_error("the certificate cannot be used");
    }
    listen();
}

void FileServer::listen() {
    (void)std::signal(SIGPIPE, SIG_IGN);
    content_ = engine::FileDescriptor(::memfd_create("content", MFD_CLOEXEC));
    std::string bytes(content_bytes, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = byteAt(i);
    }
    if (!content_.writeAll(bytes.data(), bytes.size())) {
        throw std::runtime_error("no memory for the content");
    }
    void* const mapped = ::mmap(nullptr, content_bytes, PROT_READ, MAP_SHARED, content_.get(), 0);
    mapped_ = static_cast<char const*>(mapped);
    listener_ = engine::FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    if (mapped == MAP_FAILED || !listener_ || ::bind(listener_.get(), plain, length) != 0 ||
        ::listen(listener_.get(), 128) != 0 || ::getsockname(listener_.get(), plain, &length) != 0) {
        throw std::runtime_error("the server of files cannot listen");
    }
    port_ = ntohs(address.sin_port);
    std::thread([this] {
        for (;;) {
            engine::FileDescriptor socket(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            if (socket) {
                std::thread([this, owned = std::move(socket)]() mutable {
                    serve(std::move(owned));
                }).detach();
            }
        }
    }).detach();
}

void FileServer::serve(engine::FileDescriptor socket) const {
    Connection connection(socket.get(), tls_.get());
    while (connection.usable()) {
        std::string const head = connection.readHead();
        if (!head.starts_with("GET /")) {
            return;
        }
        char* end = nullptr;
        std::uint64_t const length = std::strtoull(head.c_str() + 5, &end, 10);
        if (*end == '+') {
            std::this_thread::sleep_for(std::chrono::milliseconds(std::strtoul(end + 1, nullptr, 10)));
        }
        std::string const answer = "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
                                   "Content-Length: " +
                                   std::to_string(length) + "\r\n\r\n";
        if (!connection.send(answer.data(), answer.size()) ||
            !connection.sendBody(content_.get(), mapped_, length)) {
            return;
        }
    }
}

} // namespace bench
