#include "host/engine/resources/TomlStrings.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>

#include "host/engine/files/WholeFile.h"
#include "host/engine/settings/TomlFile.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

constexpr std::size_t largestFile = std::size_t{4} << 20; // bytes
constexpr std::string_view fallback = "en";

std::optional<ResId> numberFrom(std::string_view key) {
    ResId number = 0;
    auto const [end, error] = std::from_chars(key.data(), key.data() + key.size(), number);
    return error == std::errc() && end == key.data() + key.size() ? std::optional(number) : std::nullopt;
}

Result<TomlStrings::Texts> loadFile(std::filesystem::path const& file) {
    std::optional<std::string> const content = readWholeFile(file, largestFile);
    if (!content) {
        return Failure{"the string file " + file.native() + " cannot be read"};
    }
    return parseStrings(*content, file);
}

} // namespace

Result<TomlStrings::Texts> parseStrings(std::string_view content, std::filesystem::path const& file) {
    TomlStrings::Texts texts;
    try {
        toml::table const root = parseToml(content, file);
        TomlReader const reader(root, file);
        for (auto const& [key, node] : root) {
            std::optional<ResId> const number = numberFrom(key.str());
            if (!number) {
                throw TomlMistake(file, key.source().begin, "expected a number in quotes as the key");
            }
            texts.insert_or_assign(*number, fromUTF8(std::string_view(reader.textOf(node, key.str()))));
        }
    } catch (TomlMistake const& mistake) {
        return Failure{mistake.what()};
    }
    return texts;
}

Result<std::unique_ptr<TomlStrings>> TomlStrings::load(std::filesystem::path const& folder,
                                                       std::string_view language) {
    std::vector<std::string> const available = availableLanguages(folder);
    for (std::string_view const wanted : {fallback, language}) {
        if (std::ranges::find(available, wanted) == available.end()) {
            std::string message = "no texts in the language \"" + std::string(wanted) + "\" in " +
                                  folder.native() + "; there are:";
            for (std::string const& name : available) {
                message += ' ' + name;
            }
            return Failure{message + (available.empty() ? " none" : "")};
        }
    }
    Result<Texts> texts = loadFile(folder / (std::string(language) + ".toml"));
    if (texts && language != fallback) {
        Result<Texts> english = loadFile(folder / (std::string(fallback) + ".toml"));
        if (!english) {
            return Failure{english.error()};
        }
        texts->merge(*english); // keeps what is there already
    }
    if (!texts) {
        return Failure{texts.error()};
    }
    return std::make_unique<TomlStrings>(std::move(*texts));
}

WideString TomlStrings::read(ResId number) {
    auto const found = texts_.find(number);
    return found != texts_.end() ? found->second : WideString();
}

std::filesystem::path findStringsFolder(std::filesystem::path const& programFolder) {
    for (char const* const place : {"strings", "../share/zq/strings", "../bin/strings"}) {
        std::filesystem::path folder = (programFolder / place).lexically_normal();
        std::error_code error;
        if (std::filesystem::is_directory(folder, error)) {
            return folder;
        }
    }
    return {};
}

std::vector<std::string> availableLanguages(std::filesystem::path const& folder) {
    std::vector<std::string> languages;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".toml") {
            languages.push_back(entry->path().stem().native());
        }
    }
    std::ranges::sort(languages);
    return languages;
}

std::string environmentLanguage(std::vector<std::string> const& available) {
    for (char const* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        char const* const value = std::getenv(variable);
        if (value == nullptr || *value == '\0') {
            continue;
        }
        // As in "de_AT.UTF-8@euro": the country's own texts, else the language's.
        std::string const locale = std::string(value).substr(0, std::string_view(value).find_first_of(".@"));
        for (std::string const& name : {locale, locale.substr(0, locale.find('_'))}) {
            if (std::ranges::find(available, name) != available.end()) {
                return name;
            }
        }
        break;
    }
    return std::string(fallback);
}

} // namespace engine
