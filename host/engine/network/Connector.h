// How the host's connections are made: trust, proxies, redirected names, deadlines. One for a network; every
// handle of libcurl that speaks to a server is configured here.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <curl/curl.h>

#include "host/engine/network/NetworkSettings.h"
#include "host/engine/network/ServerAddress.h"
#include "host/engine/network/TrustStore.h"

namespace engine {

struct SlistFree {
    void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, SlistFree>;

// Adds a line to the list; throws std::bad_alloc.
void append(HeaderList& list, std::string const& line);

// Thread: any, once built.
class Connector {
public:
    // Throws std::runtime_error when libcurl cannot be used. Settings that cannot be used are left out and
    // named by problems().
    explicit Connector(NetworkSettings settings);

    // Sets what holds for all requests of a handle: TLS verified against the system's authorities and
    // ca_file, HTTP and HTTPS only, no redirects by libcurl itself, no user info in addresses, the connect
    // deadline. The connector outlives the handle. Throws std::runtime_error.
    void configure(CURL* easy) const;
    // Sets the way to the server that the handle's next request goes to: by a proxy or without.
    void chooseProxy(CURL* easy, ServerAddress const& server) const;

    // One printable line that says why a transfer to the server failed and, where a setting may be the
    // reason, which. `detail` is libcurl's own text; `connected` tells whether a connection was there
    // already.
    [[nodiscard]] std::string explain(CURLcode code, std::string const& detail, bool connected,
                                      ServerAddress const& server) const;

    [[nodiscard]] NetworkSettings const& settings() const noexcept { return settings_; }
    // One line for each setting that is not in use because it makes no sense.
    [[nodiscard]] std::vector<std::string> const& problems() const noexcept { return problems_; }

private:
    NetworkSettings const settings_;
    TrustStore const trust_;
    HeaderList connectTo_;
    std::vector<std::string> redirected_; // names of the servers in connectTo_
    std::vector<std::string> problems_;
};

} // namespace engine
