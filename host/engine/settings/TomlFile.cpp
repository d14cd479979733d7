#include "host/engine/settings/TomlFile.h"

#include <algorithm>
#include <vector>

namespace engine {

namespace {

// Number of single-character changes that lead from one word to the other.
std::size_t distance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            std::size_t const replaced = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

std::string describe(toml::node const& node) {
    switch (node.type()) {
    case toml::node_type::table:
        return "a table";
    case toml::node_type::array:
        return "an array";
    case toml::node_type::string:
        return "a text";
    case toml::node_type::integer:
        return "a whole number";
    case toml::node_type::floating_point:
        return "a number with a fraction";
    case toml::node_type::boolean:
        return "true or false";
    default:
        return "a date or time";
    }
}

std::string at(std::filesystem::path const& file, toml::source_position where) {
    return file.native() + ":" + std::to_string(where.line) + ":" + std::to_string(where.column) + ": ";
}

constexpr std::size_t longestKey = 200;

} // namespace

TomlMistake::TomlMistake(std::filesystem::path const& file, toml::source_position where,
                         std::string_view what)
    : std::runtime_error(at(file, where) + std::string(what)) {}

toml::table parseToml(std::string_view text, std::filesystem::path const& file) {
    try {
        return toml::parse(text);
    } catch (toml::parse_error const& error) {
        throw TomlMistake(file, error.source().begin, error.description());
    }
}

void TomlReader::allow(std::initializer_list<std::string_view> keys) const {
    for (auto const& [key, node] : table_) {
        if (std::ranges::find(keys, key.str()) != keys.end()) {
            continue;
        }
        std::string message = "unknown key \"" + std::string(key.str().substr(0, longestKey)) + '"';
        auto const* const nearest = std::ranges::min_element(keys, {}, [&key = key](std::string_view known) {
            return distance(key.str().substr(0, longestKey), known);
        });
        if (nearest != keys.end() && distance(key.str().substr(0, longestKey), *nearest) <= 2) {
            message += ", did you mean \"" + std::string(*nearest) + "\"?";
        } else {
            message += ", expected one of:";
            for (std::string_view const known : keys) {
                message += ' ' + std::string(known);
            }
        }
        throw TomlMistake(file_, key.source().begin, message);
    }
}

std::string const* TomlReader::text(std::string_view key) const {
    toml::node const* const node = table_.get(key);
    return node != nullptr ? &textOf(*node, key) : nullptr;
}

toml::table const* TomlReader::table(std::string_view key) const {
    toml::node const* const node = table_.get(key);
    if (node != nullptr && !node->is_table()) {
        fail(*node, std::string(key) + " must be a table, not " + describe(*node));
    }
    return node != nullptr ? node->as_table() : nullptr;
}

toml::array const* TomlReader::array(std::string_view key) const {
    toml::node const* const node = table_.get(key);
    if (node != nullptr && !node->is_array()) {
        fail(*node, std::string(key) + " must be an array of texts, not " + describe(*node));
    }
    return node != nullptr ? node->as_array() : nullptr;
}

std::string const& TomlReader::textOf(toml::node const& node, std::string_view name) const {
    toml::value<std::string> const* const value = node.as_string();
    if (value == nullptr) {
        fail(node, std::string(name) + " must be a text in quotes, not " + describe(node));
    }
    return value->get();
}

std::int64_t TomlReader::integerOf(toml::node const& node, std::string_view name, std::int64_t least,
                                   std::int64_t most) const {
    toml::value<std::int64_t> const* const value = node.as_integer();
    if (value == nullptr || value->get() < least || value->get() > most) {
        fail(node, std::string(name) + " must be a whole number from " + std::to_string(least) + " to " +
                       std::to_string(most) + (value == nullptr ? ", not " + describe(node) : ""));
    }
    return value->get();
}

void TomlReader::fail(toml::node const& node, std::string_view what) const {
    throw TomlMistake(file_, node.source().begin, what);
}

} // namespace engine
