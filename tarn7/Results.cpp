// The answer of a search as assets of the host.

#include <cmath>

#include "host/resources/resourceStr.h"
#include "host/text/Unicode.h"
#include "tarn7/ItemReader.h"
#include "tarn7/Tarn7Resource.h"

namespace {

constexpr std::uint16_t largestPageCount = 275; // the service serves no page behind it

// Made once for a page of results.
struct LogColumns {
    LogAttribute name{LogAttribute::eName};
    LogAttribute clipId{LogAttribute::eClipId};
    LogAttribute source{LogAttribute::eSource};
    LogAttribute price{LogAttribute::ePrice};
};

struct DisplayColumns {
    LogAttribute format{LogAttribute::eFormat};
    LogAttribute frameRate{LogAttribute::eFrameRate};
    LogAttribute price{LogAttribute::ePrice};
    LogAttribute duration{Tarn7Resource::getDurationAttribute()};
};

void setPageFigures(SearchResults& results, JSON::Element const& reply, std::uint16_t pageSize) {
    // Both figures are 16 bits wide in the contract: a larger count keeps its low bits.
    results.totalCount =
        static_cast<std::uint16_t>(Zq::truncatedTo32Bits(reply.getFloat("tot_nbr_rows", -1.0F)));
    if (pageSize == 0) {
        return; // no number of pages holds the clips
    }
    float const pages = std::ceil(static_cast<float>(results.totalCount) / static_cast<float>(pageSize));
    results.pageCount = static_cast<std::uint16_t>(pages);
    if (results.pageCount > largestPageCount) {
        results.pageCount = largestPageCount;
        results.totalCount = static_cast<std::uint16_t>(pageSize * largestPageCount);
    }
}

// "1:05", "1:2:05": minutes are never padded, also behind hours.
void appendDuration(WideString& text, std::int64_t length_ms) {
    std::int64_t const hours = length_ms / 3'600'000;
    std::int64_t const minutes = length_ms % 3'600'000 / 60'000;
    std::int64_t const seconds = length_ms % 60'000 / 1'000;
    if (hours != 0) {
        text += Zq::WStringFromInteger(hours);
        text += L':';
    }
    text += Zq::WStringFromInteger(minutes);
    text += seconds < 10 ? L":0" : L":";
    text += Zq::WStringFromInteger(seconds);
}

} // namespace

SearchResults Tarn7Resource::searchInternal(SearchQuery const& query) {
    SearchResults results;
    Response const reply = runSearch(query);
    Response const items = JSON::orEmpty(reply).getChild("items");
    if (!items) {
        return results;
    }
    iconBase = reply->getWString("icon_base");
    previewBase = reply->getWString("flv_base");

    LogColumns const columns;
    WideString const extension = getFileExtension();
    WideString const shortName = getShortName();
    std::uint16_t const count = items->getNumChildren();
    results.assets.reserve(count);
    for (std::uint16_t i = 0; i < count; ++i) {
        Zq::Ptr<Item> const item = items->getChild(i);
        RemoteAsset& asset = results.assets.emplace_back();
        asset.id = Zq::WStringFromInteger(tarn7::numberMember(*item, "id"));
        asset.mediaExtension = extension;
        asset.payload = item;
        asset.assetKind = 1;
        asset.videoChannels = 1;
        asset.audioChannels = getAudioChannels(*item);
        asset.proxyLocation = makeVirtualPath(getRemoteLocation(asset, ePreview));
        asset.proxyExtension = extension;

        asset.logAttributes.reserve(4);
        asset.logAttributes.add(columns.name, item->getString("n"));
        asset.logAttributes.add(columns.clipId, shortName + asset.id);
        asset.logAttributes.add(columns.source, "Tarn7");
        asset.logAttributes.add(columns.price, "$" + item->getString("pr"));

        Tarn7ClipData const data{frameRateFromText(item->getWString("fps_real")),
                                 static_cast<double>(tarn7::milliseconds(*item, "dur")) / 1000.0};
        clipCache.try_emplace(static_cast<std::uint32_t>(tarn7::numberMember(*item, "id")), data);
    }

    // The columns show the rates, and the rates come out of the cache that the loop has fed.
    getClipData(results.assets);

    DisplayColumns const display;
    for (RemoteAsset& asset : results.assets) {
        auto const& item = dynamic_cast<Item const&>(*asset.payload);
        asset.displayAttributes.reserve(4);
        asset.displayAttributes.add(display.format, getFormatDescription(item));
        asset.displayAttributes.add(display.frameRate, getFrameRateText(asset));
        asset.displayAttributes.add(display.price, getPriceText(asset));
        asset.displayAttributes.add(display.duration, getDurationText(item));
    }
    setPageFigures(results, *reply, query.pageSize);
    return results;
}

WideString Tarn7Resource::getPriceText(RemoteAsset const& asset) const {
    if (isPurchased(asset)) {
        return resourceStrW(13477);
    }
    auto const* const item = dynamic_cast<Item const*>(asset.payload.get());
    return L"$" + (item != nullptr ? item->getWString("pr") : WideString());
}

WideString Tarn7Resource::getDurationText(Item const& item) {
    std::int64_t const length_ms = tarn7::milliseconds(item, "dur");
    WideString text;
    if (length_ms >= 1) {
        appendDuration(text, length_ms);
    }
    return text;
}

std::uint8_t Tarn7Resource::getAudioChannels(Item const& item) {
    return item.getStringView("coda") == "no snd" ? 0 : 2;
}

Zq::FrameRate Tarn7Resource::frameRateFromText(WideString const& text) {
    return Zq::getEquivalentZqFrameRate(Zq::decimalFromText(toUTF8(text).view()));
}

WideString Tarn7Resource::getFrameRateText(RemoteAsset const& asset) {
    return asset.frameRate != Zq::FrameRate::unknown ? Zq::getDisplayString(asset.frameRate) : WideString();
}

double Tarn7Resource::getClipDuration(RemoteAsset const& asset) const {
    auto const found = clipCache.find(static_cast<std::uint32_t>(Zq::IntFromWString(asset.id, 0)));
    if (found != clipCache.end()) {
        return found->second.duration;
    }
    auto const* const item = dynamic_cast<Item const*>(asset.payload.get());
    return item != nullptr ? static_cast<double>(tarn7::milliseconds(*item, "dur")) / 1000.0 : 0.0;
}
