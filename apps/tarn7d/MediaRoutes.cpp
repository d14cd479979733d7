#include "apps/tarn7d/MediaRoutes.h"

#include "apps/tarn7d/MediaResponse.h"

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

constexpr char const* plainType = "text/plain; charset=utf-8";

char const* contentTypeOf(RenditionKind kind) {
    switch (kind) {
    case RenditionKind::thumbnail:
        return "image/jpeg";
    case RenditionKind::preview:
        return "video/quicktime";
    case RenditionKind::highQualityPreview:
        return "video/mp4";
    }
    return "application/octet-stream";
}

void sendNotFound(httplib::Response& response) {
    sendText(response, 404, "not found\n", plainType);
}

void sendExpired(httplib::Response& response) {
    sendText(response, 403, "this address is not good, or no longer\n", plainType);
}

} // namespace

MediaRoutes::MediaRoutes(Catalogue& catalogue, Renditions& renditions, DownloadAddresses const& downloads,
                         std::chrono::milliseconds patience)
    : catalogue_(catalogue), renditions_(renditions), downloads_(downloads), patience_(patience) {}

void MediaRoutes::answerRendition(std::string const& fileName, httplib::Request const& request,
                                  httplib::Response& response, DownloadAddresses::Expiry expiry) {
    if (expiry == DownloadAddresses::Expiry::past) {
        sendExpired(response);
        return;
    }
    std::optional<RenditionName> const name = parseRenditionName(fileName);
    std::optional<Clip> const clip = name ? catalogue_.find(name->clipId) : std::nullopt;
    if (!clip || clip->media.height < name->leastHeight) {
        sendNotFound(response);
        return;
    }
    sendRendition(*clip, name->kind, request, response);
}

void MediaRoutes::answerFull(httplib::Request const& request, httplib::Response& response,
                             DownloadAddresses::Expiry expiry) {
    std::optional<DownloadAddresses::Target> const target = downloads_.check(
        request.path, request.get_param_value("expires"), request.get_param_value("signature"));
    if (!target || expiry == DownloadAddresses::Expiry::past) {
        sendExpired(response);
        return;
    }
    std::optional<Clip> const clip = catalogue_.find(target->clipId);
    if (!clip || !hasVersion(*clip, target->version)) { // its file may have changed since
        sendNotFound(response);
        return;
    }
    // The address is a secret of its buyer: no cache between may keep the file under it.
    response.set_header("Cache-Control", "private, no-cache");
    if (target->version == ClipVersion::transcoded) {
        sendRendition(*clip, RenditionKind::highQualityPreview, request, response);
        return;
    }
    // A footage folder may be made of links to files elsewhere.
    std::error_code error;
    fs::path const file = fs::canonical(catalogue_.fileOf(*clip), error);
    if (error) {
        sendNotFound(response);
        return;
    }
    sendFile(request, response, file, std::string(mediaTypeOf(target->extension)));
}

void MediaRoutes::sendRendition(Clip const& clip, RenditionKind kind, httplib::Request const& request,
                                httplib::Response& response) {
    Renditions::Answer const answer = renditions_.get(clip, kind, patience_);
    switch (answer.state) {
    case Renditions::State::ready:
        sendFile(request, response, answer.file, contentTypeOf(kind));
        break;
    case Renditions::State::unavailable:
        sendNotFound(response);
        break;
    case Renditions::State::pending:
        response.set_header("Retry-After", "2");
        sendText(response, 503, "still being made\n", plainType);
        break;
    }
}

} // namespace tarn7d
