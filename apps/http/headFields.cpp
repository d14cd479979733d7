#include "apps/http/headFields.h"

#include <algorithm>
#include <string>

namespace http {

namespace {

constexpr std::string_view lineEnd = "\r\n";

// The next line, without its end.
std::string_view takeLine(std::string_view& rest) {
    std::string_view const line = rest.substr(0, rest.find(lineEnd));
    rest.remove_prefix(std::min(rest.size(), line.size() + lineEnd.size()));
    return line;
}

bool isToken(std::string_view name) {
    constexpr std::string_view others = "!#$%&'*+-.^_`|~";
    return !name.empty() && std::ranges::all_of(name, [&](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               others.find(c) != std::string_view::npos;
    });
}

bool isValue(std::string_view value) {
    return std::ranges::none_of(
        value, [](char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\t') || c == '\x7f'; });
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    std::size_t const first = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

} // namespace

HeadFields headFieldsOf(std::string_view head) {
    HeadFields fields;
    takeLine(head); // the request line
    while (!head.empty()) {
        std::string_view const line = takeLine(head);
        if (line.empty()) {
            break;
        }
        std::size_t const colon = line.find(':');
        std::string_view const name = line.substr(0, colon);
        std::string_view const value =
            colon == std::string_view::npos ? std::string_view() : trimmed(line.substr(colon + 1));
        if (colon == std::string_view::npos || !isToken(name) || !isValue(value)) {
            fields.areClear = false;
            continue;
        }
        fields.headers.emplace(name, value);
    }
    return fields;
}

} // namespace http
