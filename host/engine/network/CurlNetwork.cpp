#include "host/engine/network/CurlNetwork.h"

#include <algorithm>
#include <new>
#include <utility>

#include "host/engine/network/CurlHTTPServer.h"
#include "host/engine/network/PercentEncoding.h"
#include "host/text/Unicode.h"

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

std::size_t CurlNetwork::prefetch(std::vector<WideString> const& addresses, iCacheStore& store) {
    std::size_t there = 0;
    try {
        std::vector<WideString> missing;
        std::vector<std::string> urls;
        for (WideString const& address : addresses) {
            if (!store.find(address).isEmpty()) {
                ++there;
            } else if (std::ranges::find(missing, address) == missing.end()) {
                missing.push_back(address);
                urls.emplace_back(toUTF8(address).view());
            }
        }
        if (missing.empty()) {
            return there;
        }
        std::unique_ptr<SmallFiles> files = core_->takeSmallFiles();
        files->fetch(urls, [&](std::size_t index, std::string const& bytes) {
            there += store.store(missing[index], bytes.data(), bytes.size()).isEmpty() ? 0U : 1U;
        });
        core_->giveBack(std::move(files));
    } catch (std::exception const&) {
        // What has arrived is in the store.
    }
    return there;
}

std::vector<ServerStatistics> CurlNetwork::statistics() const {
    return core_->statistics.all();
}

std::vector<ServerStatistics> CurlNetwork::statisticsOfThisThread() const {
    return core_->statistics.ofThisThread();
}

std::vector<std::string> const& CurlNetwork::problems() const noexcept {
    return core_->connector.problems();
}

} // namespace engine
