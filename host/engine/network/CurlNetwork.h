// The host's network service, on libcurl.
#pragma once

#include <string>
#include <vector>

#include "host/engine/network/NetworkCore.h"
#include "host/engine/network/NetworkSettings.h"
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

    // One entry for each server that was spoken to, in the order of their names.
    [[nodiscard]] std::vector<ServerStatistics> statistics() const;
    // One line for each setting that could not be used, such as a ca_file that cannot be read.
    [[nodiscard]] std::vector<std::string> const& problems() const noexcept;

private:
    Zq::Ptr<NetworkCore> core_;
};

} // namespace engine
