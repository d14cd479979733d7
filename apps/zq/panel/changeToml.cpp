#include "apps/zq/panel/changeToml.h"

#include <algorithm>
#include <sstream>

#include "host/engine/settings/TomlFile.h"

namespace zq::panel {

namespace {

std::string literal(std::variant<std::string, std::int64_t> const& value) {
    if (auto const* const number = std::get_if<std::int64_t>(&value)) {
        return std::to_string(*number);
    }
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text = "\"";
    for (char const character : std::get<std::string>(value)) {
        auto const byte = static_cast<unsigned char>(character);
        if (character == '"' || character == '\\') {
            text += {'\\', character};
        } else if (byte < ' ' || byte == 0x7f) {
            text += std::string("\\u00") + digits[byte >> 4] + digits[byte & 15];
        } else {
            text += character;
        }
    }
    return text + "\"";
}

// What the change makes of the values.
void apply(toml::table& root, TomlChange const& change) {
    toml::table* table = &root;
    if (!change.table.empty()) {
        if (change.value && !root.contains(change.table)) {
            root.insert(change.table, toml::table());
        }
        table = root[change.table].as_table();
    }
    if (table == nullptr) {
        return;
    }
    if (!change.value) {
        table->erase(change.key);
    } else {
        std::visit([&](auto const& value) { table->insert_or_assign(change.key, value); }, *change.value);
    }
}

std::size_t beginOfLine(std::string_view text, std::size_t line) {
    std::size_t at = 0;
    for (std::size_t i = 1; i < line && at < text.size(); ++i) {
        at = std::min(text.find('\n', at), text.size() - 1) + 1;
    }
    return at;
}

// Columns count characters.
std::size_t offsetOf(std::string_view text, toml::source_position where) {
    std::size_t at = beginOfLine(text, where.line);
    for (std::size_t column = 1; column < where.column && at < text.size(); ++column) {
        do {
            ++at;
        } while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0) == 0x80);
    }
    return at;
}

bool isCommentOrBlank(std::string_view line) {
    std::size_t const first = line.find_first_not_of(" \t\r");
    return first == std::string_view::npos || line[first] == '#';
}

// Length of the comment at the top.
std::size_t headLength(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t const end = std::min(text.find('\n', at), text.size());
        if (!isCommentOrBlank(text.substr(at, end - at))) {
            break;
        }
        at = std::min(end + 1, text.size());
    }
    return at;
}

void endLine(std::string& text) {
    if (!text.empty() && text.back() != '\n') {
        text += '\n';
    }
}

// The text with the change made in place: right in most files, and to be looked at before it is used.
std::string edited(std::string text, toml::table const& root, TomlChange const& change) {
    toml::table const* const table = change.table.empty() ? &root : root[change.table].as_table();
    toml::node const* const node = table != nullptr ? table->get(change.key) : nullptr;
    if (node != nullptr && change.value) {
        std::size_t const begin = offsetOf(text, node->source().begin);
        std::size_t const end = offsetOf(text, node->source().end);
        return text.replace(begin, std::max(end, begin) - begin, literal(*change.value));
    }
    if (node != nullptr) {
        std::size_t const begin = beginOfLine(text, node->source().begin.line);
        return text.erase(begin, beginOfLine(text, node->source().end.line + 1) - begin);
    }
    if (!change.value) {
        return text;
    }
    std::string const line = change.key + " = " + literal(*change.value) + "\n";
    if (change.table.empty()) {
        std::size_t const head = headLength(text);
        if (head == text.size()) {
            endLine(text);
            return text + line;
        }
        return text.insert(head, line);
    }
    endLine(text);
    if (table != nullptr) {
        return text.insert(beginOfLine(text, table->source().begin.line + 1), line);
    }
    return text + (text.empty() ? "[" : "\n[") + change.table + "]\n" + line;
}

bool says(std::string const& text, toml::table const& wanted) {
    try {
        return toml::parse(text) == wanted;
    } catch (toml::parse_error const&) {
        return false;
    }
}

std::string written(std::string_view head, toml::table const& values) {
    std::ostringstream stream;
    stream << head << toml::toml_formatter(values) << '\n';
    return stream.str();
}

} // namespace

std::string changeToml(std::string text, std::filesystem::path const& file,
                       std::span<TomlChange const> changes) {
    for (TomlChange const& change : changes) {
        toml::table const before = engine::parseToml(text, file);
        toml::table wanted = before;
        apply(wanted, change);
        if (wanted == before) {
            continue;
        }
        std::string const candidate = edited(text, before, change);
        text = says(candidate, wanted) ? candidate
                                       : written(std::string_view(text).substr(0, headLength(text)), wanted);
    }
    return text;
}

} // namespace zq::panel
