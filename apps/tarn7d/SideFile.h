// What a studio says about a clip: title, keywords and price.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace tarn7d {

struct ClipDescription {
    std::string title;
    std::string keywords; // separated by blanks
    std::int64_t price_cents = 0;
};

// The side file of a footage file: the same name with the extension "toml".
[[nodiscard]] std::filesystem::path sideFileOf(std::filesystem::path const& footageFile);

// Reads the side file:
//   title = "Sunset over the bay"
//   keywords = ["sea", "evening"]   (or one text)
//   price = 19.99
// What is missing or wrong there is derived: the title from the footage file's name, the keywords from the
// names of its folders below the footage folder, the price from the picture's height. `relative` is the
// footage file's path below that folder. Does not throw for anything the files hold.
[[nodiscard]] ClipDescription describeClip(std::filesystem::path const& footageFolder,
                                           std::filesystem::path const& relative, int pictureHeight);

} // namespace tarn7d
