// Numbers of an element, as the integers of a service. Thread: any.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string_view>

#include "host/json/Element.h"
#include "host/text/Numbers.h"

namespace JSON {

// The first number of exactly that name. A number that is sent as a text is none.
[[nodiscard]] inline std::optional<double> findNumber(Element const& element, std::string_view key) {
    auto const numbers = element.numbers();
    auto const found = std::ranges::find(numbers, key, &NumberMember::key);
    return found != numbers.end() ? std::optional(found->value) : std::nullopt;
}

// The same, truncated to 32 bits; `otherwise` where there is none.
[[nodiscard]] inline std::int32_t getInt32(Element const& element, std::string_view key,
                                           std::int32_t otherwise = -1) {
    std::optional<double> const number = findNumber(element, key);
    return number ? Zq::truncatedTo32Bits(*number) : otherwise;
}

} // namespace JSON
