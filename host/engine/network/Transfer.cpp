#include "host/engine/network/Transfer.h"

#include <algorithm>
#include <stdexcept>

#include "host/engine/network/CurlOption.h"
#include "host/engine/os/isTaskCancelled.h"

namespace engine {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int longestPoll_ms = 100; // between two looks at the task's state
constexpr long answerBuffer = 100L << 10;
constexpr long bulkBuffer = 512L << 10;
constexpr long keptConnections = 4;

template <class Value>
Value info(CURL* easy, CURLINFO what) {
    Value value{};
    curl_easy_getinfo(easy, what, &value);
    return value;
}

std::string_view headerValue(CURL* easy, char const* name) {
    curl_header* found = nullptr;
    bool const there = curl_easy_header(easy, name, 0, CURLH_HEADER, -1, &found) == CURLHE_OK;
    return there ? std::string_view(found->value) : std::string_view();
}

bool isRedirect(long status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// Adds the handle for the time of one request.
class Attachment {
public:
    Attachment(CURLM* multi, CURL* easy) : multi_(multi), easy_(easy) {
        if (curl_multi_add_handle(multi, easy) != CURLM_OK) {
            throw std::runtime_error("libcurl takes no request");
        }
    }
    ~Attachment() { curl_multi_remove_handle(multi_, easy_); }
    Attachment(Attachment const&) = delete;
    Attachment& operator=(Attachment const&) = delete;

private:
    CURLM* multi_;
    CURL* easy_;
};

} // namespace

Transfer::Transfer(Connector const& connector, TransferKind kind)
    : connector_(connector), multi_(curl_multi_init()), easy_(curl_easy_init()) {
    if (!multi_ || !easy_) {
        throw std::runtime_error("libcurl gives no handle");
    }
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, keptConnections);
    CURL* const easy = easy_.get();
    connector_.configure(easy);
    sockets_.watch(easy);
    setOption(easy, CURLOPT_ERRORBUFFER, detail_.data());
    setOption(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    setOption(easy, CURLOPT_HEADERFUNCTION, &Transfer::header);
    setOption(easy, CURLOPT_HEADERDATA, this);
    setOption(easy, CURLOPT_WRITEFUNCTION, &Transfer::write);
    setOption(easy, CURLOPT_WRITEDATA, this);
    setOption(easy, CURLOPT_OPENSOCKETFUNCTION, &Transfer::openSocket);
    setOption(easy, CURLOPT_OPENSOCKETDATA, this);
    setOption(easy, CURLOPT_PREREQFUNCTION, &Transfer::beforeRequest);
    setOption(easy, CURLOPT_PREREQDATA, this);
    if (kind == TransferKind::bulk) {
        // One HTTP/2 stream carries a large file more slowly than a connection of its own.
        setOption(easy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
        setOption(easy, CURLOPT_BUFFERSIZE, bulkBuffer);
    } else {
        setOption(easy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_2TLS});
        setOption(easy, CURLOPT_BUFFERSIZE, answerBuffer);
        setOption(easy, CURLOPT_ACCEPT_ENCODING, "");
    }
}

TransferResult Transfer::run(TransferRequest const& request, iResponseSink& sink) {
    if (isTaskCancelled()) {
        return conclude(request, Ending::cancelled, CURLE_OK);
    }
    sink_ = &sink;
    headEnded_ = started_ = refused_ = requestMade_ = resendRefused_ = false;
    detail_[0] = '\0';
    prepare(request);
    Attachment const attachment(multi_.get(), easy_.get());
    Ending const ending = drive();
    CURLcode code = ending == Ending::finished ? finalCode() : CURLE_OK;
    if (code == CURLE_OK && ending == Ending::finished) {
        // libcurl takes the end of the connection for the end of a head.
        code = !headEnded_ ? CURLE_PARTIAL_FILE : startSink() ? CURLE_OK : CURLE_WRITE_ERROR;
    }
    return conclude(request, ending, code);
}

void Transfer::prepare(TransferRequest const& request) {
    CURL* const easy = easy_.get();
    connector_.chooseProxy(easy, request.server);
    atMostOnce_ = request.method == TransferRequest::Method::post;
    if (atMostOnce_) {
        setOption(easy, CURLOPT_POST, 1L);
        setOption(easy, CURLOPT_POSTFIELDS, request.body.data());
        setOption(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    } else {
        setOption(easy, CURLOPT_POSTFIELDS, nullptr);
        setOption(easy, CURLOPT_HTTPGET, 1L);
    }
    // A connection that the server has ended would cost a request that is sent once only.
    setOption(easy, CURLOPT_FRESH_CONNECT, sockets_.isOneSpeaking() ? 1L : 0L);
    setOption(easy, CURLOPT_URL, request.url.c_str());
    setOption(easy, CURLOPT_HTTPHEADER, request.headers);
    setOption(easy, CURLOPT_USERAGENT, request.userAgent.c_str());
}

Transfer::Ending Transfer::drive() {
    auto const patience = connector_.settings().stallTimeout;
    auto lastMove = Clock::now();
    curl_off_t moved = -1;
    for (;;) {
        int running = 0;
        if (curl_multi_perform(multi_.get(), &running) != CURLM_OK) {
            throw std::runtime_error("libcurl cannot go on");
        }
        if (running == 0) {
            return Ending::finished;
        }
        if (isTaskCancelled()) {
            return Ending::cancelled;
        }
        curl_off_t const now = bytesMoved();
        // Until there is a connection the connect deadline holds alone.
        if (now != moved || !isConnected()) {
            moved = now;
            lastMove = Clock::now();
        } else if (Clock::now() - lastMove > patience) {
            return Ending::stalled;
        }
        if (!sink_->pause()) {
            return Ending::refused;
        }
        if (curl_multi_poll(multi_.get(), nullptr, 0, longestPoll_ms, nullptr) != CURLM_OK) {
            throw std::runtime_error("libcurl cannot wait");
        }
    }
}

CURLcode Transfer::finalCode() const {
    int left = 0;
    while (CURLMsg const* const message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg == CURLMSG_DONE && message->easy_handle == easy_.get()) {
            return message->data.result;
        }
    }
    return CURLE_FAILED_INIT;
}

bool Transfer::startSink() {
    if (started_) {
        return !refused_;
    }
    started_ = true;
    CURL* const easy = easy_.get();
    ResponseHead head;
    auto const status = info<long>(easy, CURLINFO_RESPONSE_CODE);
    head.status = static_cast<int>(status);
    auto const length = info<curl_off_t>(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
    if (length >= 0) {
        head.length = static_cast<std::uint64_t>(length);
    }
    std::string_view const encoding = headerValue(easy, "Content-Encoding");
    head.encoded = !encoding.empty() && curl_strequal(encoding.data(), "identity") == 0;
    head.redirects = !atMostOnce_ && isRedirect(status) && !headerValue(easy, "Location").empty();
    refused_ = !sink_->start(head);
    return !refused_;
}

std::size_t Transfer::header(char* line, std::size_t size, std::size_t count, void* self) {
    std::string_view const text(line, size * count);
    static_cast<Transfer*>(self)->headEnded_ = text == "\r\n" || text == "\n";
    return text.size();
}

std::size_t Transfer::write(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto* const transfer = static_cast<Transfer*>(self);
    std::size_t const total = size * count;
    if (!transfer->startSink() || !transfer->sink_->take({bytes, total})) {
        transfer->refused_ = true;
        return total == 0 ? 1 : 0; // anything but `total`
    }
    return total;
}

// libcurl makes a request anew when a kept connection turns out to be dead. Whether the server acted on the
// first one cannot be known then, so a POST ends instead.
bool Transfer::wouldSendTwice() noexcept {
    resendRefused_ = resendRefused_ || (atMostOnce_ && requestMade_);
    return resendRefused_;
}

curl_socket_t Transfer::openSocket(void* self, curlsocktype, curl_sockaddr* address) {
    return static_cast<Transfer*>(self)->wouldSendTwice()
               ? CURL_SOCKET_BAD
               : static_cast<Transfer*>(self)->sockets_.open(*address);
}

int Transfer::beforeRequest(void* self, char*, char*, int, int) {
    auto* const transfer = static_cast<Transfer*>(self);
    if (transfer->wouldSendTwice()) {
        return CURL_PREREQFUNC_ABORT;
    }
    transfer->requestMade_ = true;
    return CURL_PREREQFUNC_OK;
}

bool Transfer::isConnected() const {
    return info<curl_off_t>(easy_.get(), CURLINFO_PRETRANSFER_TIME_T) > 0;
}

curl_off_t Transfer::bytesMoved() const {
    CURL* const easy = easy_.get();
    return info<curl_off_t>(easy, CURLINFO_SIZE_DOWNLOAD_T) + info<curl_off_t>(easy, CURLINFO_SIZE_UPLOAD_T) +
           info<long>(easy, CURLINFO_HEADER_SIZE) + info<long>(easy, CURLINFO_REQUEST_SIZE);
}

TransferResult Transfer::conclude(TransferRequest const& request, Ending ending, CURLcode code) {
    CURL* const easy = easy_.get();
    std::string const name = request.server.name();
    TransferResult result;
    switch (ending) {
    case Ending::cancelled:
        result.error = "the task that spoke to " + name + " was cancelled";
        break;
    case Ending::stalled:
        result.error = connector_.explain(CURLE_OPERATION_TIMEDOUT, {}, true, request.server);
        break;
    case Ending::refused:
    case Ending::finished:
        if (refused_ || ending == Ending::refused) {
            result.error = "the answer of " + name + " was too large, encoded or not wanted further";
        } else if (resendRefused_) {
            result.error = name + " closed the connection on a request that is not sent twice";
        } else if (code != CURLE_OK) {
            result.error = connector_.explain(code, detail_.data(), isConnected(), request.server);
        } else {
            result.whole = true;
        }
        break;
    }
    if (requestMade_) {
        result.bytesSent = static_cast<std::uint64_t>(std::max<curl_off_t>(
            info<long>(easy, CURLINFO_REQUEST_SIZE), info<curl_off_t>(easy, CURLINFO_SIZE_UPLOAD_T)));
        result.bytesReceived = static_cast<std::uint64_t>(info<long>(easy, CURLINFO_HEADER_SIZE) +
                                                          info<curl_off_t>(easy, CURLINFO_SIZE_DOWNLOAD_T));
        result.status = static_cast<int>(info<long>(easy, CURLINFO_RESPONSE_CODE));
    }
    if (result.whole && !atMostOnce_ && isRedirect(result.status) && !headerValue(easy, "Location").empty()) {
        char const* const url = info<char const*>(easy, CURLINFO_REDIRECT_URL);
        result.nextUrl = url != nullptr ? url : "";
        if (result.nextUrl.empty()) {
            result.whole = false;
            result.error = name + " redirects to what is no address";
        }
    }
    return result;
}

} // namespace engine
