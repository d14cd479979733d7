#include "tests/fake_host/FakeNetwork.h"

#include <algorithm>
#include <string_view>

#include "tests/fake_host/Texts.h"

namespace fake {

namespace {

class Reply final : public iHTTPReply {
public:
    explicit Reply(Answer answer) : answer_(std::move(answer)) {}
    Zq::Ptr<iMemHolder> getBody() override { return Zq::makeShared<MemHolder>(answer_.body); }
    int getStatus() const override { return answer_.status; }

private:
    Answer answer_;
};

} // namespace

class Server final : public iHTTPServer {
public:
    Server(Network& network, HTTPConnectionInfo const& info)
        : network_(network), server_(utf8(info.server)), secure_(info.secure != 0) {}

    Zq::Ptr<iHTTPReply> get(WideString const& path) override {
        return replyTo({Request::Method::get, server_, utf8(path), {}, secure_});
    }
    Zq::Ptr<iHTTPReply> postForm(WideString const& body, WideString const& path) override {
        return replyTo({Request::Method::post, server_, utf8(path), utf8(body), secure_});
    }
    int httpGetToReceiver(WideString const& path, iDataReceiver& receiver) override {
        std::optional<Answer> const answer =
            network_.ask({Request::Method::get, server_, utf8(path), {}, secure_});
        if (!answer) {
            return 0;
        }
        if (answer->status != 200) {
            return answer->status;
        }
        bool const whole = transfer(answer->body, receiver);
        receiver.endReceive();
        return whole ? 200 : 0;
    }

    [[nodiscard]] std::string const& name() const { return server_; }

private:
    Zq::Ptr<iHTTPReply> replyTo(Request const& request) {
        std::optional<Answer> answer = network_.ask(request);
        return answer ? Zq::makeShared<Reply>(std::move(*answer)) : Zq::Ptr<Reply>();
    }
    bool transfer(std::string_view body, iDataReceiver& receiver) const {
        if (!receiver.beginReceive(body.size())) {
            return false;
        }
        for (std::size_t at = 0; at < body.size(); at += network_.blockSize_) {
            std::string block(body.substr(at, network_.blockSize_));
            if (!receiver.receiveData(at, Zq::makeShared<MemHolder>(std::move(block)))) {
                return false;
            }
        }
        return true;
    }

    Network& network_;
    std::string server_;
    bool secure_;
};

std::string serverName(iHTTPServer const& server) {
    auto const* const made = dynamic_cast<Server const*>(&server);
    return made != nullptr ? made->name() : std::string();
}

Zq::Ptr<iHTTPServer> Network::createHTTPServer(HTTPConnectionInfo const& info) {
    std::lock_guard const lock(mutex_);
    connections_.push_back(info);
    if (info.server.isEmpty()) {
        return {};
    }
    return Zq::makeShared<Server>(*this, info);
}

WideString Network::encodeUrlComponent(WideString const& text) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (char const character : toUTF8(text)) {
        auto const byte = static_cast<unsigned char>(character);
        bool const plain = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
                           (byte >= 'a' && byte <= 'z') ||
                           std::string_view("-._~").find(character) != std::string_view::npos;
        if (plain) {
            encoded += character;
        } else {
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return fromUTF8(encoded);
}

void Network::answerWith(Handler handler) {
    std::lock_guard const lock(mutex_);
    handler_ = std::move(handler);
}

void Network::answerWith(std::string body) {
    answerWith([body = std::move(body)](Request const&) { return Answer{body, 200}; });
}

std::optional<Answer> Network::ask(Request const& request) {
    Handler handler;
    {
        std::lock_guard const lock(mutex_);
        requests_.push_back(request);
        handler = handler_;
    }
    return handler ? handler(request) : std::nullopt;
}

std::vector<Request> Network::requests() const {
    std::lock_guard const lock(mutex_);
    return requests_;
}

Request Network::lastRequest() const {
    std::lock_guard const lock(mutex_);
    return requests_.empty() ? Request() : requests_.back();
}

void Network::forgetRequests() {
    std::lock_guard const lock(mutex_);
    requests_.clear();
}

std::vector<HTTPConnectionInfo> Network::connections() const {
    std::lock_guard const lock(mutex_);
    return connections_;
}

} // namespace fake
