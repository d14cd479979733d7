// The sockets of a handle's connections, and whether a server has spoken on one since its last answer.
//
// Nothing is to be heard on a connection at rest but its end. Over TLS that end comes as data, which libcurl
// takes for a sign of life: it would send the next request into the closed connection.
#pragma once

#include <vector>

#include <curl/curl.h>

namespace engine {

// Thread: the handle's. Outlives the handle's connections.
class KeptSockets {
public:
    // Notes the sockets that the handle opens from now on.
    void watch(CURL* easy);
    // True when data, or the end, wait to be read on one of them.
    [[nodiscard]] bool isOneSpeaking() const noexcept;
    // CURL_SOCKET_BAD when the system gives none.
    [[nodiscard]] curl_socket_t open(curl_sockaddr const& address);

private:
    static int close(void* self, curl_socket_t socket);

    std::vector<curl_socket_t> sockets_;
};

} // namespace engine
