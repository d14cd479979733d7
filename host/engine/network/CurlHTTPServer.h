// One server, spoken to through libcurl.
#pragma once

#include <optional>
#include <string>

#include "host/engine/network/NetworkCore.h"
#include "host/engine/network/Transfer.h"
#include "host/network/iHTTPServer.h"

namespace engine {

// Thread: any; calls from several threads run side by side.
class CurlHTTPServer final : public iHTTPServer {
public:
    // Null for a record from which no address can be made, or whose header lines or user agent hold control
    // characters.
    [[nodiscard]] static Zq::Ptr<CurlHTTPServer> create(Zq::Ptr<NetworkCore> const& core,
                                                        HTTPConnectionInfo const& info);

    // Use create().
    CurlHTTPServer(Zq::Ptr<NetworkCore> const& core, ServerAddress address, HTTPConnectionInfo const& info);

    [[nodiscard]] Zq::Ptr<iHTTPReply> get(WideString const& path) override;
    [[nodiscard]] Zq::Ptr<iHTTPReply> postForm(WideString const& body, WideString const& path) override;
    [[nodiscard]] int httpGetToReceiver(WideString const& path, iDataReceiver& receiver) override;

    // What another user of libcurl needs in order to speak to the same server in the same way.
    [[nodiscard]] ServerAddress const& address() const noexcept { return address_; }
    [[nodiscard]] NetworkCore& core() const noexcept { return *core_; }
    [[nodiscard]] std::string const& userAgent() const noexcept { return userAgent_; }

private:
    // The header lines of one kind of request: those for this server, and those for a server that it
    // redirects to, which must not see the lines of the record.
    struct Headers {
        HeaderList own;
        HeaderList elsewhere;

        void append(std::string const& line);
    };

    [[nodiscard]] std::optional<int> exchange(TransferKind kind, TransferRequest request,
                                              Headers const& headers, iResponseSink& sink);
    [[nodiscard]] TransferResult follow(Transfer& transfer, TransferRequest& request, Headers const& headers,
                                        iResponseSink& sink) const;

    Zq::Ptr<NetworkCore> core_;
    ServerAddress address_;
    std::string userAgent_;
    Headers getHeaders_;
    Headers postHeaders_;
    Headers bulkHeaders_;
};

} // namespace engine
