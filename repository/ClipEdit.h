// Edits made from the clips of a service, and the way back from an edit to its clip: what the resources have
// in common there.
#pragma once

#include <cstdint>

#include "host/edit/EditModifier.h"
#include "host/edit/MediumRoll.h"
#include "host/picture/ShotVideoMetadata.h"
#include "repository/RemoteAsset.h"

// What a resource knows of a clip that becomes an edit.
struct ClipFacts {
    ShotVideoMetadata metadata;
    MediumRollMedium medium = MediumRollMedium::unknown;         // that the clip was recorded on
    MediumRollMedium durationMedium = MediumRollMedium::unknown; // that its length is translated from
    double duration_s = 0;
    std::uint8_t audioChannels = 0;
    bool countsIn1001 = false; // what the clip's first label says of its rate
    Cookie cookie;             // that the edit is to have; the null cookie leaves it to the host
};

// A temporary edit of one picture channel, with the asset's rate and log attributes. Empty, with nothing more
// done, when the host made no clip.
[[nodiscard]] ZQ_API EditModifier makeClipEdit(RemoteAsset const& asset, ClipFacts const& facts);

// Whether an asset that was found by its edit names that edit.
enum class AssetCookie { none, ofTheEdit };

// The asset that the edit was made from: its id in the service of that short name, and the columns as the
// edit itself tells them. A default asset where the cookie opens no edit or the edit is not of that service.
[[nodiscard]] ZQ_API RemoteAsset findAssetOfEdit(Cookie const& cookie, WideString const& shortName,
                                                 AssetCookie assetCookie);
