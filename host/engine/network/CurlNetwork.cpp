#include "host/engine/network/CurlNetwork.h"

#include <new>
#include <utility>

#include "host/engine/network/CurlHTTPServer.h"
#include "host/engine/network/PercentEncoding.h"

namespace engine {

CurlNetwork::CurlNetwork(NetworkSettings settings) : core_(Zq::makeShared<NetworkCore>(std::move(settings))) {
    if (!core_) {
        throw std::bad_alloc();
    }
}

Zq::Ptr<iHTTPServer> CurlNetwork::createHTTPServer(HTTPConnectionInfo const& info) {
    try {
        return CurlHTTPServer::create(core_, info);
    } catch (std::exception const&) {
        return {};
    }
}

WideString CurlNetwork::encodeUrlComponent(WideString const& text) {
    try {
        return encodeComponent(text);
    } catch (std::bad_alloc const&) {
        return {};
    }
}

std::vector<ServerStatistics> CurlNetwork::statistics() const {
    return core_->statistics.all();
}

std::vector<std::string> const& CurlNetwork::problems() const noexcept {
    return core_->connector.problems();
}

} // namespace engine
