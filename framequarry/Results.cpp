// The answer of a search as assets of the host.

#include "framequarry/FrameQuarryResource.h"
#include "host/json/NumberMembers.h"
#include "host/text/Numbers.h"
#include "repository/ResultList.h"

SearchResults FrameQuarryResource::searchInternal(SearchQuery const& query) {
    SearchResults results;
    Zq::Ptr<JSON::Element> const answer = runSearch(query);
    Zq::Ptr<JSON::Element> const items = JSON::orEmpty(answer).getChild("info");
    if (!items) {
        return results;
    }
    ClipAttributes const attributes(getShortName(), "FrameQuarry");
    results.assets.reserve(items->getNumChildren());
    for (std::uint16_t i = 0; i < items->getNumChildren(); ++i) {
        Zq::Ptr<Item> const item = items->getChild(i);
        Zq::Ptr<Item> const formats = item->getChild("download_format_details");
        if (JSON::orEmpty(formats).getNumChildren() == 0) {
            continue; // nothing to get of this clip; the service still counts it
        }
        RemoteAsset& asset = results.assets.emplace_back();
        std::int32_t const number = JSON::getInt32(*item, "id");
        asset.id = Zq::WStringFromInteger(number);
        asset.mediaExtension = L"mp4";
        asset.payload = item;
        asset.assetKind = 1;
        asset.proxyLocation = makeVirtualPath(getRemoteLocation(asset, ePreview));
        // The whole part alone: the host knows which rate a 29 was cut short from.
        asset.frameRate = Zq::getEquivalentZqFrameRate(JSON::getInt32(*formats->getChild(0), "frame_rate"));
        attributes.addTo(asset, item->getString("title"), number);
    }
    // The contract's figures are 16 bits wide: a larger count keeps its low bits, and a missing one, -1, is
    // 65535.
    results.totalCount = static_cast<std::uint16_t>(JSON::getInt32(*answer, "totalSearchResults"));
    results.pageCount = countPages(results.totalCount, query.pageSize);
    return results;
}
