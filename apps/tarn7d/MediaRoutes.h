// The addresses of media: thumbnails and previews for everybody, and full files for signed addresses.
#pragma once

#include <chrono>

#include <httplib.h>

#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/DownloadAddresses.h"
#include "apps/tarn7d/Renditions.h"

namespace tarn7d {

// Any thread. What it is given outlives it.
class MediaRoutes {
public:
    // A request waits at most so long for a rendition that is being made.
    MediaRoutes(Catalogue& catalogue, Renditions& renditions, DownloadAddresses const& downloads,
                std::chrono::milliseconds patience);

    // Fills the answer to a GET or HEAD for a file name that a thumbnail or preview may have. With
    // Expiry::past, every address has expired.
    void answerRendition(std::string const& fileName, httplib::Request const& request,
                         httplib::Response& response, DownloadAddresses::Expiry expiry);
    // The same for a path below DownloadAddresses::folder.
    void answerFull(httplib::Request const& request, httplib::Response& response,
                    DownloadAddresses::Expiry expiry = DownloadAddresses::Expiry::usual);

private:
    void sendRendition(Clip const& clip, RenditionKind kind, httplib::Request const& request,
                       httplib::Response& response);

    Catalogue& catalogue_;
    Renditions& renditions_;
    DownloadAddresses const& downloads_;
    std::chrono::milliseconds const patience_;
};

} // namespace tarn7d
