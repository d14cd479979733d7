// The name under which a browser keeps a file.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace zq::panel {

// The text as the name of a file with that extension, on any system: without separators, control characters
// and dots in front, and not too long. Thread: any.
[[nodiscard]] inline std::string plainFileName(std::string_view text, std::string_view extension) {
    constexpr std::size_t longest_bytes = 120;
    constexpr std::string_view unwanted = "/\\:*?\"<>|\x7f";
    std::string name;
    for (char const character : text) {
        bool const isPlain =
            static_cast<unsigned char>(character) >= ' ' && unwanted.find(character) == std::string::npos;
        name += isPlain ? character : '_';
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
