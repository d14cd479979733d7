// Many small files at once, such as the pictures of a page: side by side on one connection where the server
// speaks HTTP/2, else on six, instead of one after the other.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <curl/curl.h>

#include "host/engine/network/Connector.h"
#include "host/engine/network/ServerStatistics.h"

namespace engine {

class SmallFiles {
public:
    static constexpr std::size_t largestFile = std::size_t{8} << 20; // bytes; a longer one is ended

    // Told of each file that came whole with status 200, as it comes; the bytes are valid during the call.
    // An exception ends the fetching and comes out of it.
    using Arrival = std::function<void(std::size_t index, std::string const& bytes)>;

    // The connector and the statistics outlive it. Throws std::runtime_error when libcurl gives no handle.
    SmallFiles(Connector const& connector, StatisticsTable& statistics);
    ~SmallFiles();
    SmallFiles(SmallFiles const&) = delete;
    SmallFiles& operator=(SmallFiles const&) = delete;

    // GETs the addresses, the first ones first; `index` counts them. What is no http or https address is left
    // out, and no redirect is followed. A server that asks for patience is asked for nothing more in this
    // call. Ends within a tenth of a second when the calling task is cancelled, and when nothing has moved
    // for the stall time. Thread: one at a time. Throws std::runtime_error and std::bad_alloc.
    void fetch(std::vector<std::string> const& addresses, Arrival const& arrival);

private:
    class Get;
    class Run;
    struct MultiFree {
        void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
    };

    Connector const& connector_;
    StatisticsTable& statistics_;
    HeaderList headers_;
    std::unique_ptr<CURLM, MultiFree> multi_;
    std::vector<std::unique_ptr<Get>> resting_; // after multi_: they end first
};

} // namespace engine
