// Reading a TOML table that a person wrote: each value is fetched under the type that is expected, and
// whatever is left over is a mistake.
//
// Included only by the sources that read TOML. Errors are exceptions (TomlMistake) up to the function that
// was asked to read the file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>

#include <toml++/toml.h>

namespace engine {

// Its text names the file, line and column.
class TomlMistake : public std::runtime_error {
public:
    TomlMistake(std::filesystem::path const& file, toml::source_position where, std::string_view what);
};

// The root table of a text. Throws TomlMistake.
[[nodiscard]] toml::table parseToml(std::string_view text, std::filesystem::path const& file);

// One table and the way to its values. Keeps references to both arguments.
class TomlReader {
public:
    TomlReader(toml::table const& table, std::filesystem::path const& file) : table_(table), file_(file) {}

    // Throws unless every key is one of these; a near miss is named.
    void allow(std::initializer_list<std::string_view> keys) const;
    // The values of a key, null where the key is absent. Throw where the value is of another type.
    [[nodiscard]] std::string const* text(std::string_view key) const;
    [[nodiscard]] toml::table const* table(std::string_view key) const;
    [[nodiscard]] toml::array const* array(std::string_view key) const;

    [[nodiscard]] std::string const& textOf(toml::node const& node, std::string_view name) const;
    // A whole number in that range.
    [[nodiscard]] std::int64_t integerOf(toml::node const& node, std::string_view name, std::int64_t least,
                                         std::int64_t most) const;
    [[noreturn]] void fail(toml::node const& node, std::string_view what) const;

private:
    toml::table const& table_;
    std::filesystem::path const& file_;
};

} // namespace engine
