#include "apps/tarn7d/QueryText.h"

#include <algorithm>
#include <charconv>

namespace tarn7d {

namespace {

std::string decoded(std::string_view text) {
    constexpr std::size_t escapeLength = 3;
    std::string bytes;
    while (!text.empty()) {
        std::size_t taken = 1;
        char byte = text.front() == '+' ? ' ' : text.front();
        if (text.front() == '%' && text.size() >= escapeLength) {
            unsigned value = 0;
            char const* const digits = text.data() + 1;
            char const* const end = text.data() + escapeLength;
            if (std::from_chars(digits, end, value, 16).ptr == end) {
                byte = static_cast<char>(value);
                taken = escapeLength;
            }
        }
        bytes += byte;
        text.remove_prefix(taken);
    }
    return bytes;
}

} // namespace

std::vector<QueryField> parseQueryText(std::string_view query) {
    std::vector<QueryField> fields;
    while (!query.empty()) {
        std::string_view const field = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), field.size() + 1));
        if (field.empty()) {
            continue;
        }
        std::size_t const equals = std::min(field.find('='), field.size());
        fields.push_back(
            {decoded(field.substr(0, equals)), decoded(field.substr(std::min(equals + 1, field.size())))});
    }
    return fields;
}

} // namespace tarn7d
