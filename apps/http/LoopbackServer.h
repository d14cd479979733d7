// A plain HTTP server of the loopback interface that no client can hold up: a request has a time in which to
// arrive, a connection whose client keeps it waiting gives way to a new one, and the end of the server ends
// all connections.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <thread>

#include <httplib.h>

namespace http {

// Routes and handlers are those of the library, set before start(). The library's own timeouts, keep-alive
// settings and queue are not used. The headers of a request are as they were sent, while the library would
// decode percent signs in them, which would make one host or origin out of several; what is no field (its
// name is no token, it has control characters) is left out, and the connection ends after the answer.
class LoopbackServer : public httplib::Server {
public:
    struct Limits {
        std::size_t connections = 256; // further ones wait
        std::chrono::milliseconds head{10'000};
        std::chrono::milliseconds body{30'000};  // from the end of the head on, until the body has been read
        std::chrono::milliseconds write{30'000}; // without a byte that goes
        std::chrono::milliseconds idle{60'000};
        std::size_t head_bytes = std::size_t{64} << 10;
        std::size_t body_bytes = std::size_t{512} << 10; // as it is sent, with the frames of its chunks
        std::size_t requests = 10'000;                   // on one connection
    };

    explicit LoopbackServer(Limits limits);
    // Ends.
    ~LoopbackServer() override;

    // Takes the port of 127.0.0.1, or with 0 a free one, and gives it. Throws std::runtime_error with a text
    // for the user when it is taken; another one can be tried then. Then start().
    int bind(int port);
    // Answers from now on, on threads of its own.
    void start();
    // Ends all connections and returns when no handler runs any more. Handlers that wait have to be told by
    // other means. Thread: any but those of the handlers; one at a time.
    void end();

    // Of the connection whose request the calling thread answers. False once the other side has closed.
    [[nodiscard]] static bool isClientThere();
    // The connection ends after this answer, as when a body was left unread.
    static void closeAfterAnswer();

protected:
    // Serves one connection until it ends. Called by the threads of the server.
    bool process_and_close_socket(socket_t socket) override;

private:
    class Connection;
    class Registration;
    [[nodiscard]] bool nextRequest(Connection& connection);
    void makeRoom();

    static thread_local Connection* served_; // by the calling thread

    Limits const limits_;
    std::mutex mutex_;
    std::list<Connection*> connections_; // those that are served
    bool ending_ = false;
    std::thread listener_;
};

} // namespace http
