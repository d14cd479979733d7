// One request on a handle of libcurl, its redirects included.
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <curl/curl.h>

#include "host/engine/network/Connector.h"
#include "host/engine/streaming/RangeJob.h"
#include "host/engine/streaming/StreamingOptions.h"

namespace engine {

// Thread: the loop's.
class RangeTransfer {
public:
    using Clock = std::chrono::steady_clock;

    // Throws std::runtime_error when libcurl takes no request. `share` outlives the transfer.
    RangeTransfer(std::shared_ptr<iRangeClient> client, RangeJob& job, StreamingOptions const& options,
                  CURLSH* share);
    RangeTransfer(RangeTransfer const&) = delete;
    RangeTransfer& operator=(RangeTransfer const&) = delete;

    [[nodiscard]] CURL* easy() const noexcept { return easy_.get(); }
    [[nodiscard]] RangeJob& job() const noexcept { return job_; }
    [[nodiscard]] std::shared_ptr<iRangeClient> const& client() const noexcept { return client_; }
    // The server that the file belongs to, whoever answers for it.
    [[nodiscard]] std::string const& host() const noexcept { return host_; }

    // Goes to where a redirect leads; false when the answer is none, or is one that is not followed, which
    // `error` then tells.
    [[nodiscard]] bool follow(StreamError& error);
    // How libcurl's own result reads for the file.
    [[nodiscard]] StreamError errorOf(CURLcode code) const;
    // The moment at which it has waited too long; nothing while it connects or is paused.
    [[nodiscard]] std::optional<Clock::time_point> deadline();
    [[nodiscard]] StreamError stalled() const;
    void resume();
    // Adds what it cost to the network's figures.
    void account(StreamError const& error) const;

private:
    struct EasyFree {
        void operator()(CURL* easy) const noexcept { curl_easy_cleanup(easy); }
    };
    void request(std::string const& url);
    [[nodiscard]] bool takeLine(std::string_view line);
    [[nodiscard]] std::size_t takeBody(std::string_view bytes);
    [[nodiscard]] bool isRedirect() const;

    static std::size_t header(char* line, std::size_t size, std::size_t count, void* self);
    static std::size_t write(char* bytes, std::size_t size, std::size_t count, void* self);

    std::shared_ptr<iRangeClient> const client_;
    RangeJob& job_;
    StreamingOptions const& options_;
    Connector const& connector_;
    ServerAddress server_; // that of the running request
    std::string const host_;
    std::unique_ptr<CURL, EasyFree> easy_;
    HeaderList headers_;
    std::array<char, CURL_ERROR_SIZE> detail_{};
    RangeAnswer answer_;
    bool headEnded_ = false;
    bool redirects_ = false;
    iRangeClient::Verdict verdict_ = iRangeClient::Verdict::drop;
    bool isLeft_ =
        false; // the file wanted no more of the answer, which libcurl takes for a mistake in writing
    std::uint64_t dropped_ = 0;
    int redirectCount_ = 0;
    Clock::time_point const started_ = Clock::now();
    std::optional<Clock::time_point> lastMove_; // once connected
};

} // namespace engine
