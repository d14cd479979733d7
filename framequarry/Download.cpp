// The full media of a clip, put in the place of its preview where it lies on this machine already.

#include "framequarry/FrameQuarryResource.h"

bool FrameQuarryResource::fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t,
                                         LoggerHandle log) {
    for (RemoteAsset const& asset : assets) {
        EditModifier const edit = openEdit(asset, eOpenNormally);
        if (edit.isEmpty()) {
            continue;
        }
        log.write(edit->getName(), LoggerBase::ePlain);
        useLocalMedia(asset, edit);
    }
    return true;
}
