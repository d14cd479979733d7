#include "tests/support/RawServer.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test {

namespace {

int boundSocket(std::uint16_t& port) {
    int const socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    if (socket < 0 || bind(socket, plain, length) != 0 || getsockname(socket, plain, &length) != 0) {
        throw std::runtime_error("no free port");
    }
    port = ntohs(address.sin_port);
    return socket;
}

bool sameName(std::string_view a, std::string_view b) {
    return std::ranges::equal(
        a, b, [](unsigned char x, unsigned char y) { return std::tolower(x) == std::tolower(y); });
}

} // namespace

std::string RawRequest::header(std::string_view name) const {
    std::string_view rest = head;
    while (!rest.empty()) {
        std::size_t const end = std::min(rest.find("\r\n"), rest.size());
        std::string_view const row = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 2, rest.size()));
        std::size_t const colon = row.find(':');
        if (colon != std::string_view::npos && sameName(row.substr(0, colon), name)) {
            std::size_t const value = row.find_first_not_of(' ', colon + 1);
            return std::string(value != std::string_view::npos ? row.substr(value) : std::string_view());
        }
    }
    return {};
}

std::string RawConnection::receive(std::size_t most) {
    std::string bytes(most, '\0');
    ssize_t const count = ::recv(socket_, bytes.data(), bytes.size(), 0);
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return bytes;
}

std::optional<RawRequest> RawConnection::readRequest() {
    auto const fill = [this] {
        std::string const more = receive(64 << 10);
        buffer_ += more;
        return !more.empty();
    };
    std::size_t end = 0;
    while ((end = buffer_.find("\r\n\r\n")) == std::string::npos) {
        if (!fill()) {
            return std::nullopt;
        }
    }
    RawRequest request;
    request.connection = number_;
    request.head = buffer_.substr(0, end + 4);
    request.line = request.head.substr(0, request.head.find("\r\n"));
    std::string const announced = request.header("Content-Length");
    std::size_t const length = announced.empty() ? 0 : std::stoul(announced);
    buffer_.erase(0, end + 4);
    while (buffer_.size() < length) {
        if (!fill()) {
            return std::nullopt;
        }
    }
    request.body = buffer_.substr(0, length);
    buffer_.erase(0, length);
    std::lock_guard const lock(server_.mutex_);
    server_.requests_.push_back(request);
    return request;
}

bool RawConnection::send(std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t const count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool RawConnection::answer(int status, std::string_view body, std::string_view headers) {
    std::string text = "HTTP/1.1 " + std::to_string(status) + " Status\r\n";
    text += headers;
    text += "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n";
    text += body;
    return send(text);
}

void RawConnection::close() {
    ::shutdown(socket_, SHUT_RDWR);
}

void RawConnection::waitForEnd() {
    while (!receive(4096).empty()) {
    }
}

RawServer::RawServer(Script script) : script_(std::move(script)), listener_(boundSocket(port_)) {
    if (::listen(listener_, 64) != 0) {
        throw std::runtime_error("cannot listen");
    }
    acceptor_ = std::thread([this] { acceptAll(); });
}

RawServer::~RawServer() {
    {
        std::lock_guard const lock(mutex_);
        ending_ = true;
        for (Peer const& peer : peers_) {
            ::shutdown(peer.socket, SHUT_RDWR);
        }
    }
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    ::close(listener_);
    for (Peer& peer : peers_) {
        peer.thread.join();
        ::close(peer.socket);
    }
}

void RawServer::acceptAll() {
    for (;;) {
        int const socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        int const on = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        std::lock_guard const lock(mutex_);
        if (ending_) {
            ::close(socket);
            return;
        }
        int const number = accepted_++;
        peers_.push_back({socket, std::thread([this, socket, number] {
                              RawConnection connection(*this, socket, number);
                              script_(connection);
                              ::shutdown(socket, SHUT_RDWR);
                          })});
    }
}

std::vector<RawRequest> RawServer::requests() const {
    std::lock_guard const lock(mutex_);
    return requests_;
}

std::uint16_t closedPort() {
    std::uint16_t port = 0;
    ::close(boundSocket(port));
    return port;
}

} // namespace test
