// Numbers of an item, as the service's integers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "host/json/Element.h"
#include "host/text/Numbers.h"

namespace tarn7 {

// The first number of exactly that name, truncated to 32 bits; `otherwise` where there is none. A number that
// the service sends as a text is none.
[[nodiscard]] inline std::int32_t numberMember(JSON::Element const& element, std::string_view key,
                                               std::int32_t otherwise = -1) {
    auto const numbers = element.numbers();
    auto const found = std::ranges::find(numbers, key, &JSON::NumberMember::key);
    return found != numbers.end() ? Zq::truncatedTo32Bits(found->value) : otherwise;
}

// A length in milliseconds, which the service writes as a text; 0 where there is none.
[[nodiscard]] inline std::int64_t milliseconds(JSON::Element const& element, std::string_view key) {
    return Zq::Int64FromText(element.getStringView(key), 0);
}

} // namespace tarn7
