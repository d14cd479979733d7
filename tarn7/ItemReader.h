// What an item tells as a text although it is a number.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/json/Element.h"
#include "host/text/Numbers.h"

namespace tarn7 {

// A length in milliseconds; 0 where there is none.
[[nodiscard]] inline std::int64_t milliseconds(JSON::Element const& element, std::string_view key) {
    return Zq::Int64FromText(element.getStringView(key), 0);
}

} // namespace tarn7
