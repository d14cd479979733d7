#include "host/engine/network/KeptSockets.h"

#include <algorithm>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "host/engine/network/CurlOption.h"

namespace engine {

void KeptSockets::watch(CURL* easy) {
    setOption(easy, CURLOPT_CLOSESOCKETFUNCTION, &KeptSockets::close);
    setOption(easy, CURLOPT_CLOSESOCKETDATA, this);
}

curl_socket_t KeptSockets::open(curl_sockaddr const& address) {
    try {
        sockets_.reserve(sockets_.size() + 1);
    } catch (std::bad_alloc const&) {
        return CURL_SOCKET_BAD;
    }
    curl_socket_t const opened = ::socket(address.family, address.socktype | SOCK_CLOEXEC, address.protocol);
    if (opened != CURL_SOCKET_BAD) {
        sockets_.push_back(opened);
    }
    return opened;
}

int KeptSockets::close(void* self, curl_socket_t socket) {
    std::erase(static_cast<KeptSockets*>(self)->sockets_, socket);
    return ::close(socket);
}

bool KeptSockets::isOneSpeaking() const noexcept {
    return std::ranges::any_of(sockets_, [](curl_socket_t socket) {
        pollfd waiting{socket, POLLIN, 0};
        return ::poll(&waiting, 1, 0) > 0;
    });
}

} // namespace engine
