// A TCP server on loopback that does what a script says, byte by byte: for answers that no honest web server
// gives.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace test {

struct RawRequest {
    int connection = 0; // number of the connection that it came on, from 0
    std::string line;   // "GET /path HTTP/1.1"
    std::string head;   // the line, all headers and the empty line
    std::string body;

    // Value of the first header of that name, whatever its letter case; empty where there is none.
    [[nodiscard]] std::string header(std::string_view name) const;
};

class RawServer;

// One accepted connection, in the hands of its script.
class RawConnection {
public:
    // The next request, with the body that its Content-Length announces; nothing once the other side has
    // closed or the server ends.
    [[nodiscard]] std::optional<RawRequest> readRequest();
    // False when the other side is gone.
    bool send(std::string_view bytes);
    // Sends an answer of that status with a Content-Length and those further header lines ("A: b\r\n").
    bool answer(int status, std::string_view body, std::string_view headers = {});
    // Closes in order: what was sent still arrives.
    void close();
    // Waits until the other side closes or the server ends.
    void waitForEnd();
    // Bytes as they come, up to `most`; empty at the end of the connection.
    [[nodiscard]] std::string receive(std::size_t most);
    [[nodiscard]] int number() const noexcept { return number_; }

private:
    friend class RawServer;
    RawConnection(RawServer& server, int socket, int number)
        : server_(server), socket_(socket), number_(number) {}

    RawServer& server_;
    int const socket_;
    int const number_;
    std::string buffer_;
};

class RawServer {
public:
    using Script = std::function<void(RawConnection&)>;

    // Listens at once on a free port. The script runs for each connection, on a thread of its own, and the
    // connection closes when it returns.
    explicit RawServer(Script script);
    // Ends all connections and waits for their scripts.
    ~RawServer();
    RawServer(RawServer const&) = delete;
    RawServer& operator=(RawServer const&) = delete;

    [[nodiscard]] std::uint16_t port() const noexcept { return port_; }
    [[nodiscard]] std::string name() const { return "127.0.0.1:" + std::to_string(port_); }
    // Connections that were accepted so far.
    [[nodiscard]] int connections() const noexcept { return accepted_; }
    // Requests that arrived whole so far, in the order of their arrival.
    [[nodiscard]] std::vector<RawRequest> requests() const;

private:
    friend class RawConnection;
    struct Peer {
        int socket;
        std::thread thread;
    };
    void acceptAll();

    Script const script_;
    std::uint16_t port_ = 0; // set while listener_ is made
    int const listener_;
    std::atomic<int> accepted_{0};
    mutable std::mutex mutex_;
    std::list<Peer> peers_;
    std::vector<RawRequest> requests_;
    bool ending_ = false;
    std::thread acceptor_;
};

// A port of loopback on which nothing listens.
[[nodiscard]] std::uint16_t closedPort();

} // namespace test
