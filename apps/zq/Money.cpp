#include "apps/zq/Money.h"

namespace zq {

namespace {

constexpr std::string_view digits = "0123456789";
constexpr std::size_t mostWholeDigits = 9;

std::int64_t valueOf(std::string_view decimal) {
    std::int64_t value = 0;
    for (char const digit : decimal) {
        value = value * 10 + (digit - '0');
    }
    return value;
}

} // namespace

std::optional<Price> parsePrice(std::string_view text) {
    std::size_t const begin = text.find_first_of(digits);
    if (begin == std::string_view::npos ||
        text.substr(0, begin).find_first_of("-.") != std::string_view::npos) {
        return std::nullopt;
    }
    std::string_view number = text.substr(begin);
    std::string_view const whole = number.substr(0, number.find_first_not_of(digits));
    number.remove_prefix(whole.size());
    std::string_view decimals;
    if (!number.empty()) {
        decimals = number.substr(1);
        bool const isDecimal = number.front() == '.' && !decimals.empty() &&
                               decimals.find_first_not_of(digits) == std::string_view::npos;
        if (!isDecimal) {
            return std::nullopt;
        }
    }
    if (whole.size() > mostWholeDigits) {
        return std::nullopt;
    }
    std::string hundredths(decimals.substr(0, 2));
    hundredths.resize(2, '0');
    bool const hasRest = decimals.size() > 2 && decimals.find_first_not_of('0', 2) != std::string_view::npos;
    Price price;
    price.currency = text.substr(0, begin);
    price.cents = valueOf(whole) * 100 + valueOf(hundredths) + (hasRest ? 1 : 0);
    return price;
}

std::string amountText(std::int64_t cents) {
    std::int64_t const rest = cents % 100;
    std::string text = std::to_string(cents / 100);
    return rest == 0 ? text : text + (rest < 10 ? ".0" : ".") + std::to_string(rest);
}

std::string priceText(Price const& price) {
    return price.currency + amountText(price.cents);
}

} // namespace zq
