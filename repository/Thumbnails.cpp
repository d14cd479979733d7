#include "repository/Thumbnails.h"

#include <algorithm>
#include <vector>

#include "host/HostServices.h"
#include "host/files/iCacheStore.h"
#include "host/network/OSPrivate.h"

namespace {

// Takes a whole transfer into memory, up to the bound.
class BoundedBytes final : public iHTTPServer::iDataReceiver {
public:
    explicit BoundedBytes(std::size_t bound) : bound_(bound) {}

    bool beginReceive(std::uint64_t totalLength) override {
        if (totalLength > bound_) {
            return false;
        }
        bytes_.reserve(static_cast<std::size_t>(totalLength));
        return true;
    }
    bool receiveData(std::uint64_t, Zq::Ptr<iMemHolder> const& block) override {
        if (!block || block->getSize() > bound_ - bytes_.size()) {
            return false;
        }
        bytes_.insert(bytes_.end(), block->getData(), block->getData() + block->getSize());
        return true;
    }
    [[nodiscard]] std::vector<char> const& bytes() const { return bytes_; }

private:
    std::size_t bound_;
    std::vector<char> bytes_;
};

WideString transfer(WideString const& address, ParsedURI const& place, iCacheStore& cache) {
    HTTPConnectionInfo info;
    info.server = place.server;
    info.secure = place.secure;
    Zq::Ptr<iHTTPServer> const server = OSPrivate().network().createHTTPServer(info);
    if (!server) {
        return {};
    }
    BoundedBytes picture(Thumbnails::maximumBytes);
    if (server->httpGetToReceiver(place.path, picture) != 200 || picture.bytes().empty()) {
        return {};
    }
    return cache.store(address, picture.bytes().data(), picture.bytes().size());
}

} // namespace

WideString Thumbnails::find(WideString const& address) {
    iCacheStore* const cache = installedHost().cache;
    return cache != nullptr && !address.isEmpty() ? cache->find(address) : WideString();
}

Zq::Ptr<iHostImage> Thumbnails::decode(WideString const& path) {
    iImageDecoder* const images = installedHost().images;
    return images != nullptr && !path.isEmpty() ? images->decodeFile(path) : Zq::Ptr<iHostImage>();
}

WideString Thumbnails::fetch(WideString const& address, ParsedURI const& place) {
    iCacheStore* const cache = installedHost().cache;
    if (cache == nullptr || installedHost().network == nullptr || !place.valid()) {
        return {};
    }
    {
        std::unique_lock lock(mutex_);
        if (!underWay_.insert(address).second) {
            ended_.wait(lock, [&] { return !underWay_.contains(address); });
            lock.unlock();
            return cache->find(address);
        }
    }
    // The mark goes however the transfer ends: whoever waits for it must not wait for ever.
    struct Mark {
        Thumbnails& owner;
        WideString const& address;
        ~Mark() {
            {
                std::lock_guard const lock(owner.mutex_);
                owner.underWay_.erase(address);
            }
            owner.ended_.notify_all();
        }
    } const mark{*this, address};
    // Another thread may have fetched it since the caller looked.
    if (WideString cached = cache->find(address); decode(cached)) {
        return cached;
    }
    return transfer(address, place, *cache);
}
