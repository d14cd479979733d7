// The pictures of a repository's assets: from the host's cache, and from the service into the cache.
//
// Thread: any. A screen asks for many pictures at once; those who ask for one address share one transfer.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <set>

#include "host/picture/iHostImage.h"
#include "host/text/LightweightString.h"
#include "host/web/ParsedURI.h"

class ZQ_API Thumbnails {
public:
    // A longer picture is not one: the transfer is ended.
    static constexpr std::size_t maximumBytes = std::size_t{8} << 20;

    // The path of the picture of that address in the cache; empty when it is not there or no cache is.
    [[nodiscard]] static WideString find(WideString const& address);
    // The picture in a file; null when it cannot be read.
    [[nodiscard]] static Zq::Ptr<iHostImage> decode(WideString const& path);

    // Fetches the picture into the cache, unless one that can be read is there, and gives its path. Empty
    // when it could not be had: no cache, no such server, another status than 200, no bytes or too many.
    // `place` is the address taken apart. Blocks until the transfer, be it another thread's, has ended.
    [[nodiscard]] WideString fetch(WideString const& address, ParsedURI const& place);

private:
    std::mutex mutex_;
    std::condition_variable ended_;
    std::set<WideString> underWay_; // addresses of the transfers that run now
};
