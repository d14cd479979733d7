// The full media of a clip: fetched, and put in the place of its preview.

#include "tarn7/Tarn7Resource.h"

bool Tarn7Resource::fetchFullMedia(LightweightVector<RemoteAsset> const& assets, std::int32_t, LoggerHandle) {
    return assets.empty();
}
