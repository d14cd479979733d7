#include "host/text/Numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace Zq {

namespace {

template <class Integer, class Char>
Integer parseInteger(std::basic_string_view<Char> view, Integer otherwise) {
    bool const negative = !view.empty() && view.front() == L'-';
    if (!view.empty() && (view.front() == L'-' || view.front() == L'+')) {
        view.remove_prefix(1);
    }
    if (view.empty()) {
        return otherwise;
    }
    using Limits = std::numeric_limits<Integer>;
    std::uint64_t const largest =
        negative ? static_cast<std::uint64_t>(Limits::max()) + 1 : static_cast<std::uint64_t>(Limits::max());
    std::uint64_t value = 0;
    for (Char const character : view) {
        if (character < L'0' || character > L'9') {
            return otherwise;
        }
        auto const digit = static_cast<std::uint64_t>(character - L'0');
        if (value > (largest - digit) / 10) {
            return otherwise;
        }
        value = value * 10 + digit;
    }
    return static_cast<Integer>(negative ? ~value + 1 : value);
}

} // namespace

WideString WStringFromInteger(std::int64_t value) {
    WideString text;
    appendInteger(text, value);
    return text;
}

void appendInteger(WideString& text, std::int64_t value) {
    char digits[24];
    auto const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    wchar_t wide[24];
    std::copy(digits, end, wide);
    text.append(std::wstring_view(wide, static_cast<std::size_t>(end - digits)));
}

void appendInteger(NarrowString& text, std::int64_t value) {
    char digits[24];
    auto const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    text.append(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

std::int32_t IntFromWString(WideString const& text, std::int32_t otherwise) {
    return parseInteger(text.view(), otherwise);
}

std::int64_t Int64FromWString(WideString const& text, std::int64_t otherwise) {
    return parseInteger(text.view(), otherwise);
}

std::int64_t Int64FromText(std::string_view text, std::int64_t otherwise) {
    return parseInteger(text, otherwise);
}

double decimalFromText(std::string_view text) {
    std::size_t const start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos) {
        return 0;
    }
    text.remove_prefix(start);
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) {
            return 0;
        }
    }
    double value = 0;
    auto const result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && std::isfinite(value) ? value : 0;
}

std::int64_t truncatedTo64Bits(double value) noexcept {
    if (std::isnan(value)) {
        return 0;
    }
    // 2^63 is a double; the largest 64-bit integer is not.
    constexpr double limit = 9223372036854775808.0;
    if (value >= limit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value < -limit) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

std::int32_t truncatedTo32Bits(double value) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(truncatedTo64Bits(value)));
}

float nearestFloat(double value) noexcept {
    constexpr double limit = std::numeric_limits<float>::max();
    return static_cast<float>(std::isfinite(value) ? std::clamp(value, -limit, limit) : value);
}

} // namespace Zq
