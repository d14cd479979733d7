#include "tarn7/DisplayColumns.h"

#include "host/text/Unicode.h"
#include "tarn7/ItemTexts.h"

void tarn7::DisplayColumns::addTo(RemoteAsset& asset, NarrowString price) {
    auto const& item = dynamic_cast<JSON::Element const&>(*asset.payload);
    auto const [rate, isNew] = rateTexts_.try_emplace(asset.frameRate);
    if (isNew) {
        rate->second = toUTF8(Tarn7Resource::getFrameRateText(asset));
    }
    asset.displayAttributes.reserve(4);
    asset.displayAttributes.add(format_, formatText(item));
    asset.displayAttributes.add(frameRate_, rate->second);
    asset.displayAttributes.add(price_, std::move(price));
    asset.displayAttributes.add(duration_, durationText(item));
}
