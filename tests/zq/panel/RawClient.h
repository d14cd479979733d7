// A client that sends a panel's server whatever bytes a test wants.
#pragma once

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace panel_tests {

struct Answer {
    int status = 0; // 0: the connection ended without an answer
    std::string head;
    std::string body;

    // The value of a header, named in lower case; empty where there is none.
    [[nodiscard]] std::string header(std::string_view name) const {
        std::string lower = head;
        for (char& c : lower) {
            c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        }
        std::size_t const at = lower.find("\r\n" + std::string(name) + ": ");
        if (at == std::string::npos) {
            return {};
        }
        std::size_t const value = at + name.size() + 4;
        return head.substr(value, head.find("\r\n", value) - value);
    }
    // The "code" of an error's body; empty for another body.
    [[nodiscard]] std::string error() const {
        constexpr std::string_view before = R"({"error":{"code":")";
        return body.starts_with(before)
                   ? body.substr(before.size(), body.find('"', before.size()) - before.size())
                   : std::string();
    }
};

// What a page says in its head under that name; empty where it does not.
[[nodiscard]] inline std::string metaIn(std::string const& page, std::string const& name) {
    std::string const before = "<meta name=\"" + name + "\" content=\"";
    std::size_t const at = page.find(before);
    return at == std::string::npos
               ? std::string()
               : page.substr(at + before.size(), page.find('"', at + before.size()) - at - before.size());
}

// Throws std::runtime_error where nothing comes for ten seconds.
class RawClient {
public:
    explicit RawClient(int port) : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
            throw std::runtime_error("no connection");
        }
    }
    ~RawClient() { close(); }
    RawClient(RawClient const&) = delete;
    RawClient& operator=(RawClient const&) = delete;

    // False when the other side takes no more.
    bool send(std::string_view bytes) {
        while (!bytes.empty()) {
            ssize_t const sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (sent <= 0) {
                return false;
            }
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        }
        return true;
    }
    // What has come, at least up to the text; all that comes where the connection ends before.
    std::string receiveThrough(std::string_view text) {
        while (got_.find(text) == std::string::npos && receive()) {
        }
        return got_;
    }
    // The next answer. Of one to HEAD there is no body.
    Answer answer(bool hasBody = true) {
        constexpr std::string_view end = "\r\n\r\n";
        if (receiveThrough(end).find(end) == std::string::npos) {
            return {};
        }
        Answer answer;
        answer.head = got_.substr(0, got_.find(end) + end.size());
        got_.erase(0, answer.head.size());
        answer.status = std::stoi(answer.head.substr(answer.head.find(' ') + 1));
        std::string const length = answer.header("content-length");
        std::size_t const size = hasBody && !length.empty() ? std::stoul(length) : 0;
        while (got_.size() < size && receive()) {
        }
        answer.body = got_.substr(0, size);
        got_.erase(0, size);
        return answer;
    }
    Answer ask(std::string_view request) {
        send(request);
        return answer(!request.starts_with("HEAD "));
    }
    // True once the other side has ended the connection, and nothing is left to be read.
    bool isAtEnd() {
        while (receive()) {
        }
        return true;
    }
    void close() {
        if (socket_ >= 0) {
            ::close(socket_);
            socket_ = -1;
        }
    }

private:
    // False at the end of the connection.
    bool receive() {
        constexpr int patience_ms = 10'000;
        pollfd wait{socket_, POLLIN, 0};
        if (::poll(&wait, 1, patience_ms) <= 0) {
            throw std::runtime_error("nothing comes; so far: " + got_);
        }
        char bytes[16 * 1024];
        ssize_t const count = ::recv(socket_, bytes, sizeof bytes, 0);
        if (count <= 0) {
            return false;
        }
        got_.append(bytes, static_cast<std::size_t>(count));
        return true;
    }

    int socket_;
    std::string got_;
};

} // namespace panel_tests
