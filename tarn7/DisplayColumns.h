// The columns that a list of clips shows.
#pragma once

#include <map>

#include "tarn7/Tarn7Resource.h"

namespace tarn7 {

// Made once for a list. Thread: repository.
class DisplayColumns {
public:
    // Fills the columns of an asset whose payload is an item of the service and whose frame rate is settled.
    // The price is the text to show in its column.
    void addTo(RemoteAsset& asset, NarrowString price);

private:
    LogAttribute const format_{LogAttribute::eFormat};
    LogAttribute const frameRate_{LogAttribute::eFrameRate};
    LogAttribute const price_{LogAttribute::ePrice};
    LogAttribute const duration_{Tarn7Resource::getDurationAttribute()};
    std::map<Zq::FrameRate, NarrowString> rateTexts_; // most clips of a list have one of few rates
};

} // namespace tarn7
