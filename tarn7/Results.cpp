// The answer of a search as assets of the host.

#include "host/json/NumberMembers.h"
#include "host/resources/resourceStr.h"
#include "host/text/Unicode.h"
#include "repository/ResultList.h"
#include "tarn7/DisplayColumns.h"
#include "tarn7/ItemReader.h"
#include "tarn7/ItemTexts.h"

namespace {

constexpr std::uint16_t largestPageCount = 275; // the service serves no page behind it

// The rate that a decimal number of the item means; the text is read where it lies.
Zq::FrameRate rateOf(JSON::Element const& item, std::string_view key) {
    return Zq::getEquivalentZqFrameRate(Zq::decimalFromText(item.getStringView(key)));
}

void setPageFigures(SearchResults& results, JSON::Element const& reply, std::uint16_t pageSize) {
    // Both figures are 16 bits wide in the contract: a larger count keeps its low bits.
    results.totalCount =
        static_cast<std::uint16_t>(Zq::truncatedTo32Bits(reply.getFloat("tot_nbr_rows", -1.0F)));
    results.pageCount = countPages(results.totalCount, pageSize);
    if (results.pageCount > largestPageCount) {
        results.pageCount = largestPageCount;
        results.totalCount = static_cast<std::uint16_t>(pageSize * largestPageCount);
    }
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

    ClipAttributes const attributes(getShortName(), "Tarn7");
    LogAttribute const price(LogAttribute::ePrice);
    WideString const extension = getFileExtension();
    std::uint16_t const count = items->getNumChildren();
    results.assets.reserve(count);
    for (std::uint16_t i = 0; i < count; ++i) {
        Zq::Ptr<Item> const item = items->getChild(i);
        RemoteAsset& asset = results.assets.emplace_back();
        std::int32_t const number = JSON::getInt32(*item, "id");
        asset.id = Zq::WStringFromInteger(number);
        asset.mediaExtension = extension;
        asset.payload = item;
        asset.assetKind = 1;
        asset.videoChannels = 1;
        asset.audioChannels = getAudioChannels(*item);
        asset.proxyLocation = makeVirtualPath(getRemoteLocation(asset, ePreview));
        asset.proxyExtension = extension;

        attributes.addTo(asset, item->getString("n"), number);
        asset.logAttributes.add(price, tarn7::priceText(*item));

        Tarn7ClipData const data{rateOf(*item, "fps_real"),
                                 static_cast<double>(tarn7::milliseconds(*item, "dur")) / 1000.0};
        clipCache.try_emplace(static_cast<std::uint32_t>(number), data);
    }

    // The columns show the rates, and the rates come out of the cache that the loop has fed.
    getClipData(results.assets);

    tarn7::DisplayColumns display;
    for (RemoteAsset& asset : results.assets) {
        // A price that is shown stands in the log attributes already.
        display.addTo(asset,
                      isPurchased(asset) ? toUTF8(getPriceText(asset)) : asset.logAttributes.find(price));
    }
    setPageFigures(results, *reply, query.pageSize);
    return results;
}

NarrowString tarn7::priceText(JSON::Element const& item) {
    std::string_view const price = item.getStringView("pr");
    NarrowString text;
    text.reserve(1 + static_cast<std::uint32_t>(price.size()));
    text += '$';
    text.append(price);
    return text;
}

WideString Tarn7Resource::getPriceText(RemoteAsset const& asset) const {
    return isPurchased(asset)
               ? resourceStrW(13477)
               : fromUTF8(tarn7::priceText(JSON::orEmpty(Zq::dynamicCast<Item>(asset.payload))));
}

// Minutes are never padded, also behind hours: "1:2:05".
NarrowString tarn7::durationText(JSON::Element const& item) {
    std::int64_t const length_ms = milliseconds(item, "dur");
    NarrowString text;
    if (length_ms < 1) {
        return text;
    }
    std::int64_t const hours = length_ms / 3'600'000;
    std::int64_t const minutes = length_ms % 3'600'000 / 60'000;
    std::int64_t const seconds = length_ms % 60'000 / 1'000;
    text.reserve(8);
    if (hours != 0) {
        Zq::appendInteger(text, hours);
        text += ':';
    }
    Zq::appendInteger(text, minutes);
    text += seconds < 10 ? ":0" : ":";
    Zq::appendInteger(text, seconds);
    return text;
}

WideString Tarn7Resource::getDurationText(Item const& item) {
    return fromUTF8(tarn7::durationText(item));
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
