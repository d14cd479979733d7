// Edits, purchases and downloads. The host has no edit model yet, so each of these fails as the contract lets
// it fail, and asks nothing of the service.

#include "tarn7/Tarn7Resource.h"

EditModifier Tarn7Resource::createEdit(RemoteAsset const&) {
    return {};
}

RemoteAsset Tarn7Resource::findRemoteAsset(Cookie const&) {
    return {};
}

bool Tarn7Resource::fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t, LoggerHandle) {
    return assets.empty();
}

LightweightVector<RemoteAsset> Tarn7Resource::getPurchasedAssets() {
    return {};
}

std::int32_t Tarn7Resource::requestExternalPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}

std::int32_t Tarn7Resource::requestCreditPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}
