#include "host/engine/streaming/TransferLoop.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "host/log/Log.h"

namespace engine {

namespace {

constexpr std::ptrdiff_t mostOfAFile = 2;
constexpr std::ptrdiff_t mostToAServer = 4;
constexpr long keptConnections = 16;
constexpr std::chrono::milliseconds longestPoll{1000};

} // namespace

TransferLoop::TransferLoop(StreamingOptions const& options, StreamingCounters& counters)
    : options_(options), counters_(counters), share_(curl_share_init()), multi_(curl_multi_init()) {
    if (!share_ || !multi_) {
        throw std::runtime_error("libcurl gives no handle");
    }
    // A second connection to a server need not agree on keys anew. Only one thread uses the share.
    curl_share_setopt(share_.get(), CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, keptConnections);
}

TransferLoop::~TransferLoop() {
    stop();
}

void TransferLoop::wake(std::shared_ptr<iRangeClient> client) {
    {
        std::lock_guard const lock(mutex_);
        if (stopping_) {
            return;
        }
        if (std::ranges::find(woken_, client) != woken_.end()) {
            return;
        }
        woken_.push_back(std::move(client));
        if (!thread_.joinable()) {
            thread_ = std::thread([this] { run(); });
        }
    }
    curl_multi_wakeup(multi_.get());
}

void TransferLoop::stop() noexcept {
    {
        std::lock_guard const lock(mutex_);
        stopping_ = true;
    }
    curl_multi_wakeup(multi_.get());
    if (thread_.joinable()) {
        thread_.join();
    }
}

bool TransferLoop::takeWoken(std::vector<std::shared_ptr<iRangeClient>>& woken) {
    woken.clear();
    std::lock_guard const lock(mutex_);
    woken.swap(woken_);
    return !stopping_;
}

void TransferLoop::run() {
    std::vector<std::shared_ptr<iRangeClient>> woken;
    while (takeWoken(woken)) {
        try {
            for (std::shared_ptr<iRangeClient> const& client : woken) {
                serve(client);
            }
            int running = 0;
            curl_multi_perform(multi_.get(), &running);
            collect();
            endStalled();
        } catch (std::exception const& failure) {
            Log("A request of a streamed file was not dealt with: %s", failure.what());
        }
        woken.clear(); // a file that is of no more use ends here, not after the wait
        curl_multi_poll(multi_.get(), nullptr, 0, patience_ms(), nullptr);
    }
    StreamError const over{StreamError::Kind::ended, "streaming has ended"};
    while (!transfers_.empty()) {
        end(transfers_.begin(), over);
    }
    starved_.clear();
    std::lock_guard const lock(mutex_);
    woken_.clear();
}

void TransferLoop::serve(std::shared_ptr<iRangeClient> const& client) {
    std::string const host = client->server().address().name();
    auto const ofFile =
        std::ranges::count_if(transfers_, [&](auto const& transfer) { return transfer->client() == client; });
    auto const toServer =
        std::ranges::count_if(transfers_, [&](auto const& transfer) { return transfer->host() == host; });
    auto const room = std::max<std::ptrdiff_t>(std::min(mostOfAFile - ofFile, mostToAServer - toServer), 0);
    iRangeClient::Plan plan = client->plan(static_cast<std::size_t>(room));
    for (std::unique_ptr<RangeJob> const& job : plan.abort) {
        if (auto const transfer = find(*job); transfer != transfers_.end()) {
            curl_multi_remove_handle(multi_.get(), (*transfer)->easy());
            (*transfer)->account({StreamError::Kind::cancelled, {}});
            transfers_.erase(transfer);
        }
    }
    for (RangeJob* const job : plan.resume) {
        if (auto const transfer = find(*job); transfer != transfers_.end()) {
            (*transfer)->resume();
        }
    }
    for (RangeJob* const job : plan.start) {
        start(client, *job);
    }
    std::erase(starved_, client);
    if (plan.starved) {
        starved_.push_back(client);
    }
}

void TransferLoop::start(std::shared_ptr<iRangeClient> const& client, RangeJob& job) {
    ++counters_.requests;
    try {
        auto transfer = std::make_unique<RangeTransfer>(client, job, options_, share_.get());
        if (curl_multi_add_handle(multi_.get(), transfer->easy()) != CURLM_OK) {
            throw std::runtime_error("libcurl takes no request");
        }
        transfers_.push_back(std::move(transfer));
    } catch (std::exception const& failure) {
        client->finished(job, {StreamError::Kind::unreachable, failure.what()});
    }
}

void TransferLoop::collect() {
    int left = 0;
    while (CURLMsg const* const message = curl_multi_info_read(multi_.get(), &left)) {
        if (message->msg != CURLMSG_DONE) {
            continue;
        }
        CURL* const easy = message->easy_handle;
        CURLcode const code = message->data.result;
        auto const transfer = std::ranges::find_if(
            transfers_, [easy](auto const& candidate) { return candidate->easy() == easy; });
        if (transfer == transfers_.end()) {
            continue;
        }
        StreamError error;
        if (code == CURLE_OK && (*transfer)->follow(error)) {
            curl_multi_remove_handle(multi_.get(), easy);
            if (curl_multi_add_handle(multi_.get(), easy) == CURLM_OK) {
                curl_multi_wakeup(multi_.get());
                continue;
            }
            error = {StreamError::Kind::unreachable, "libcurl takes no request"};
        }
        end(transfer, error ? error : (*transfer)->errorOf(code));
    }
}

void TransferLoop::endStalled() {
    auto const now = RangeTransfer::Clock::now();
    for (std::size_t i = transfers_.size(); i-- > 0;) {
        auto const deadline = transfers_[i]->deadline();
        if (deadline && *deadline <= now) {
            end(transfers_.begin() + static_cast<std::ptrdiff_t>(i), transfers_[i]->stalled());
        }
    }
}

void TransferLoop::end(Transfers::iterator place, StreamError const& error) {
    std::unique_ptr<RangeTransfer> const transfer = std::move(*place);
    transfers_.erase(place);
    curl_multi_remove_handle(multi_.get(), transfer->easy());
    transfer->account(error);
    transfer->client()->finished(transfer->job(), error);
    for (std::shared_ptr<iRangeClient>& client : std::exchange(starved_, {})) {
        wake(std::move(client));
    }
}

TransferLoop::Transfers::iterator TransferLoop::find(RangeJob const& job) {
    return std::ranges::find_if(transfers_,
                                [&job](auto const& transfer) { return &transfer->job() == &job; });
}

int TransferLoop::patience_ms() {
    auto const now = RangeTransfer::Clock::now();
    auto patience = longestPoll;
    for (std::unique_ptr<RangeTransfer> const& transfer : transfers_) {
        if (auto const deadline = transfer->deadline()) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - now);
            patience = std::clamp(left, std::chrono::milliseconds(0), patience);
        }
    }
    return static_cast<int>(patience.count());
}

} // namespace engine
