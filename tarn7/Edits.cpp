// Edits made from assets, and the way back from an edit to its asset.

#include "tarn7/Tarn7Resource.h"

EditModifier Tarn7Resource::createEdit(RemoteAsset const&) {
    return {};
}

RemoteAsset Tarn7Resource::findRemoteAsset(Cookie const&) {
    return {};
}
