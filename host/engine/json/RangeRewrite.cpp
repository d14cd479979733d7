#include "host/engine/json/RangeRewrite.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>

namespace engine {

namespace {

constexpr std::string_view largestDouble = "1.7976931348623157e308";
constexpr std::size_t digitsOf64Bits = 18; // so many digits always fit

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isTokenCharacter(char c) {
    return isDigit(c) || c == '-' || c == '+' || c == '.' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

struct Number {
    std::string_view whole;    // digits before the point
    std::string_view fraction; // digits behind it
    std::string_view exponent; // with its sign, empty where none is written
};

std::string_view takeDigits(std::string_view& rest) {
    std::size_t const count =
        static_cast<std::size_t>(std::ranges::find_if_not(rest, isDigit) - rest.begin());
    std::string_view const digits = rest.substr(0, count);
    rest.remove_prefix(count);
    return digits;
}

// The number grammar of RFC 8259, section 6.
std::optional<Number> numberOf(std::string_view token) {
    Number number;
    if (token.starts_with('-')) {
        token.remove_prefix(1);
    }
    number.whole = takeDigits(token);
    if (number.whole.empty() || (number.whole.size() > 1 && number.whole.front() == '0')) {
        return std::nullopt;
    }
    if (token.starts_with('.')) {
        token.remove_prefix(1);
        number.fraction = takeDigits(token);
        if (number.fraction.empty()) {
            return std::nullopt;
        }
    }
    if (token.starts_with('e') || token.starts_with('E')) {
        token.remove_prefix(1);
        number.exponent = token;
        if (token.starts_with('-') || token.starts_with('+')) {
            token.remove_prefix(1);
        }
        if (takeDigits(token).empty()) {
            return std::nullopt;
        }
    }
    return token.empty() ? std::optional(number) : std::nullopt;
}

// Power of ten of the first digit that is not 0; only its sign matters to the caller.
std::int64_t magnitude(Number const& number) {
    constexpr std::int64_t farAway = 1'000'000'000'000;
    std::int64_t exponent = 0;
    std::string_view digits = number.exponent;
    bool const negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) {
        digits.remove_prefix(1);
    }
    for (char const digit : digits) {
        exponent = std::min(exponent * 10 + (digit - '0'), farAway);
    }
    exponent = negative ? -exponent : exponent;
    if (number.whole != "0") {
        return exponent + static_cast<std::int64_t>(number.whole.size()) - 1;
    }
    std::size_t const zeros = std::min(number.fraction.find_first_not_of('0'), number.fraction.size());
    return exponent - static_cast<std::int64_t>(zeros) - 1;
}

void appendNumber(std::string& output, std::string_view token) {
    std::optional<Number> const number = numberOf(token);
    if (!number) {
        output += token;
        return;
    }
    double value = 0;
    auto const result = std::from_chars(token.data(), token.data() + token.size(), value);
    if (result.ec == std::errc() && std::isfinite(value)) {
        output += token;
        bool const isInteger = number->fraction.empty() && number->exponent.empty();
        if (isInteger && number->whole.size() > digitsOf64Bits) {
            output += "e0";
        }
        return;
    }
    if (token.starts_with('-')) {
        output += '-';
    }
    output += magnitude(*number) > 0 ? largestDouble : std::string_view("0.0");
}

// The code unit of the escape \uXXXX at this place.
std::optional<std::uint32_t> escapedUnit(std::string_view text, std::size_t at) {
    if (text.substr(at, 2) != "\\u" || text.size() - at < 6) {
        return std::nullopt;
    }
    std::uint32_t unit = 0;
    char const* const first = text.data() + at + 2;
    auto const result = std::from_chars(first, first + 4, unit, 16);
    return result.ec == std::errc() && result.ptr == first + 4 ? std::optional(unit) : std::nullopt;
}

bool isHighSurrogate(std::uint32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool isLowSurrogate(std::uint32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

// Copies the string that begins at `at`, and gives the place behind it.
std::size_t appendString(std::string& output, std::string_view text, std::size_t at) {
    output += text[at++];
    while (at < text.size()) {
        std::size_t const next = std::min(text.find_first_of("\"\\", at), text.size());
        output += text.substr(at, next - at);
        at = next;
        if (at == text.size() || text[at] == '"') {
            break;
        }
        std::optional<std::uint32_t> const unit = escapedUnit(text, at);
        if (!unit) {
            output += text.substr(at, 2);
            at += std::min<std::size_t>(2, text.size() - at);
        } else if (isHighSurrogate(*unit) && isLowSurrogate(escapedUnit(text, at + 6).value_or(0))) {
            output += text.substr(at, 12);
            at += 12;
        } else {
            bool const unpaired = isHighSurrogate(*unit) || isLowSurrogate(*unit);
            output += unpaired ? std::string_view("\\ufffd") : text.substr(at, 6);
            at += 6;
        }
    }
    if (at < text.size()) {
        output += text[at++];
    }
    return at;
}

} // namespace

std::string rewriteIntoRange(std::string_view text) {
    std::string output;
    output.reserve(text.size() + text.size() / 8);
    std::size_t at = 0;
    while (at < text.size()) {
        if (text[at] == '"') {
            at = appendString(output, text, at);
        } else if (isTokenCharacter(text[at])) {
            std::size_t end = at;
            while (end < text.size() && isTokenCharacter(text[end])) {
                ++end;
            }
            appendNumber(output, text.substr(at, end - at));
            at = end;
        } else {
            output += text[at++];
        }
    }
    return output;
}

} // namespace engine
