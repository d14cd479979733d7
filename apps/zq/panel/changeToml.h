// Changing values in a TOML file that a person wrote, with all that stands around them kept.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace zq::panel {

// One value at most one table deep.
struct TomlChange {
    std::string table; // empty: the file's own
    std::string key;
    std::optional<std::variant<std::string, std::int64_t>> value; // nothing removes the key
};

// The text with the changes. Comments, order and spaces stay, except where a value stands in a way that only
// writing the file anew can change: then the comment at its top stays, and every value. Throws
// engine::TomlMistake for a text that is no TOML; `file` names it. Thread: any.
[[nodiscard]] std::string changeToml(std::string text, std::filesystem::path const& file,
                                     std::span<TomlChange const> changes);

} // namespace zq::panel
