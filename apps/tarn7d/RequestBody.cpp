#include "apps/tarn7d/RequestBody.h"

#include <limits>

#include "apps/tarn7d/Text.h"

namespace tarn7d {

namespace {

// Length of the JSON object at the beginning of the text, 0 if it has no end there. Whether what is inside is
// JSON is left to the parser.
std::size_t objectLength(std::string_view text) noexcept {
    std::size_t depth = 0;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const c = text[i];
        if (inString) {
            if (c == '\\') {
                ++i; // whatever is escaped, a quotation mark above all
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if (c == '}' || c == ']') {
            if (depth <= 1) {
                return depth == 1 && c == '}' ? i + 1 : 0;
            }
            --depth;
        }
    }
    return 0;
}

bool readNumber(std::string_view text, std::int32_t& number) noexcept {
    std::int64_t value = 0;
    if (!parseInteger(text, value) || value < std::numeric_limits<std::int32_t>::min() ||
        value > std::numeric_limits<std::int32_t>::max()) {
        return false;
    }
    number = static_cast<std::int32_t>(value);
    return true;
}

} // namespace

std::optional<RequestForm> parseRequestBody(std::string_view body) noexcept {
    constexpr std::string_view start = "api=";
    if (!body.starts_with(start) || body.size() == start.size() || body[start.size()] != '{') {
        return std::nullopt;
    }
    body.remove_prefix(start.size());
    RequestForm form;
    std::size_t const length = objectLength(body);
    if (length == 0) {
        return std::nullopt;
    }
    form.envelope = body.substr(0, length);
    body.remove_prefix(length);
    while (!body.empty()) {
        if (body.front() != '&') {
            return std::nullopt;
        }
        body.remove_prefix(1);
        std::string_view const field = body.substr(0, body.find('&'));
        body.remove_prefix(field.size());
        std::size_t const equals = field.find('=');
        if (equals == std::string_view::npos) {
            return std::nullopt;
        }
        std::string_view const key = field.substr(0, equals);
        std::string_view const value = field.substr(equals + 1);
        if ((key == "apicx" && !readNumber(value, form.session.context)) ||
            (key == "apicm" && !readNumber(value, form.session.marker))) {
            return std::nullopt;
        }
    }
    return form;
}

} // namespace tarn7d
