// Edits made from assets, and the way back from an edit to its asset.

#include "framequarry/FrameQuarryResource.h"
#include "host/json/NumberMembers.h"
#include "repository/ClipEdit.h"

EditModifier FrameQuarryResource::createEdit(RemoteAsset const& asset) {
    Item const& item = JSON::orEmpty(Zq::dynamicCast<Item>(asset.payload));
    ClipFacts facts;
    facts.metadata.frameRate = asset.frameRate;
    facts.metadata.scanMode = Zq::Image::ScanMode::progressive;
    facts.medium = getMediumRollfromInputDetails(facts.metadata.scanMode, asset.frameRate);
    facts.durationMedium = facts.medium;
    facts.duration_s = JSON::findNumber(item, "duration").value_or(-1.0);
    facts.audioChannels = 0; // clips of this service have no sound
    facts.countsIn1001 = false;
    facts.cookie = Cookie(); // the identity is the host's to give
    return makeClipEdit(asset, facts);
}

RemoteAsset FrameQuarryResource::findRemoteAsset(Cookie const& cookie) {
    return findAssetOfEdit(cookie, L"FQ", AssetCookie::none);
}
