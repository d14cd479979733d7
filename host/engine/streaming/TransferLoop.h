// The one thread that carries all requests of all streamed files.
#pragma once

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include <curl/curl.h>

#include "host/engine/streaming/RangeJob.h"
#include "host/engine/streaming/RangeTransfer.h"
#include "host/engine/streaming/StreamingCounters.h"
#include "host/engine/streaming/StreamingOptions.h"

namespace engine {

// Thread: any. At most two requests of a file and four to a server run at once, over connections that are
// kept. The thread begins with the first file.
class TransferLoop {
public:
    // Both outlive the loop. Throws std::runtime_error when libcurl cannot be used.
    TransferLoop(StreamingOptions const& options, StreamingCounters& counters);
    ~TransferLoop();
    TransferLoop(TransferLoop const&) = delete;
    TransferLoop& operator=(TransferLoop const&) = delete;

    // Has the client asked for its plan soon. Does nothing after stop(). Throws std::system_error when the
    // thread does not begin.
    void wake(std::shared_ptr<iRangeClient> client);
    // Ends every request and the thread.
    void stop() noexcept;

private:
    struct MultiFree {
        void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
    };
    struct ShareFree {
        void operator()(CURLSH* share) const noexcept { curl_share_cleanup(share); }
    };
    using Transfers = std::vector<std::unique_ptr<RangeTransfer>>;

    void run();
    [[nodiscard]] bool takeWoken(std::vector<std::shared_ptr<iRangeClient>>& woken);
    void serve(std::shared_ptr<iRangeClient> const& client);
    void start(std::shared_ptr<iRangeClient> const& client, RangeJob& job);
    void collect();
    void endStalled();
    void end(Transfers::iterator transfer, StreamError const& error);
    [[nodiscard]] Transfers::iterator find(RangeJob const& job);
    [[nodiscard]] int patience_ms();

    StreamingOptions const& options_;
    StreamingCounters& counters_;
    std::unique_ptr<CURLSH, ShareFree> share_;
    std::unique_ptr<CURLM, MultiFree> multi_;
    Transfers transfers_;                                // the thread's own
    std::vector<std::shared_ptr<iRangeClient>> starved_; // the thread's own
    std::mutex mutex_;
    std::vector<std::shared_ptr<iRangeClient>> woken_;
    bool stopping_ = false;
    std::thread thread_;
};

} // namespace engine
