#include "tests/support/WebServer.h"

#include <stdexcept>

namespace test {

WebServer::WebServer() : server_(std::make_unique<httplib::Server>()) {
    bind();
}

WebServer::WebServer(std::filesystem::path const& certificate, std::filesystem::path const& key)
    : server_(std::make_unique<httplib::SSLServer>(certificate.c_str(), key.c_str())) {
    bind();
}

void WebServer::bind() {
    server_->set_tcp_nodelay(true);
    server_->set_keep_alive_timeout(1); // seconds; stop() waits for idle connections
    server_->set_keep_alive_max_count(10'000);
    int const port = server_->bind_to_any_port("127.0.0.1");
    if (port <= 0) {
        throw std::runtime_error("no free port, or a certificate that cannot be used");
    }
    port_ = static_cast<std::uint16_t>(port);
}

void WebServer::start() {
    thread_ = std::thread([this] { server_->listen_after_bind(); });
    // The socket listens already; stop() however needs a server that runs.
    while (!server_->is_running()) {
        std::this_thread::yield();
    }
}

WebServer::~WebServer() {
    server_->stop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

} // namespace test
