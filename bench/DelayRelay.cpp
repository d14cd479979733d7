#include "bench/DelayRelay.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <sys/socket.h>

#include "bench/Loopback.h"

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t packet_bytes = std::size_t{16} << 10;
// On the way of one connection: more than the link holds, less than would empty the server at once.
constexpr std::size_t mostOnTheWay_bytes = std::size_t{1} << 20;

struct Connection {
    engine::FileDescriptor client;
    engine::FileDescriptor server;

    void end() const {
        ::shutdown(client.get(), SHUT_RDWR);
        ::shutdown(server.get(), SHUT_RDWR);
    }
};

struct Packet {
    Clock::time_point due;
    std::vector<char> bytes; // none: the end
};

// What is on its way in one direction of a connection.
class Flight {
public:
    void push(Packet packet) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return landed_ || bytes_ < mostOnTheWay_bytes; });
        bytes_ += packet.bytes.size();
        packets_.push_back(std::move(packet));
        changed_.notify_all();
    }
    [[nodiscard]] Packet pop() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return !packets_.empty(); });
        Packet packet = std::move(packets_.front());
        packets_.pop_front();
        lock.unlock();
        std::this_thread::sleep_until(packet.due);
        lock.lock();
        bytes_ -= packet.bytes.size();
        changed_.notify_all();
        return packet;
    }
    // Nobody takes anything any more.
    void land() {
        std::lock_guard const lock(mutex_);
        landed_ = true;
        changed_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Packet> packets_;
    std::size_t bytes_ = 0;
    bool landed_ = false;
};

// How much a sender has under way: more with each confirmation, less after a pause, as TCP has it.
class Window {
public:
    explicit Window(Link const& link) : first_(link.firstWindow_bytes), size_(first_) {}

    // When so many bytes may leave.
    [[nodiscard]] Clock::time_point leave(std::size_t bytes) {
        Clock::time_point time = Clock::now();
        while (!underWay_.empty() && underWay_.front().confirmed <= time) {
            confirmFirst();
        }
        for (auto idle = time - last_; underWay_.empty() && idle > pause && size_ > first_; idle -= pause) {
            size_ = std::max(first_, size_ / 2);
        }
        while (first_ != 0 && !underWay_.empty() && bytes_ + bytes > size_) {
            time = underWay_.front().confirmed;
            confirmFirst();
        }
        return time;
    }
    void left(std::size_t bytes, Clock::time_point confirmed) {
        underWay_.push_back({confirmed, bytes});
        bytes_ += bytes;
        last_ = confirmed;
    }

private:
    struct Sent {
        Clock::time_point confirmed;
        std::size_t bytes;
    };
    static constexpr std::chrono::milliseconds pause{240}; // after which the system forgets what it learnt
    static constexpr std::size_t largest_bytes = std::size_t{4} << 20;

    void confirmFirst() {
        size_ = std::min(size_ + underWay_.front().bytes, largest_bytes);
        bytes_ -= underWay_.front().bytes;
        underWay_.pop_front();
    }

    std::size_t const first_;
    std::size_t size_;
    std::deque<Sent> underWay_;
    std::size_t bytes_ = 0;
    Clock::time_point last_ = Clock::now();
};

[[nodiscard]] bool sendAll(int socket, std::vector<char> const& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        ssize_t const count = ::send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

// One direction of the link, which all connections share.
class DelayRelay::Wire {
public:
    explicit Wire(Link const& link) : link_(link) {}

    // When bytes arrive that can leave now, or at `earliest` if that is later.
    [[nodiscard]] Clock::time_point arrival(std::size_t bytes, Clock::time_point earliest) {
        std::lock_guard const lock(mutex_);
        free_ = std::max({free_, earliest, Clock::now()});
        if (link_.bits_per_s != 0) {
            free_ += std::chrono::nanoseconds(bytes * 8 * 1'000'000'000 / link_.bits_per_s);
        }
        return free_ + link_.oneWay;
    }

    void carry(std::shared_ptr<Connection const> const& connection, int from, int to,
               Clock::time_point earliest) {
        auto const flight = std::make_shared<Flight>();
        std::thread([connection, flight, to] {
            for (;;) {
                Packet const packet = flight->pop();
                if (packet.bytes.empty()) {
                    ::shutdown(to, SHUT_WR);
                    return;
                }
                if (!sendAll(to, packet.bytes)) {
                    connection->end();
                    flight->land();
                    return;
                }
            }
        }).detach();
        Window window(link_);
        std::array<char, packet_bytes> buffer{};
        for (;;) {
            ssize_t const count = std::max<ssize_t>(::recv(from, buffer.data(), buffer.size(), 0), 0);
            std::size_t const size = static_cast<std::size_t>(count);
            std::this_thread::sleep_until(window.leave(size));
            Clock::time_point const due = arrival(size, earliest);
            window.left(size, due + link_.oneWay);
            flight->push({due, {buffer.begin(), buffer.begin() + count}});
            if (count == 0) {
                return;
            }
        }
    }

private:
    Link const link_;
    std::mutex mutex_;
    Clock::time_point free_; // when what has left before is through
};

DelayRelay::DelayRelay(std::uint16_t target, Link const& link)
    : target_(target), link_(link), toServer_(std::make_shared<Wire>(link)),
      toClient_(std::make_shared<Wire>(link)), listener_(listenOnLoopback(port_)) {
    std::thread([this] { acceptAll(); }).detach();
}

void DelayRelay::acceptAll() const {
    for (;;) {
        engine::FileDescriptor client = acceptOn(listener_);
        // The system takes a connection at once; over a distance the client could not send before this.
        Clock::time_point const connected = Clock::now() + 2 * link_.oneWay;
        engine::FileDescriptor server = connectToLoopback(target_);
        if (!client || !server) {
            continue;
        }
        auto const connection =
            std::make_shared<Connection const>(Connection{std::move(client), std::move(server)});
        std::thread([wire = toServer_, connection, connected] {
            wire->carry(connection, connection->client.get(), connection->server.get(), connected);
        }).detach();
        std::thread([wire = toClient_, connection] {
            wire->carry(connection, connection->server.get(), connection->client.get(), {});
        }).detach();
    }
}

} // namespace bench
