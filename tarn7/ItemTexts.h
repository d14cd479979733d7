// The texts of a clip's columns, in the narrow form in which the columns keep them.
#pragma once

#include "host/json/Element.h"
#include "host/text/LightweightString.h"

namespace tarn7 {

// Standard or size, and the codec as the service names it: "576i 4:3, DV".
[[nodiscard]] NarrowString formatText(JSON::Element const& item);
// "1:05"; empty for a clip without a length.
[[nodiscard]] NarrowString durationText(JSON::Element const& item);
// "$" and the price as the service writes it.
[[nodiscard]] NarrowString priceText(JSON::Element const& item);

} // namespace tarn7
