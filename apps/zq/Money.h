// Prices as the services write them: a sign of the currency and a decimal number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zq {

struct Price {
    std::string currency; // what stands before the number, as "$"
    std::int64_t cents = 0;
    [[nodiscard]] bool operator==(Price const&) const = default;
};

// Reads "$5", "$19.99" or "5"; further digits behind the second decimal round up. Nothing for a text that is
// no price, such as an empty one, and for a price beyond a billion.
[[nodiscard]] std::optional<Price> parsePrice(std::string_view text);
// "$5", "$19.90".
[[nodiscard]] std::string priceText(Price const& price);
// "5", "19.90": the number of a price.
[[nodiscard]] std::string amountText(std::int64_t cents);

} // namespace zq
