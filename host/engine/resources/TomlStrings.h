// The host's texts by number: one TOML file a language, each a list of "number" = "text".
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/engine/settings/Result.h"
#include "host/resources/resourceStr.h"

namespace engine {

// Thread: any; the texts do not change.
class TomlStrings final : public iResourceStrings {
public:
    using Texts = std::unordered_map<ResId, WideString>;

    // The texts of that language from the folder, English where it has none. Fails where the folder has no
    // English, where a file has a mistake, and where there is no file of the language.
    [[nodiscard]] static Result<std::unique_ptr<TomlStrings>> load(std::filesystem::path const& folder,
                                                                   std::string_view language);
    explicit TomlStrings(Texts texts) : texts_(std::move(texts)) {}

    WideString read(ResId number) override;

private:
    Texts const texts_;
};

// The texts of one file's content; `file` names it in a failure. Thread: any.
[[nodiscard]] Result<TomlStrings::Texts> parseStrings(std::string_view content,
                                                      std::filesystem::path const& file);

// The folder of the string files that belong to a program in that folder: "strings" beside it, the installed
// one, or that of a build. Empty where there is none. Thread: any.
[[nodiscard]] std::filesystem::path findStringsFolder(std::filesystem::path const& programFolder);

// The languages that the folder has files for, sorted. Thread: any.
[[nodiscard]] std::vector<std::string> availableLanguages(std::filesystem::path const& folder);

// The available language that the environment asks for (LC_ALL, LC_MESSAGES, LANG, the first that is set),
// "en" where it asks for none of them. Thread: one that changes no environment at that moment.
[[nodiscard]] std::string environmentLanguage(std::vector<std::string> const& available);

} // namespace engine
