#include "apps/tarn7d/ConnectionRegistry.h"

#include <netinet/in.h>
#include <sys/socket.h>

namespace tarn7d {

namespace {

// The registry of a context, found from any of its connections.
int contextIndex() {
    static int const index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

// The port at the other end; 0 when there is none.
int remotePortOf(int socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return 0;
    }
    if (address.ss_family == AF_INET6) {
        return ntohs(reinterpret_cast<sockaddr_in6 const*>(&address)->sin6_port);
    }
    return ntohs(reinterpret_cast<sockaddr_in const*>(&address)->sin_port);
}

} // namespace

int ConnectionRegistry::registryIndex() {
    static int const index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, &ConnectionRegistry::onFree);
    return index;
}

void ConnectionRegistry::attach(SSL_CTX* context) {
    (void)registryIndex();
    SSL_CTX_set_ex_data(context, contextIndex(), this);
    SSL_CTX_set_info_callback(context, &ConnectionRegistry::onProgress);
}

void ConnectionRegistry::onProgress(SSL const* connection, int where, int /*result*/) {
    if ((where & SSL_CB_HANDSHAKE_START) == 0) {
        return;
    }
    auto* const registry =
        static_cast<ConnectionRegistry*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(connection), contextIndex()));
    if (registry != nullptr) {
        SSL_set_ex_data(const_cast<SSL*>(connection), registryIndex(), registry);
        registry->add(connection);
    }
}

void ConnectionRegistry::onFree(void* parent, void* value, CRYPTO_EX_DATA* /*data*/, int /*index*/,
                                long /*argument*/, void* /*pointer*/) {
    if (value != nullptr) {
        static_cast<ConnectionRegistry*>(value)->remove(static_cast<SSL const*>(parent));
    }
}

void ConnectionRegistry::add(SSL const* connection) {
    std::lock_guard const lock(mutex_);
    connections_.insert(connection);
    if (closed_) {
        ::shutdown(SSL_get_fd(connection), SHUT_RDWR);
    }
}

void ConnectionRegistry::remove(SSL const* connection) {
    std::lock_guard const lock(mutex_);
    connections_.erase(connection);
}

void ConnectionRegistry::shutDown(int remotePort) {
    std::lock_guard const lock(mutex_);
    for (SSL const* const connection : connections_) {
        if (remotePort != 0 && remotePortOf(SSL_get_fd(connection)) == remotePort) {
            ::shutdown(SSL_get_fd(connection), SHUT_RDWR);
        }
    }
}

void ConnectionRegistry::shutDownAll() {
    std::lock_guard const lock(mutex_);
    closed_ = true;
    for (SSL const* const connection : connections_) {
        ::shutdown(SSL_get_fd(connection), SHUT_RDWR);
    }
}

} // namespace tarn7d
