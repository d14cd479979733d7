#include "bench/RangeServer.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <strings.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include "bench/Loopback.h"

namespace bench {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t piece_bytes = std::size_t{128} << 10;

std::string_view mapped(fs::path const& path) {
    std::size_t const size = fs::file_size(path);
    engine::FileDescriptor const file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file.get(), 0);
    if (bytes == MAP_FAILED) {
        throw std::runtime_error("cannot serve " + path.string());
    }
    return {static_cast<char const*>(bytes), size};
}

// The value of the header line, empty where there is none.
std::string headerOf(std::string const& head, std::string_view name) {
    std::size_t line = head.find("\r\n");
    while (line != std::string::npos && line + 2 < head.size()) {
        std::size_t const begin = line + 2;
        line = head.find("\r\n", begin);
        std::size_t const colon = begin + name.size();
        if (colon < line && head[colon] == ':' &&
            ::strncasecmp(head.data() + begin, name.data(), name.size()) == 0) {
            std::size_t const value = head.find_first_not_of(' ', colon + 1);
            return head.substr(value, line - value);
        }
    }
    return {};
}

struct Part {
    std::size_t begin;
    std::size_t end;
};

// "bytes=0-9", "bytes=10-" or "bytes=-5"; empty where the file has nothing of it, nothing where it is no such
// text.
std::optional<Part> partOf(std::string const& range, std::size_t size) {
    std::size_t const dash = range.find('-');
    if (!range.starts_with("bytes=") || dash == std::string::npos) {
        return std::nullopt;
    }
    std::string const first = range.substr(6, dash - 6);
    std::string const last = range.substr(dash + 1);
    if (first.empty()) {
        return Part{size - std::min<std::size_t>(size, std::strtoull(last.c_str(), nullptr, 10)), size};
    }
    std::size_t const begin = std::strtoull(first.c_str(), nullptr, 10);
    std::size_t const end = last.empty() ? size : std::strtoull(last.c_str(), nullptr, 10) + 1;
    return Part{begin, std::max(begin, std::min(end, size))};
}

} // namespace

class RangeServer::Connection {
public:
    Connection(int socket, SSL_CTX* tls) : socket_(socket), tls_(tls != nullptr ? SSL_new(tls) : nullptr) {
        if (tls_ != nullptr) {
            SSL_set_fd(tls_, socket);
            usable_ = SSL_accept(tls_) == 1;
        }
    }
    ~Connection() { SSL_free(tls_); }
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    [[nodiscard]] bool usable() const { return usable_; }
    // Up to and with the empty line; empty at the end of the connection. Requests come one at a time.
    [[nodiscard]] std::string readHead() const {
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
    [[nodiscard]] bool send(std::string_view bytes) const {
        while (!bytes.empty()) {
            std::size_t const piece = std::min(bytes.size(), piece_bytes);
            auto const count = tls_ != nullptr
                                   ? SSL_write(tls_, bytes.data(), static_cast<int>(piece))
                                   : static_cast<int>(::send(socket_, bytes.data(), piece, MSG_NOSIGNAL));
            if (count <= 0) {
                return false;
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

private:
    int const socket_;
    SSL* const tls_;
    bool usable_ = true;
};

RangeServer::RangeServer(fs::path const& folder, fs::path const& certificate, fs::path const& key)
    : tls_(certificate.empty() ? nullptr : SSL_CTX_new(TLS_server_method())),
      listener_(listenOnLoopback(port_)) {
    (void)std::signal(SIGPIPE, SIG_IGN);
    if (tls_ && (SSL_CTX_use_certificate_chain_file(tls_.get(), certificate.c_str()) != 1 ||
                 SSL_CTX_use_PrivateKey_file(tls_.get(), key.c_str(), SSL_FILETYPE_PEM) != 1)) {
        throw std::runtime_error("the certificate cannot be used");
    }
    for (fs::directory_entry const& entry : fs::directory_iterator(folder)) {
        std::string const name = "/" + entry.path().filename().string();
        files_[name] = {mapped(entry.path()), "\"" + std::to_string(entry.file_size()) + "\""};
    }
    std::thread([this] {
        for (;;) {
            std::thread([this, socket = acceptOn(listener_)] { serve(socket); }).detach();
        }
    }).detach();
}

void RangeServer::serve(engine::FileDescriptor const& socket) {
    if (!socket) {
        return;
    }
    Connection const connection(socket.get(), tls_.get());
    while (connection.usable()) {
        std::string const head = connection.readHead();
        if (head.empty()) {
            return;
        }
        ++requests_;
        if (!answer(connection, head) || ::strcasecmp(headerOf(head, "Connection").c_str(), "close") == 0) {
            return;
        }
    }
}

bool RangeServer::answer(Connection const& connection, std::string const& head) const {
    auto const found = head.starts_with("GET ") ? files_.find(head.substr(4, head.find(' ', 4) - 4)) //
                                                : files_.end();
    if (found == files_.end()) {
        return connection.send("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
    }
    File const& file = found->second;
    std::string const total = std::to_string(file.bytes.size());
    std::string const validator = "ETag: " + file.etag + "\r\nAccept-Ranges: bytes\r\n";
    if (headerOf(head, "If-None-Match") == file.etag) {
        return connection.send("HTTP/1.1 304 Not Modified\r\n" + validator + "\r\n");
    }
    std::string const condition = headerOf(head, "If-Range");
    std::optional<Part> const part = condition.empty() || condition == file.etag
                                         ? partOf(headerOf(head, "Range"), file.bytes.size())
                                         : std::nullopt;
    if (!part) {
        return connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + total + "\r\n" + validator + "\r\n") &&
               connection.send(file.bytes);
    }
    if (part->begin == part->end) {
        return connection.send("HTTP/1.1 416 Range Not Satisfiable\r\nContent-Length: 0\r\n"
                               "Content-Range: bytes */" +
                               total + "\r\n\r\n");
    }
    return connection.send(
               "HTTP/1.1 206 Partial Content\r\nContent-Length: " + std::to_string(part->end - part->begin) +
               "\r\nContent-Range: bytes " + std::to_string(part->begin) + "-" +
               std::to_string(part->end - 1) + "/" + total + "\r\n" + validator + "\r\n") &&
           connection.send(file.bytes.substr(part->begin, part->end - part->begin));
}

} // namespace bench
