// The routes of clips: searches, what is owned, pictures, previews.

#include <utility>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/ClipJson.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/Pictures.h"
#include "apps/zq/panel/Previews.h"
#include "apps/zq/panel/Purchases.h"
#include "apps/zq/panel/RequestValues.h"
#include "host/HostServices.h"
#include "host/engine/Engine.h"
#include "host/engine/network/CurlNetwork.h"

namespace zq::panel {

namespace {

constexpr std::uint32_t largestPage = 65'535;
constexpr std::uint32_t largestPageSize = 500;
constexpr std::uint32_t usualPageSize = 50;
constexpr std::size_t longestWords_bytes = 1'000;
constexpr std::uint32_t day_s = 86'400;

// Shared by the handlers of one panel. Without a cache there are no pictures.
std::shared_ptr<Pictures> makePictures(Panel const& panel) {
    iCacheStore* const cache = installedHost().cache;
    if (cache == nullptr) {
        return {};
    }
    auto const prefetch = [&network = panel.engine.network()](std::vector<WideString> const& addresses,
                                                              iCacheStore& store) {
        static_cast<void>(network.prefetch(addresses, store));
    };
    return std::make_shared<Pictures>(prefetch, *cache);
}

Response search(Panel const& panel, std::shared_ptr<Pictures> const& pictures, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    SearchQuery query;
    query.words = wide(queryText(request, "words", longestWords_bytes));
    query.page = static_cast<std::uint16_t>(queryNumber(request, "page", 1, 1, largestPage));
    query.pageSize =
        static_cast<std::uint16_t>(queryNumber(request, "pageSize", usualPageSize, 1, largestPageSize));
    std::string page;
    SearchResults const results = desk.search(query, [&](Session& session, SearchResults const& found) {
        page = pageJson(session, desk, {query.page, query.pageSize, found.pageCount, found.totalCount},
                        found.assets);
    });
    if (pictures) {
        std::vector<WideString> addresses;
        for (RemoteAsset const& asset : results.assets) {
            if (std::optional<KnownClip> const clip = desk.knownClip(utf8(asset.id))) {
                addresses.push_back(clip->thumbnailAddress);
            }
        }
        pictures->want(addresses);
    }
    return jsonAnswer(std::move(page));
}

Response showOwned(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    return jsonAnswer(desk.ask([&](Session& session) {
        LightweightVector<RemoteAsset> const owned = panel.purchases.readOwned(desk, session);
        PageOfClips const page{1, owned.size(), owned.empty() ? 0U : 1U, owned.size()};
        return pageJson(session, desk, page, owned);
    }));
}

Response showClip(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    KnownClip const clip = clipOf(desk, request);
    return jsonAnswer(desk.ask([&](Session& session) {
        JSON::Builder json;
        addClip(json, nullptr, session, desk, clip.asset);
        return utf8(json.getOutput());
    }));
}

Response showThumbnail(Panel const& panel, std::shared_ptr<Pictures> const& pictures,
                       Request const& request) {
    KnownClip const clip = clipOf(panel.desk(request.captures.at(0)), request);
    std::optional<Picture> picture;
    if (!clip.thumbnailAddress.isEmpty()) {
        picture = pictures ? pictures->get(clip.thumbnailAddress) : std::nullopt;
    } else {
        picture = readPicture(clip.thumbnailPath);
    }
    if (!picture) {
        throw ApiError(ErrorCode::notFound, "there is no picture of the clip");
    }
    Response response;
    response.type = picture->type;
    response.body = std::move(picture->bytes);
    response.fresh_s = day_s;
    return response;
}

Response showPreview(Panel const& panel, std::shared_ptr<Previews> const& previews, Request const& request) {
    KnownClip const clip = clipOf(panel.desk(request.captures.at(0)), request);
    Previews::Preview preview = previews->open(clip.previewPath);
    Response response;
    response.type = std::move(preview.type);
    response.content = std::move(preview.content);
    return response;
}

} // namespace

void addClipRoutes(Routes& routes, Panel const& panel) {
    std::shared_ptr<Pictures> const pictures = makePictures(panel);
    auto const previews = std::make_shared<Previews>();
    routes.push_back(
        {"GET", "/api/repositories/{repository}/search",
         [&panel, pictures](Request const& request) { return search(panel, pictures, request); }});
    routes.push_back({"DELETE", "/api/repositories/{repository}/search", [&panel](Request const& request) {
                          panel.desk(request.captures.at(0)).cancelSearch();
                          return jsonAnswer("{}");
                      }});
    routes.push_back({"GET", "/api/repositories/{repository}/owned",
                      [&panel](Request const& request) { return showOwned(panel, request); }});
    routes.push_back({"GET", "/api/repositories/{repository}/clips/{clip}",
                      [&panel](Request const& request) { return showClip(panel, request); }});
    routes.push_back(
        {"GET", "/api/repositories/{repository}/clips/{clip}/thumbnail",
         [&panel, pictures](Request const& request) { return showThumbnail(panel, pictures, request); }});
    routes.push_back(
        {"GET", "/api/repositories/{repository}/clips/{clip}/preview",
         [&panel, previews](Request const& request) { return showPreview(panel, previews, request); }});
}

} // namespace zq::panel
