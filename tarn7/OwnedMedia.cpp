// What the account owns.

#include "tarn7/Tarn7Resource.h"

LightweightVector<RemoteAsset> Tarn7Resource::getPurchasedAssets() {
    return {};
}
