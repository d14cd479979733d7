// The texts of the panel's page by key, such as "search.placeholder": one TOML file a language, with a table
// for each area of the page.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/engine/settings/Result.h"

namespace zq::panel {

using PageTexts = std::map<std::string, std::string>;

// The texts of that language from the folder; those that it has not, and all of a language without a file, in
// English. Fails where English cannot be read or a file has a mistake. Thread: any.
[[nodiscard]] engine::Result<PageTexts> loadPageTexts(std::filesystem::path const& folder,
                                                      std::string_view language);

// The texts of one file's content; `file` names it in a failure. Thread: any.
[[nodiscard]] engine::Result<PageTexts> parsePageTexts(std::string_view content,
                                                       std::filesystem::path const& file);

// The folder of the text files for a program in that folder: beside it, or the installed one. Empty where
// there is none. Thread: any.
[[nodiscard]] std::filesystem::path findPageTextsFolder(std::filesystem::path const& programFolder);

} // namespace zq::panel
