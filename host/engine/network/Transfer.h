// One handle of libcurl with the connections it keeps: makes one request at a time, and leaves it within a
// tenth of a second when the task of the calling thread is cancelled.
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include <curl/curl.h>

#include "host/engine/network/Connector.h"
#include "host/engine/network/KeptSockets.h"
#include "host/engine/network/ResponseSink.h"

namespace engine {

enum class TransferKind {
    answer, // small and soon: any HTTP version, content encodings
    bulk,   // a file of any size: HTTP/1.1 and the bytes as they are
};

struct TransferRequest {
    enum class Method { get, post };

    Method method = Method::get;
    ServerAddress server;
    std::string url;               // of that server
    std::string_view body;         // of a POST; outlives the transfer
    curl_slist* headers = nullptr; // borrowed
    std::string userAgent;
};

struct TransferResult {
    bool whole = false;  // everything that was announced has arrived, and the sink took it
    int status = 0;      // of the answer, where one has begun
    std::string error;   // one printable line where `whole` is false
    std::string nextUrl; // where a redirect leads, empty for an answer that is none
    std::uint64_t bytesSent = 0;
    std::uint64_t bytesReceived = 0;
};

class Transfer {
public:
    // Throws std::runtime_error when libcurl gives no handle. The connector outlives the transfer.
    Transfer(Connector const& connector, TransferKind kind);

    // Makes the request and waits for its end. A POST reaches the server at most once. Throws
    // std::runtime_error when the request cannot be set up.
    [[nodiscard]] TransferResult run(TransferRequest const& request, iResponseSink& sink);

private:
    struct EasyFree {
        void operator()(CURL* easy) const noexcept { curl_easy_cleanup(easy); }
    };
    struct MultiFree {
        void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
    };
    enum class Ending { finished, cancelled, stalled, refused };

    void prepare(TransferRequest const& request);
    [[nodiscard]] Ending drive();
    [[nodiscard]] CURLcode finalCode() const;
    [[nodiscard]] bool startSink();
    [[nodiscard]] bool isConnected() const;
    [[nodiscard]] curl_off_t bytesMoved() const;
    [[nodiscard]] TransferResult conclude(TransferRequest const& request, Ending ending, CURLcode code);

    static std::size_t header(char* line, std::size_t size, std::size_t count, void* self);
    static std::size_t write(char* bytes, std::size_t size, std::size_t count, void* self);
    [[nodiscard]] bool wouldSendTwice() noexcept;
    static curl_socket_t openSocket(void* self, curlsocktype, curl_sockaddr* address);
    static int beforeRequest(void* self, char*, char*, int, int);

    Connector const& connector_;
    KeptSockets sockets_; // outlives the handles, which close them
    std::unique_ptr<CURLM, MultiFree> multi_;
    std::unique_ptr<CURL, EasyFree> easy_; // after multi_: it ends first
    std::array<char, CURL_ERROR_SIZE> detail_{};
    // Of the running request:
    iResponseSink* sink_ = nullptr;
    bool headEnded_ = false;
    bool started_ = false;
    bool refused_ = false;
    bool atMostOnce_ = false;
    bool requestMade_ = false;
    bool resendRefused_ = false;
};

} // namespace engine
