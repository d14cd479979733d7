#include "host/engine/streaming/RangeTransfer.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <utility>

#include "host/engine/network/CurlOption.h"

namespace engine {

namespace {

constexpr long buffer_bytes = 256L << 10;
constexpr std::uint64_t mostDropped_bytes = std::uint64_t{64} << 10;
constexpr int mostRedirects = 5;

template <class Value>
Value info(CURL* easy, CURLINFO what) {
    Value value{};
    curl_easy_getinfo(easy, what, &value);
    return value;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    std::size_t const first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isNamed(std::string_view name, char const* wanted) {
    return name.size() == std::string_view(wanted).size() &&
           curl_strnequal(name.data(), wanted, name.size()) != 0;
}

} // namespace

RangeTransfer::RangeTransfer(std::shared_ptr<iRangeClient> client, RangeJob& job,
                             StreamingOptions const& options, CURLSH* share)
    : client_(std::move(client)), job_(job), options_(options),
      connector_(client_->server().core().connector), server_(client_->server().address()),
      host_(server_.name()), easy_(curl_easy_init()) {
    if (!easy_) {
        throw std::runtime_error("libcurl gives no handle");
    }
    CURL* const easy = easy_.get();
    connector_.configure(easy);
    setOption(easy, CURLOPT_SHARE, share);
    setOption(easy, CURLOPT_PRIVATE, this);
    setOption(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(options_.connectTimeout.count()));
    setOption(easy, CURLOPT_ERRORBUFFER, detail_.data());
    setOption(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    // One HTTP/2 stream carries a large file more slowly than a connection of its own.
    setOption(easy, CURLOPT_HTTP_VERSION, long{CURL_HTTP_VERSION_1_1});
    setOption(easy, CURLOPT_BUFFERSIZE, buffer_bytes);
    setOption(easy, CURLOPT_HEADERFUNCTION, &RangeTransfer::header);
    setOption(easy, CURLOPT_HEADERDATA, this);
    setOption(easy, CURLOPT_WRITEFUNCTION, &RangeTransfer::write);
    setOption(easy, CURLOPT_WRITEDATA, this);
    setOption(easy, CURLOPT_USERAGENT, client_->server().userAgent().c_str());
    append(headers_, "Accept-Encoding: identity");
    for (std::string const& line : job_.headers) {
        append(headers_, line);
    }
    setOption(easy, CURLOPT_HTTPHEADER, headers_.get());
    request(job_.url);
}

void RangeTransfer::request(std::string const& url) {
    connector_.chooseProxy(easy(), server_);
    setOption(easy(), CURLOPT_HTTPGET, 1L);
    setOption(easy(), CURLOPT_URL, url.c_str());
    answer_ = {};
    headEnded_ = redirects_ = false;
    dropped_ = 0;
    lastMove_.reset();
    detail_[0] = '\0';
}

bool RangeTransfer::isRedirect() const {
    int const status = answer_.status;
    return redirects_ && (status == 301 || status == 302 || status == 303 || status == 307 || status == 308);
}

bool RangeTransfer::takeLine(std::string_view line) {
    if (line.starts_with("HTTP/")) {
        answer_ = {};
        headEnded_ = redirects_ = false;
        return true;
    }
    if (headEnded_) {
        return true; // of a trailer
    }
    std::size_t const colon = line.find(':');
    if (trimmed(line).empty()) {
        answer_.status = static_cast<int>(info<long>(easy(), CURLINFO_RESPONSE_CODE));
        if (answer_.status < 200) {
            return true;
        }
        headEnded_ = true;
        verdict_ = isRedirect() ? iRangeClient::Verdict::drop : client_->answered(job_, answer_);
        isLeft_ = verdict_ == iRangeClient::Verdict::leave;
        return !isLeft_;
    }
    if (colon == std::string_view::npos) {
        return true;
    }
    std::string_view const name = line.substr(0, colon);
    std::string_view const value = trimmed(line.substr(colon + 1));
    if (isNamed(name, "Content-Range")) {
        answer_.contentRange = parseContentRange(value);
    } else if (isNamed(name, "Content-Length")) {
        std::uint64_t length = 0;
        auto const result = std::from_chars(value.data(), value.data() + value.size(), length);
        if (result.ec == std::errc()) {
            answer_.length = length;
        }
    } else if (isNamed(name, "ETag")) {
        answer_.etag = value;
    } else if (isNamed(name, "Last-Modified")) {
        answer_.lastModified = value;
    } else if (isNamed(name, "Content-Encoding")) {
        answer_.encoded = !value.empty() && !(value.size() == 8 && isNamed(value, "identity"));
    } else if (isNamed(name, "Content-Type")) {
        answer_.isPage = isNamed(value.substr(0, 9), "text/html");
    } else if (isNamed(name, "Location")) {
        redirects_ = !value.empty();
    }
    return true;
}

std::size_t RangeTransfer::header(char* line, std::size_t size, std::size_t count, void* self) {
    auto* const transfer = static_cast<RangeTransfer*>(self);
    std::string_view const text(line, size * count);
    transfer->lastMove_ = Clock::now();
    try {
        return transfer->takeLine(text) ? text.size() : 0;
    } catch (std::exception const&) {
        return 0;
    }
}

std::size_t RangeTransfer::takeBody(std::string_view bytes) {
    if (verdict_ == iRangeClient::Verdict::drop) {
        dropped_ += bytes.size();
        isLeft_ = dropped_ > mostDropped_bytes;
        return isLeft_ ? 0 : bytes.size();
    }
    switch (client_->received(job_, bytes)) {
    case iRangeClient::Flow::go:
        return bytes.size();
    case iRangeClient::Flow::pause:
        return CURL_WRITEFUNC_PAUSE;
    case iRangeClient::Flow::leave:
        break;
    }
    isLeft_ = true;
    return 0;
}

std::size_t RangeTransfer::write(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto* const transfer = static_cast<RangeTransfer*>(self);
    transfer->lastMove_ = Clock::now();
    try {
        return transfer->takeBody({bytes, size * count});
    } catch (std::exception const&) {
        return 0;
    }
}

bool RangeTransfer::follow(StreamError& error) {
    if (!headEnded_ || !isRedirect()) {
        return false;
    }
    char const* const url = info<char const*>(easy(), CURLINFO_REDIRECT_URL);
    std::string const next = url != nullptr ? url : "";
    std::optional<ServerAddress> const address = ServerAddress::ofUrl(next);
    error.kind = StreamError::Kind::protocol;
    if (++redirectCount_ > mostRedirects) {
        error.text = server_.name() + " redirects more than 5 times";
    } else if (!address) {
        error.text = server_.name() + " redirects to what is no http or https address";
    } else if (server_.secure && !address->secure) {
        error.text = server_.name() + " redirects from https to http";
    } else {
        server_ = *address;
        request(next);
        error = {};
        return true;
    }
    return false;
}

StreamError RangeTransfer::errorOf(CURLcode code) const {
    if (code == CURLE_OK) {
        return headEnded_ ? StreamError{}
                          : StreamError{StreamError::Kind::cut, server_.name() + " gave no whole answer"};
    }
    StreamError error;
    error.text = connector_.explain(code, detail_.data(), lastMove_.has_value(), server_);
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        error.kind = StreamError::Kind::stalled;
        break;
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_GOT_NOTHING:
        error.kind = StreamError::Kind::cut;
        break;
    case CURLE_WRITE_ERROR:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_BAD_CONTENT_ENCODING:
        error.kind = StreamError::Kind::protocol;
        break;
    default:
        error.kind = StreamError::Kind::unreachable;
        break;
    }
    return error;
}

std::optional<RangeTransfer::Clock::time_point> RangeTransfer::deadline() {
    if (!lastMove_ && info<curl_off_t>(easy(), CURLINFO_PRETRANSFER_TIME_T) > 0) {
        lastMove_ = Clock::now();
    }
    return lastMove_ && !job_.paused ? std::optional(*lastMove_ + options_.stallTimeout) : std::nullopt;
}

StreamError RangeTransfer::stalled() const {
    return {StreamError::Kind::stalled, connector_.explain(CURLE_OPERATION_TIMEDOUT, {}, true, server_)};
}

void RangeTransfer::resume() {
    lastMove_ = Clock::now();
    curl_easy_pause(easy(), CURLPAUSE_CONT);
}

void RangeTransfer::account(StreamError const& error) const {
    ServerStatistics call;
    call.server = client_->server().address().origin();
    call.requests = 1;
    // An answer that the file left is a failure where it was wrong, not where enough of it had come; nor is a
    // request that was given up.
    bool const isGivenUp = error.kind == StreamError::Kind::cancelled;
    StreamError const& failure = isLeft_ && !isGivenUp ? job_.fault : error;
    call.failures = failure && !isGivenUp ? 1 : 0;
    call.countStatus(failure ? 0 : answer_.status);
    call.bytesSent = static_cast<std::uint64_t>(std::max(info<long>(easy(), CURLINFO_REQUEST_SIZE), 0L));
    call.bytesReceived = static_cast<std::uint64_t>(std::max<curl_off_t>(
        info<long>(easy(), CURLINFO_HEADER_SIZE) + info<curl_off_t>(easy(), CURLINFO_SIZE_DOWNLOAD_T), 0));
    call.totalTime = std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - started_);
    call.lastError = failure.text;
    if (call.refusals != 0) {
        call.lastError = host_ + " answered with the error status " + std::to_string(answer_.status);
    }
    client_->server().core().statistics.add(call);
}

} // namespace engine
