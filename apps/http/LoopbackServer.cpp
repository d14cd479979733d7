#include "apps/http/LoopbackServer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "apps/http/ElasticTaskQueue.h"
#include "apps/http/headFields.h"

namespace http {

namespace {

using Clock = std::chrono::steady_clock;

// True once one of the events is there; false when the time has passed first.
bool waitFor(socket_t socket, short events, Clock::time_point until) {
    for (;;) {
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
        if (left.count() < 0) {
            return false;
        }
        pollfd wait{socket, events, 0};
        int const ready = ::poll(&wait, 1, static_cast<int>(left.count()));
        if (ready > 0) {
            return true;
        }
        if (ready < 0 && errno != EINTR) {
            return false;
        }
        if (ready == 0 && left.count() == 0) {
            return false;
        }
    }
}

} // namespace

// One accepted socket as the library's stream. Thread: the one that serves it, but for end().
class LoopbackServer::Connection final : public httplib::Stream {
public:
    Connection(socket_t socket, LoopbackServer& server)
        : socket_(socket), server_(server), limits_(server.limits_) {}
    ~Connection() override { ::close(socket_); }
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    // Waits for the first byte of the next request. False when none comes.
    [[nodiscard]] bool waitForRequest() {
        begin(limits_.idle, limits_.head_bytes);
        return is_readable();
    }
    void beginRequest() {
        closes_ = false;
        isHead_ = true;
        head_.clear();
        begin(limits_.head, limits_.head_bytes);
    }
    void headHasEnded() {
        isHead_ = false;
        begin(limits_.body, limits_.body_bytes);
    }
    // Of the request that is served, as it came.
    [[nodiscard]] std::string const& head() const noexcept { return head_; }
    // From any thread: what waits for the socket goes on and fails.
    void end() const { ::shutdown(socket_, SHUT_RDWR); }
    // Has the answer arrive although bytes of the request were left: a plain close would take it back.
    void closeGently() {
        ::shutdown(socket_, SHUT_WR);
        constexpr std::chrono::seconds patience{1};
        constexpr std::size_t most_bytes = std::size_t{1} << 20;
        Clock::time_point const until = Clock::now() + patience;
        for (std::size_t dropped = 0; dropped < most_bytes && waitFor(socket_, POLLIN, until);) {
            ssize_t const got = ::recv(socket_, buffer_.data(), buffer_.size(), 0);
            if (got <= 0) {
                return;
            }
            dropped += static_cast<std::size_t>(got);
        }
    }
    [[nodiscard]] bool isClientThere() const {
        pollfd wait{socket_, POLLRDHUP, 0};
        return ::poll(&wait, 1, 0) == 0;
    }
    void closeAfterAnswer() noexcept { closes_ = true; }
    [[nodiscard]] bool closes() const noexcept { return closes_; }

    bool is_readable() const override { return at_ < filled_ || awaitClient(POLLIN, since_, until_); }
    bool is_writable() const override { return true; } // write() waits and tells

    ssize_t read(char* target, std::size_t size) override {
        if (at_ == filled_) {
            if (!awaitClient(POLLIN, since_, until_)) {
                return -1;
            }
            ssize_t got = 0;
            do {
                got = ::recv(socket_, buffer_.data(), buffer_.size(), 0);
            } while (got < 0 && errno == EINTR);
            if (got <= 0) {
                return got;
            }
            at_ = 0;
            filled_ = static_cast<std::size_t>(got);
        }
        size = std::min({size, filled_ - at_, left_});
        left_ -= size;
        if (size == 0) {
            return -1;
        }
        std::copy_n(buffer_.begin() + static_cast<std::ptrdiff_t>(at_), size, target);
        if (isHead_) {
            head_.append(target, size);
        }
        at_ += size;
        return static_cast<ssize_t>(size);
    }

