// The routes of clips: searches, what is owned, pictures, previews.

#include <chrono>
#include <limits>
#include <optional>
#include <utility>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/ClipJson.h"
#include "apps/zq/panel/EditClip.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/Pictures.h"
#include "apps/zq/panel/PreviewTroubles.h"
#include "apps/zq/panel/Previews.h"
#include "apps/zq/panel/Purchases.h"
#include "apps/zq/panel/RequestValues.h"
#include "host/HostServices.h"
#include "host/engine/Engine.h"
#include "host/engine/network/CurlNetwork.h"
#include "repository/Thumbnails.h"

namespace zq::panel {

namespace {

constexpr std::uint32_t largestPage = 65'535;
constexpr std::uint32_t largestPageSize = 500;
constexpr std::uint32_t usualPageSize = 50;
constexpr std::size_t longestWords_bytes = 1'000;
constexpr std::size_t longestAsker_bytes = 64;
constexpr std::uint32_t latestTurn = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t day_s = 86'400;
// A browser has few connections to one program: a picture that is slow must not keep one.
constexpr std::chrono::milliseconds longestWaitForPicture{700};

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
    auto const fetchOne = [thumbnails = std::make_shared<Thumbnails>()](WideString const& address) {
        static_cast<void>(thumbnails->fetch(address, ParsedURI::parse(address)));
    };
    return std::make_shared<Pictures>(prefetch, fetchOne, *cache);
}

// Which page asks, whose searches give way to its own alone, and how many it has made.
RepositoryDesk::SearchTurn turnOf(Request const& request, std::uint32_t otherwise) {
    return {queryText(request, "asker", longestAsker_bytes),
            queryNumber(request, "turn", otherwise, 0, latestTurn)};
}

Response search(Panel const& panel, std::shared_ptr<Pictures> const& pictures, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    SearchQuery query;
    query.words = wide(queryText(request, "words", longestWords_bytes));
    query.page = static_cast<std::uint16_t>(queryNumber(request, "page", 1, 1, largestPage));
    query.pageSize =
        static_cast<std::uint16_t>(queryNumber(request, "pageSize", usualPageSize, 1, largestPageSize));
    std::string page;
    auto const tell = [&](Session& session, SearchResults const& found) {
        page = pageJson(session, desk, {query.page, query.pageSize, found.pageCount, found.totalCount},
                        found.assets);
    };
    RepositoryDesk::SearchTurn const turn = turnOf(request, 0);
    if (pictures && query.page == 1) {
        pictures->forget(turn.asker); // a search begins with its first page
    }
    SearchResults const results = desk.search(turn, query, tell);
    if (pictures) {
        std::vector<WideString> addresses;
        for (RemoteAsset const& asset : results.assets) {
            if (std::optional<KnownClip> const clip = desk.knownClip(utf8(asset.id))) {
                addresses.push_back(clip->thumbnailAddress);
            }
        }
        pictures->want(turn.asker, addresses);
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

// The clip of the path's second part, as it was shown last or else as the project's edit keeps it.
struct ClipOfPath {
    std::optional<KnownClip> shown;
    RemoteAsset asset;
};

ClipOfPath clipOf(Panel const& panel, Request const& request) {
    RepositoryDesk const& desk = panel.desk(request.captures.at(0));
    std::string const& id = request.captures.at(1);
    if (std::optional<KnownClip> shown = desk.knownClip(id)) {
        RemoteAsset const asset = shown->asset;
        return {std::move(shown), asset};
    }
    std::optional<RemoteAsset> const kept = clipOfEdit(panel.engine.project(), desk.shortName(), id);
    if (!kept) {
        throw ApiError(ErrorCode::notFound, "the repository has not shown that clip", Reason::unknownClip);
    }
    return {std::nullopt, *kept};
}

Response showClip(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    RemoteAsset const asset = clipOf(panel, request).asset;
    return jsonAnswer(desk.ask(Turn::beforeSearches, [&](Session& session) {
        JSON::Builder json;
        addClip(json, session, desk, asset);
        return utf8(json.getOutput());
    }));
}

// The picture may be there when it is asked for again.
Response onItsWay() {
    constexpr int accepted = 202;
    Response response;
    response.status = accepted;
    return response;
}

Response showThumbnail(Panel const& panel, std::shared_ptr<Pictures> const& pictures,
                       Request const& request) {
    ClipOfPath const found = clipOf(panel, request);
    KnownClip const clip =
        found.shown ? *found.shown
                    : panel.desk(request.captures.at(0)).ask(Turn::beforeSearches, [&](Session& session) {
                          return RepositoryDesk::describe(session, found.asset);
                      });
    std::optional<Picture> picture;
    if (clip.thumbnailAddress.isEmpty()) {
        picture = readPicture(clip.thumbnailPath);
    } else if (pictures) {
        Pictures::Answer answer = pictures->get(clip.thumbnailAddress, longestWaitForPicture);
        if (answer.isLate) {
            return onItsWay();
        }
        picture = std::move(answer.picture);
    }
    if (!picture) {
        throw ApiError(ErrorCode::notFound, "there is no picture of the clip", Reason::noPicture);
    }
    Response response;
    response.type = picture->type;
    response.body = std::move(picture->bytes);
    response.fresh_s = day_s;
    return response;
}

Response filmAnswer(Previews::Preview film) {
    Response response;
    response.type = std::move(film.type);
    response.content = std::move(film.content);
    return response;
}

Response showPreview(Panel const& panel, std::shared_ptr<Previews> const& previews,
                     std::shared_ptr<PreviewTroubles> const& troubles, Request const& request) {
    auto const tell = [&panel, troubles, repository = request.captures.at(0),
                       clip = request.captures.at(1)](Reason reason, std::string const& text) {
        if (!troubles->isNews(repository, clip, reason)) {
            return;
        }
        JSON::Builder json;
        json.startChild(nullptr);
        addText(json, "repository", repository);
        addText(json, "clip", clip);
        addText(json, "reason", wordOf(reason));
        addText(json, "text", text);
        json.endChild();
        panel.events.send("preview", utf8(json.getOutput()));
    };
    return filmAnswer(previews->open(clipOf(panel, request).asset.proxyLocation, tell));
}

// Which file that is the project alone knows: no address leads to any other.
Response showMedia(Panel const& panel, std::shared_ptr<Previews> const& films, Request const& request) {
    std::string const& repository = panel.desk(request.captures.at(0)).shortName();
    std::optional<engine::EditRecord> const edit =
        editOfClip(panel.engine.project(), repository, request.captures.at(1));
    if (!edit || edit->mediaLocation.isEmpty()) {
        throw ApiError(ErrorCode::notFound, "the clip's full media is not on this machine", Reason::noMedia);
    }
    return filmAnswer(films->open(edit->mediaLocation));
}

} // namespace

void addClipRoutes(Routes& routes, Panel const& panel) {
    std::shared_ptr<Pictures> const pictures = makePictures(panel);
    auto const previews = std::make_shared<Previews>();
    auto const troubles = std::make_shared<PreviewTroubles>();
    routes.push_back(
        {"GET", "/api/repositories/{repository}/search",
         [&panel, pictures](Request const& request) { return search(panel, pictures, request); }});
    routes.push_back({"DELETE", "/api/repositories/{repository}/search", [&panel](Request const& request) {
                          panel.desk(request.captures.at(0)).cancelSearch(turnOf(request, latestTurn));
                          return jsonAnswer("{}");
                      }});
    routes.push_back({"GET", "/api/repositories/{repository}/owned",
                      [&panel](Request const& request) { return showOwned(panel, request); }});
    routes.push_back({"GET", "/api/repositories/{repository}/clips/{clip}",
                      [&panel](Request const& request) { return showClip(panel, request); }});
    routes.push_back(
        {"GET", "/api/repositories/{repository}/clips/{clip}/thumbnail",
         [&panel, pictures](Request const& request) { return showThumbnail(panel, pictures, request); }});
    routes.push_back({"GET", "/api/repositories/{repository}/clips/{clip}/preview",
                      [&panel, previews, troubles](Request const& request) {
                          return showPreview(panel, previews, troubles, request);
                      }});
    routes.push_back(
        {"GET", "/api/repositories/{repository}/clips/{clip}/media",
         [&panel, previews](Request const& request) { return showMedia(panel, previews, request); }});
}

} // namespace zq::panel
