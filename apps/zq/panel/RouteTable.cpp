#include "apps/zq/panel/RouteTable.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "apps/zq/Text.h"
#include "apps/zq/panel/ApiError.h"

namespace zq::panel {

namespace {

constexpr std::size_t escapeLength = 3;

enum class Plus { itself, blank };

// Nothing for a broken escape, a null character and what is not UTF-8.
std::optional<std::string> decoded(std::string_view text, Plus plus) {
    std::string bytes;
    while (!text.empty()) {
        if (text.front() == '%') {
            unsigned value = 0;
            char const* const digits = text.data() + 1;
            char const* const end = text.data() + std::min(text.size(), escapeLength);
            if (text.size() < escapeLength || std::from_chars(digits, end, value, 16).ptr != end) {
                return std::nullopt;
            }
            bytes += static_cast<char>(value);
            text.remove_prefix(escapeLength);
        } else {
            bytes += text.front() == '+' && plus == Plus::blank ? ' ' : text.front();
            text.remove_prefix(1);
        }
    }
    bool const isText = bytes.find('\0') == std::string::npos && utf8(wide(bytes)) == bytes;
    return isText ? std::optional(bytes) : std::nullopt;
}

std::vector<std::string> split(std::string_view path) {
    std::vector<std::string> parts;
    while (!path.empty()) {
        path.remove_prefix(1); // "/"
        std::size_t const end = std::min(path.find('/'), path.size());
        parts.emplace_back(path.substr(0, end));
        path.remove_prefix(end);
    }
    return parts;
}

bool isCapture(std::string const& part) {
    return part.starts_with('{');
}

// Parts that a browser takes out of a path mean nothing as a name.
bool isName(std::string const& text) {
    return !text.empty() && text != "." && text != "..";
}

// What the pattern's captures are for these parts; nothing where they do not match. Literal parts are
// compared as they stand: an escape in one is another path.
std::optional<std::vector<std::string>> match(std::vector<std::string> const& pattern,
                                              std::vector<std::string> const& parts) {
    if (pattern.size() != parts.size()) {
        return std::nullopt;
    }
    std::vector<std::string> captures;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!isCapture(pattern[i])) {
            if (pattern[i] != parts[i]) {
                return std::nullopt;
            }
            continue;
        }
        std::optional<std::string> name = decoded(parts[i], Plus::itself);
        if (!name || !isName(*name)) {
            return std::nullopt;
        }
        captures.push_back(std::move(*name));
    }
    return captures;
}

bool takes(Route const& route, std::string_view method) {
    return route.method == method || (route.method == "GET" && method == "HEAD");
}

} // namespace

RouteTable::RouteTable(Routes routes) : routes_(std::move(routes)) {
    for (Route const& route : routes_) {
        patterns_.push_back(split(route.pattern));
    }
}

RouteTable::Match RouteTable::find(std::string_view method, std::string_view path) const {
    Match found;
    if (!path.starts_with('/')) {
        return found;
    }
    std::vector<std::string> const parts = split(path);
    for (std::size_t i = 0; i < routes_.size(); ++i) {
        std::optional<std::vector<std::string>> captures = match(patterns_[i], parts);
        if (captures && takes(routes_[i], method)) {
            return {&routes_[i], std::move(*captures), {}};
        }
        if (captures) {
            found.allowed += found.allowed.empty() ? "" : ", ";
            found.allowed += routes_[i].method == "GET" ? "GET, HEAD" : routes_[i].method;
        }
    }
    return found;
}

std::map<std::string, std::string, std::less<>> parseQuery(std::string_view query) {
    std::map<std::string, std::string, std::less<>> values;
    while (!query.empty()) {
        std::string_view const field = query.substr(0, query.find('&'));
        query.remove_prefix(std::min(query.size(), field.size() + 1));
        std::size_t const equals = std::min(field.find('='), field.size());
        std::optional<std::string> key = decoded(field.substr(0, equals), Plus::blank);
        std::optional<std::string> value =
            decoded(field.substr(std::min(equals + 1, field.size())), Plus::blank);
        if (!key || !value) {
            throw ApiError(ErrorCode::badRequest, "the query is no percent-encoded text");
        }
        if (!field.empty()) {
            values.emplace(std::move(*key), std::move(*value));
        }
    }
    return values;
}

} // namespace zq::panel
