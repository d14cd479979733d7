// Servers in memory: each request is recorded and answered by a function of the test.
#pragma once

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "host/network/OSPrivate.h"

namespace fake {

// Bytes in memory.
class MemHolder final : public iMemHolder {
public:
    explicit MemHolder(std::string bytes) : bytes_(std::move(bytes)) {}
    [[nodiscard]] char const* getData() const noexcept override { return bytes_.data(); }
    [[nodiscard]] std::size_t getSize() const noexcept override { return bytes_.size(); }

private:
    std::string bytes_;
};

struct Request {
    enum class Method { get, post };
    Method method = Method::get;
    std::string server;
    std::string path;
    std::string body; // UTF-8, as it would go over the wire
    bool secure = false;
};

struct Answer {
    std::string body;
    int status = 200;
};

// The name, with its port, of a server that a Network made; empty for any other server.
[[nodiscard]] std::string serverName(iHTTPServer const& server);

// Thread: any.
class Network final : public iNetwork {
public:
    // No answer stands for a server that cannot be reached.
    using Handler = std::function<std::optional<Answer>(Request const&)>;

    [[nodiscard]] Zq::Ptr<iHTTPServer> createHTTPServer(HTTPConnectionInfo const& info) override;
    [[nodiscard]] WideString encodeUrlComponent(WideString const& text) override;

    void answerWith(Handler handler);
    // Answers every request with that body and status 200.
    void answerWith(std::string body);
    // Size of the blocks that a receiver gets.
    void setBlockSize(std::size_t bytes) { blockSize_ = bytes; }

    [[nodiscard]] std::vector<Request> requests() const;
    [[nodiscard]] std::size_t requestCount() const { return requests().size(); }
    [[nodiscard]] Request lastRequest() const;
    void forgetRequests();
    // Records that servers were made from, in order.
    [[nodiscard]] std::vector<HTTPConnectionInfo> connections() const;

private:
    friend class Server;
    std::optional<Answer> ask(Request const& request);

    mutable std::mutex mutex_;
    Handler handler_;
    std::vector<Request> requests_;
    std::vector<HTTPConnectionInfo> connections_;
    std::size_t blockSize_ = 4096;
};

} // namespace fake
