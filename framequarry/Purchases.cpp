// The service sells nothing through this client.

#include "framequarry/FrameQuarryResource.h"

LightweightVector<RemoteAsset> FrameQuarryResource::getPurchasedAssets() {
    return {};
}

std::int32_t FrameQuarryResource::requestExternalPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}

std::int32_t FrameQuarryResource::requestCreditPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}
