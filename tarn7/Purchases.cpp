// The cart of the account, and the two ways to buy what is in it.

#include "tarn7/Tarn7Resource.h"

std::int32_t Tarn7Resource::requestExternalPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}

std::int32_t Tarn7Resource::requestCreditPurchase(LightweightVector<RemoteAsset> const&) {
    return 0;
}