    ssize_t write(char const* bytes, std::size_t size) override {
        for (;;) {
            ssize_t const sent = ::send(socket_, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
            if (sent >= 0) {
                return sent;
            }
            bool const full = errno == EAGAIN || errno == EWOULDBLOCK;
            // Who drains an answer bit by bit has kept the server since the request.
            if (errno != EINTR && !(full && awaitClient(POLLOUT, since_, Clock::now() + limits_.write))) {
                return -1;
            }
        }
    }

    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    socket_t socket() const override { return socket_; }

    // Since when the client has owed the bytes, or the room, that the server waits for; nothing while it does
    // not wait. Thread: any.
    [[nodiscard]] std::optional<Clock::time_point> waitsSince() const {
        Clock::rep const ticks = waitsSince_;
        return ticks == notWaiting ? std::nullopt : std::optional(Clock::time_point(Clock::duration(ticks)));
    }

    bool isToEnd = false; // under the server's lock

private:
    static constexpr Clock::rep notWaiting = Clock::time_point::min().time_since_epoch().count();

    // A step of the exchange in which the client has so long to send so much at most.
    void begin(std::chrono::milliseconds time, std::size_t bytes) {
        left_ = bytes;
        since_ = Clock::now();
        until_ = since_ + time;
    }
    bool awaitClient(short events, Clock::time_point since, Clock::time_point until) const {
        pollfd now{socket_, events, 0};
        if (Clock::now() < until && ::poll(&now, 1, 0) > 0) {
            return true;
        }
        waitsSince_ = since.time_since_epoch().count();
        server_.makeRoom();
        bool const isReady = waitFor(socket_, events, until);
        waitsSince_ = notWaiting;
        return isReady;
    }

    socket_t const socket_;
    LoopbackServer& server_;
    Limits const& limits_;
    std::array<char, 16 * 1024> buffer_;
    std::size_t at_ = 0;
    std::size_t filled_ = 0;
    std::string head_;
    bool isHead_ = true;
    std::size_t left_ = 0; // bytes of this step
    bool closes_ = false;
    Clock::time_point since_;
    Clock::time_point until_;
    mutable std::atomic<Clock::rep> waitsSince_ = notWaiting;
};

thread_local LoopbackServer::Connection* LoopbackServer::served_ = nullptr;

// The connection's place in the list of those that are served, while this lives.
class LoopbackServer::Registration {
public:
    Registration(LoopbackServer& server, Connection& connection) : server_(server) {
        std::lock_guard const lock(server_.mutex_);
        at_ = server_.connections_.insert(server_.connections_.end(), &connection);
        connection.isToEnd = server_.ending_;
        served_ = &connection;
    }
    ~Registration() {
        std::lock_guard const lock(server_.mutex_);
        served_ = nullptr;
        server_.connections_.erase(at_);
    }
    Registration(Registration const&) = delete;
    Registration& operator=(Registration const&) = delete;

private:
    LoopbackServer& server_;
    std::list<Connection*>::iterator at_;
};

LoopbackServer::LoopbackServer(Limits limits) : limits_(limits) {
    new_task_queue = [this] { return new ElasticTaskQueue(limits_.connections); };
    set_tcp_nodelay(true);
    // The library's own choice would let a second program share the port.
    set_socket_options([](socket_t socket) {
        int const yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
}

LoopbackServer::~LoopbackServer() {
    end();
}

int LoopbackServer::bind(int port) {
    errno = 0;
    constexpr char const* address = "127.0.0.1";
    int const bound = port == 0 ? bind_to_any_port(address) : bind_to_port(address, port) ? port : -1;
    if (bound <= 0) {
        std::string const where =
            port == 0 ? "a port of the loopback interface" : "port " + std::to_string(port);
        throw std::runtime_error("cannot listen on " + where + ": " + std::generic_category().message(errno));
    }
    ::listen(svr_sock_, SOMAXCONN); // the library's own backlog is short
    return bound;
}

void LoopbackServer::start() {
    listener_ = std::thread([this] { listen_after_bind(); });
    // A stop before the library's loop runs would be lost.
    while (!is_running()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void LoopbackServer::end() {
    {
        std::lock_guard const lock(mutex_);
        ending_ = true;
        for (Connection* const connection : connections_) {
            connection->isToEnd = true;
            connection->end();
        }
    }
    if (listener_.joinable()) {
        stop();
        listener_.join();
    }
}

bool LoopbackServer::isClientThere() {
    return served_ != nullptr && served_->isClientThere();
}

void LoopbackServer::closeAfterAnswer() {
    if (served_ != nullptr) {
        served_->closeAfterAnswer();
    }
}

// Whoever keeps the server waiting the longest gives way, before those that come would have to wait.
void LoopbackServer::makeRoom() {
    std::lock_guard const lock(mutex_);
    std::size_t const most = limits_.connections / 4 * 3;
    if (connections_.size() <= most) {
        return;
    }
    std::size_t living = 0;
    std::size_t waiting = 0;
    Connection* longest = nullptr;
    Clock::time_point since = Clock::time_point::max();
    for (Connection* const connection : connections_) {
        if (connection->isToEnd) {
            continue;
        }
        ++living;
        std::optional<Clock::time_point> const own = connection->waitsSince();
        if (!own) {
            continue;
        }
        ++waiting;
        if (*own < since) {
            longest = connection;
            since = *own;
        }
    }
    // One that waits alone has just come, and the others are being served.
    if (living > most && waiting > 1) {
        longest->isToEnd = true;
        longest->end();
    }
}

bool LoopbackServer::process_and_close_socket(socket_t socket) {
    ::fcntl(socket, F_SETFD, FD_CLOEXEC);
    Connection connection(socket, *this);
    Registration const registration(*this, connection);
    bool served = true;
    for (std::size_t count = 0; served && count < limits_.requests && nextRequest(connection); ++count) {
        bool isLast = false;
        served = process_request(connection, count + 1 == limits_.requests, isLast,
                                 [&](httplib::Request& request) {
                                     connection.headHasEnded();
                                     HeadFields fields = headFieldsOf(connection.head());
                                     request.headers = std::move(fields.headers);
                                     if (!fields.areClear) {
                                         connection.closeAfterAnswer();
                                     }
                                 }) &&
                 !isLast && !connection.closes();
    }
    connection.closeGently();
    return served;
}

bool LoopbackServer::nextRequest(Connection& connection) {
    {
        std::lock_guard const lock(mutex_);
        if (connection.isToEnd) { // before its socket was known to those who end connections
            return false;
        }
    }
    bool const arrives = connection.waitForRequest();
    connection.beginRequest();
    std::lock_guard const lock(mutex_);
    return arrives && !connection.isToEnd;
}

} // namespace http
