// The name under which a browser keeps a file.
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace zq::panel {

// The text as the name of a file with that extension, on any system: without separators, control characters,
// marks that change the direction of the text around them or end a line, and dots in front, and not too long.
// Thread: any.
[[nodiscard]] inline std::string plainFileName(std::string_view text, std::string_view extension) {
    constexpr std::size_t longest_bytes = 120;
    constexpr std::string_view unwanted = "/\\:*?\"<>|\x7f";
    // With them a name looks like another one.
    constexpr std::array<std::string_view, 15> marks = {"\u061c", "\u200e", "\u200f", "\u2028", "\u2029",
                                                        "\u202a", "\u202b", "\u202c", "\u202d", "\u202e",
                                                        "\u2066", "\u2067", "\u2068", "\u2069", "\u0085"};
    std::string name;
    for (std::string_view rest = text; !rest.empty();) {
        auto const* const mark =
            std::ranges::find_if(marks, [rest](std::string_view one) { return rest.starts_with(one); });
        char const character = rest.front();
        bool const isPlain = mark == marks.end() && static_cast<unsigned char>(character) >= ' ' &&
                             unwanted.find(character) == std::string::npos;
        name += isPlain ? character : '_';
        rest.remove_prefix(mark != marks.end() ? mark->size() : 1);
    }
    // A character that is cut in two would be no text any more.
    std::size_t length = std::min(name.size(), longest_bytes);
    while (length > 0 && length < name.size() && (static_cast<unsigned char>(name[length]) & 0xc0) == 0x80) {
        --length;
    }
    name.resize(length);
    name.erase(0, std::min(name.find_first_not_of(". "), name.size()));
    return (name.empty() ? "sequence" : name) + "." + std::string(extension);
}

} // namespace zq::panel
