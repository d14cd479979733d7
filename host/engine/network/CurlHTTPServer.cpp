#include "host/engine/network/CurlHTTPServer.h"

#include <algorithm>
#include <utility>

#include "host/engine/network/BodySink.h"
#include "host/engine/network/ReceiverSink.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

constexpr int mostRedirects = 5;
constexpr std::string_view ownUserAgent = "zq";

class HttpReply final : public iHTTPReply {
public:
    HttpReply(int status, Zq::Ptr<iMemHolder> body) noexcept : status_(status), body_(std::move(body)) {}
    [[nodiscard]] Zq::Ptr<iMemHolder> getBody() override { return body_; }
    [[nodiscard]] int getStatus() const override { return status_; }

private:
    int status_;
    Zq::Ptr<iMemHolder> body_;
};

// Passes an answer on, and drops the body of a redirect.
class AnswerSink final : public iResponseSink {
public:
    explicit AnswerSink(iResponseSink& sink) noexcept : sink_(sink) {}

    [[nodiscard]] bool start(ResponseHead const& head) noexcept override {
        dropping_ = head.redirects;
        return dropping_ || sink_.start(head);
    }
    [[nodiscard]] bool take(std::string_view bytes) noexcept override {
        if (!dropping_) {
            return sink_.take(bytes);
        }
        dropped_ += bytes.size();
        return dropped_ <= BodySink::largestBody;
    }
    [[nodiscard]] bool pause() noexcept override { return dropping_ || sink_.pause(); }

private:
    iResponseSink& sink_;
    bool dropping_ = false;
    std::size_t dropped_ = 0;
};

bool isOneLine(WideString const& text) {
    return std::ranges::none_of(text, [](wchar_t c) { return (c >= 0 && c < 0x20) || c == 0x7f; });
}

void fail(TransferResult& result, std::string reason) {
    result.whole = false;
    result.error = std::move(reason);
}

} // namespace

void CurlHTTPServer::Headers::append(std::string const& line) {
    engine::append(own, line);
    engine::append(elsewhere, line);
}

Zq::Ptr<CurlHTTPServer> CurlHTTPServer::create(Zq::Ptr<NetworkCore> const& core,
                                               HTTPConnectionInfo const& info) {
    std::optional<ServerAddress> address = ServerAddress::of(info);
    if (!address || !isOneLine(info.userAgent) || !std::ranges::all_of(info.headers, isOneLine)) {
        return {};
    }
    return Zq::makeShared<CurlHTTPServer>(core, std::move(*address), info);
}

CurlHTTPServer::CurlHTTPServer(Zq::Ptr<NetworkCore> const& core, ServerAddress address,
                               HTTPConnectionInfo const& info)
    : core_(core), address_(std::move(address)),
      userAgent_(info.userAgent.isEmpty() ? ownUserAgent : toUTF8(info.userAgent).view()) {
    postHeaders_.append("Content-Type: application/x-www-form-urlencoded");
    postHeaders_.append("Expect:"); // no round trip before the body
    bulkHeaders_.append("Accept-Encoding: identity");
    for (WideString const& line : info.headers) {
        std::string const text(toUTF8(line).view());
        for (Headers* const headers : {&getHeaders_, &postHeaders_, &bulkHeaders_}) {
            append(headers->own, text);
        }
    }
}

Zq::Ptr<iHTTPReply> CurlHTTPServer::get(WideString const& path) {
    try {
        BodySink sink;
        TransferRequest request;
        request.url = address_.url(path);
        std::optional<int> const status =
            exchange(TransferKind::answer, std::move(request), getHeaders_, sink);
        return status ? Zq::makeShared<HttpReply>(*status, sink.body()) : Zq::Ptr<HttpReply>();
    } catch (std::exception const&) {
        return {};
    }
}

Zq::Ptr<iHTTPReply> CurlHTTPServer::postForm(WideString const& body, WideString const& path) {
    try {
        BodySink sink;
        NarrowString const bytes = toUTF8(body);
        TransferRequest request;
        request.method = TransferRequest::Method::post;
        request.url = address_.url(path);
        request.body = bytes.view();
        std::optional<int> const status =
            exchange(TransferKind::answer, std::move(request), postHeaders_, sink);
        return status ? Zq::makeShared<HttpReply>(*status, sink.body()) : Zq::Ptr<HttpReply>();
    } catch (std::exception const&) {
        return {};
    }
}

int CurlHTTPServer::httpGetToReceiver(WideString const& path, iDataReceiver& receiver) {
    ReceiverSink sink(receiver);
    std::optional<int> status;
    try {
        TransferRequest request;
        request.url = address_.url(path);
        status = exchange(TransferKind::bulk, std::move(request), bulkHeaders_, sink);
    } catch (std::exception const&) {
        status.reset();
    }
    return sink.finish(status.has_value()) ? *status : 0;
}

std::optional<int> CurlHTTPServer::exchange(TransferKind kind, TransferRequest request,
                                            Headers const& headers, iResponseSink& sink) {
    auto const start = std::chrono::steady_clock::now();
    request.server = address_;
    request.userAgent = userAgent_;
    TransferResult result;
    {
        HandlePool::Lease const transfer = core_->pool.lease(address_, kind);
        result = follow(*transfer.operator->(), request, headers, sink);
    }
    ServerStatistics call;
    call.server = address_.origin();
    call.requests = 1;
    call.failures = result.whole ? 0 : 1;
    call.countStatus(result.whole ? result.status : 0);
    call.bytesSent = result.bytesSent;
    call.bytesReceived = result.bytesReceived;
    call.totalTime =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start);
    call.lastError = call.refusals == 0 ? std::move(result.error)
                                        : address_.name() + " answered with the error status " +
                                              std::to_string(result.status);
    core_->statistics.add(call);
    return result.whole ? std::optional(result.status) : std::nullopt;
}

// Redirects are followed here and not by libcurl, which would go back from https to http by way of a third
// address.
TransferResult CurlHTTPServer::follow(Transfer& transfer, TransferRequest& request, Headers const& headers,
                                      iResponseSink& sink) const {
    std::uint64_t sent = 0;
    std::uint64_t received = 0;
    TransferResult result;
    for (int redirects = 0;; ++redirects) {
        AnswerSink answer(sink);
        request.headers = (request.server == address_ ? headers.own : headers.elsewhere).get();
        result = transfer.run(request, answer);
        sent += result.bytesSent;
        received += result.bytesReceived;
        if (!result.whole || result.nextUrl.empty()) {
            break;
        }
        std::optional<ServerAddress> const next = ServerAddress::ofUrl(result.nextUrl);
        std::string const name = request.server.name();
        if (redirects == mostRedirects) {
            fail(result, name + " redirects more than 5 times");
        } else if (!next) {
            fail(result, name + " redirects to what is no http or https address");
        } else if (request.server.secure && !next->secure) {
            fail(result, name + " redirects from https to http");
        } else {
            request.server = *next;
            request.url = result.nextUrl;
            continue;
        }
        break;
    }
    result.bytesSent = sent;
    result.bytesReceived = received;
    return result;
}

} // namespace engine
