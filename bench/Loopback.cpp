#include "bench/Loopback.h"

#include <stdexcept>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace bench {

namespace {

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void sendAtOnce(engine::FileDescriptor const& socket) {
    int const one = 1;
    ::setsockopt(socket.get(), IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
}

} // namespace

engine::FileDescriptor listenOnLoopback(std::uint16_t& port) {
    engine::FileDescriptor listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address = loopback(0);
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    if (!listener || ::bind(listener.get(), plain, length) != 0 || ::listen(listener.get(), 128) != 0 ||
        ::getsockname(listener.get(), plain, &length) != 0) {
        throw std::runtime_error("no port of loopback can be had");
    }
    port = ntohs(address.sin_port);
    return listener;
}

engine::FileDescriptor acceptOn(engine::FileDescriptor const& listener) {
    engine::FileDescriptor socket(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (socket) {
        sendAtOnce(socket);
    }
    return socket;
}

engine::FileDescriptor connectToLoopback(std::uint16_t port) {
    engine::FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in const address = loopback(port);
    if (!socket ||
        ::connect(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) != 0) {
        return {};
    }
    sendAtOnce(socket);
    return socket;
}

} // namespace bench
