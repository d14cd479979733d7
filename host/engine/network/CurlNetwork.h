// The host's network service, on libcurl.
#pragma once

#include <string>
#include <vector>

#include "host/engine/network/NetworkCore.h"
#include "host/engine/network/NetworkSettings.h"
#include "host/files/iCacheStore.h"
#include "host/network/OSPrivate.h"

namespace engine {

// Kept connections are shared by all servers that it makes. Thread: any.
class CurlNetwork final : public iNetwork {
public:
    // Throws std::runtime_error when libcurl cannot be used.
    explicit CurlNetwork(NetworkSettings settings);

    // Null also when a header line or the user agent of the record holds control characters.
    [[nodiscard]] Zq::Ptr<iHTTPServer> createHTTPServer(HTTPConnectionInfo const& info) override;
    [[nodiscard]] WideString encodeUrlComponent(WideString const& text) override;

    // Fetches small files, such as the pictures of a page, side by side into the store, each under its
    // address; what the store has is not fetched. Gives the number of those that it has now. Blocks; the rest
    // is left out when the calling task is cancelled. What could not be had this way, for one a file behind a
    // redirect, may still be had one by one.
    std::size_t prefetch(std::vector<WideString> const& addresses, iCacheStore& store);

    // One entry for each server that was spoken to, in the order of their names.
    [[nodiscard]] std::vector<ServerStatistics> statistics() const;
    // The same for the requests that the calling thread has made itself since it first asked: what streams
    // and what other threads do beside it leaves no trace there.
    [[nodiscard]] std::vector<ServerStatistics> statisticsOfThisThread() const;
    // One line for each setting that could not be used, such as a ca_file that cannot be read.
    [[nodiscard]] std::vector<std::string> const& problems() const noexcept;

private:
    Zq::Ptr<NetworkCore> core_;
};

} // namespace engine
