#include "apps/zq/panel/PageTexts.h"

#include <algorithm>
#include <system_error>

#include "host/engine/files/WholeFile.h"
#include "host/engine/resources/TomlStrings.h"
#include "host/engine/settings/TomlFile.h"

namespace zq::panel {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t largestFile = std::size_t{4} << 20; // bytes
constexpr std::string_view fallback = "en";

void collect(toml::table const& table, std::string const& prefix, fs::path const& file, PageTexts& texts) {
    engine::TomlReader const reader(table, file);
    for (auto const& [key, node] : table) {
        std::string const name = prefix + std::string(key.str());
        if (toml::table const* const inner = node.as_table()) {
            collect(*inner, name + ".", file, texts);
        } else {
            texts.insert_or_assign(name, reader.textOf(node, name));
        }
    }
}

engine::Result<PageTexts> loadFile(fs::path const& file) {
    std::optional<std::string> const content = engine::readWholeFile(file, largestFile);
    if (!content) {
        return engine::Failure{"the panel's texts " + file.native() + " cannot be read"};
    }
    return parsePageTexts(*content, file);
}

} // namespace

engine::Result<PageTexts> parsePageTexts(std::string_view content, fs::path const& file) {
    PageTexts texts;
    try {
        collect(engine::parseToml(content, file), {}, file, texts);
    } catch (engine::TomlMistake const& mistake) {
        return engine::Failure{mistake.what()};
    }
    return texts;
}

engine::Result<PageTexts> loadPageTexts(fs::path const& folder, std::string_view language) {
    engine::Result<PageTexts> english = loadFile(folder / (std::string(fallback) + ".toml"));
    // Only a name that the folder has is made into a path.
    std::vector<std::string> const available = engine::availableLanguages(folder);
    bool const isOther = language != fallback && std::ranges::find(available, language) != available.end();
    if (!english || !isOther) {
        return english;
    }
    engine::Result<PageTexts> texts = loadFile(folder / (std::string(language) + ".toml"));
    if (texts) {
        texts->merge(*english); // keeps what is there already
    }
    return texts;
}

fs::path findPageTextsFolder(fs::path const& programFolder) {
    for (char const* const place : {"panel-texts", "../share/zq/panel-texts"}) {
        fs::path folder = (programFolder / place).lexically_normal();
        std::error_code error;
        if (fs::is_directory(folder, error)) {
            return folder;
        }
    }
    return {};
}

} // namespace zq::panel
