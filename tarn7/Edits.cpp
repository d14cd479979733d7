// Edits made from assets, and the way back from an edit to its asset.

#include "repository/ClipEdit.h"
#include "tarn7/Tarn7Resource.h"

EditModifier Tarn7Resource::createEdit(RemoteAsset const& asset) {
    auto const* const item = dynamic_cast<Item const*>(asset.payload.get());
    if (item == nullptr) {
        return {};
    }
    ClipFacts facts;
    facts.metadata = getVideoMetadata(asset);
    facts.medium = getMediumRollfromInputDetails(facts.metadata.scanMode, asset.frameRate);
    // The length in the edit's own time goes by the rate alone, whatever medium the clip was recorded on.
    facts.durationMedium = getRepresentativeSourceMediumfromFrameRate(asset.frameRate);
    facts.duration_s = getClipDuration(asset);
    facts.audioChannels = getAudioChannels(*item);
    facts.countsIn1001 = Zq::has1001Factor(asset.frameRate);
    facts.cookie = asset.cookie;
    return makeClipEdit(asset, facts);
}

RemoteAsset Tarn7Resource::findRemoteAsset(Cookie const& cookie) {
    return findAssetOfEdit(cookie, L"T7", AssetCookie::ofTheEdit);
}
