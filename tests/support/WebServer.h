// A real web server on loopback, with TLS or without: routes are added on the server of the library itself.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include <httplib.h>

namespace test {

class WebServer {
public:
    // Plain HTTP.
    WebServer();
    // TLS with that certificate and key, PEM.
    WebServer(std::filesystem::path const& certificate, std::filesystem::path const& key);
    // Stops and waits.
    ~WebServer();
    WebServer(WebServer const&) = delete;
    WebServer& operator=(WebServer const&) = delete;

    // Add routes before start().
    [[nodiscard]] httplib::Server& routes() noexcept { return *server_; }
    void start();

    [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
    [[nodiscard]] std::string name() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    void bind();

    std::unique_ptr<httplib::Server> server_;
    std::uint16_t port_ = 0;
    std::thread thread_;
};

} // namespace test
