// The open TLS connections of a server, so that stopping it does not wait for idle clients.
#pragma once

#include <mutex>
#include <set>

#include <openssl/ssl.h>

namespace tarn7d {

// Learns of connections from OpenSSL itself: of one when its handshake begins, and of its end when OpenSSL
// frees it, which is before the server closes the socket. Outlives the context. Any thread.
class ConnectionRegistry {
public:
    // Watches all connections of the context.
    void attach(SSL_CTX* context);

    // Ends the traffic of every open connection, in both directions, and that of every later one; the
    // server's own threads then close them.
    void shutDownAll();

    // Ends the traffic of the connection that comes from that port of the loopback interface, at once and
    // without an answer; nothing if there is none.
    void shutDown(int remotePort);

private:
    static int registryIndex();
    static void onProgress(SSL const* connection, int where, int result);
    static void onFree(void* parent, void* value, CRYPTO_EX_DATA* data, int index, long argument,
                       void* pointer);

    void add(SSL const* connection);
    void remove(SSL const* connection);

    std::mutex mutex_;
    std::set<SSL const*> connections_;
    bool closed_ = false;
};

} // namespace tarn7d
