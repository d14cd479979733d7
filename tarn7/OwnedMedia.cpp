// What the account owns.

#include "host/resources/resourceStr.h"
#include "host/text/Unicode.h"
#include "tarn7/Command.h"
#include "tarn7/DisplayColumns.h"

namespace {

// The first version without a number "bitoffset", else the last; null where there is none.
Zq::Ptr<JSON::Element> chosenVersion(JSON::Element const& item) {
    Zq::Ptr<JSON::Element> const versions = item.getChild("versions");
    Zq::Ptr<JSON::Element> version;
    std::uint16_t const count = JSON::orEmpty(versions).getNumChildren();
    for (std::uint16_t i = 0; i < count; ++i) {
        version = versions->getChild(i);
        if (!version->hasNum("bitoffset")) {
            break;
        }
    }
    return version;
}

} // namespace

LightweightVector<RemoteAsset> Tarn7Resource::getPurchasedAssets() {
    LightweightVector<RemoteAsset> assets;
    Response const response = sendCommand(Command(L"get_downloads_formatted"));
    Response const reply = responseFailed(response) ? Response() : commandReply(response, 0);
    if (reply) {
        readOwnedItems(*reply, assets);
    }
    // A failure leaves the set empty as well: the account owns what the last answer says, and nothing without
    // one.
    std::set<WideString> owned;
    for (RemoteAsset const& asset : assets) {
        owned.insert(asset.id);
    }
    purchaseLock.enter();
    purchasedIds.swap(owned);
    purchaseLock.leave();
    return assets;
}

void Tarn7Resource::readOwnedItems(JSON::Element const& reply, LightweightVector<RemoteAsset>& assets) {
    // A search takes its addresses from every answer; here those of the search stay.
    if (previewBase.isEmpty()) {
        previewBase = reply.getWString("flv_base");
        iconBase = reply.getWString("icon_base");
    }
    LogAttribute const name(LogAttribute::eName);
    LogAttribute const clipId(LogAttribute::eClipId);
    WideString const shortName = getShortName();
    Response const items = reply.getChild("items");
    std::uint16_t const count = JSON::orEmpty(items).getNumChildren();
    assets.reserve(count);
    for (std::uint16_t i = 0; i < count; ++i) {
        Zq::Ptr<Item> const item = items->getChild(i);
        Zq::Ptr<Item> const version = chosenVersion(*item);
        if (!version) {
            continue;
        }
        RemoteAsset& asset = assets.emplace_back();
        asset.id = item->getWString("bid");
        asset.mediaExtension = version->getWString("ext");
        asset.payload = version; // a download is asked for with what the version says
        asset.assetKind = 1;
        asset.proxyLocation = makeVirtualPath(getRemoteLocation(asset, ePreview));
        asset.logAttributes.reserve(2);
        asset.logAttributes.add(name, version->getString("n"));
        asset.logAttributes.add(clipId, shortName + asset.id);
    }
    getClipData(assets);

    tarn7::DisplayColumns columns;
    NarrowString const ownedText = toUTF8(resourceStrW(13477));
    for (RemoteAsset& asset : assets) {
        columns.addTo(asset, ownedText);
    }
}
