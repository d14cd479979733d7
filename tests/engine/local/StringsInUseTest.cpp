// The shipped string files against the numbers that the sources really ask for.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>

#include "host/engine/resources/TomlStrings.h"
#include "host/text/Unicode.h"
#include "tests/engine/local/Bytes.h"

namespace {

std::filesystem::path const root = ZQ_SOURCE_FOLDER;

// The sources of the program, by path, without comments.
std::map<std::filesystem::path, std::string> readSources() {
    std::map<std::filesystem::path, std::string> sources;
    std::regex const comment("//[^\n]*");
    for (char const* const folder : {"plugin", "tarn7", "framequarry", "repository", "host", "apps"}) {
        if (!std::filesystem::is_directory(root / folder)) {
            continue;
        }
        for (auto const& entry : std::filesystem::recursive_directory_iterator(root / folder)) {
            std::string const extension = entry.path().extension();
            if (extension == ".cpp" || extension == ".h") {
                sources[entry.path()] = std::regex_replace(test::readBytes(entry.path()), comment, "");
            }
        }
    }
    return sources;
}

std::vector<std::smatch> matches(std::string const& text, std::regex const& pattern) {
    return {std::sregex_iterator(text.begin(), text.end(), pattern), std::sregex_iterator()};
}

// A number of a text is five digits, in every place.
constexpr char const* numberPattern = R"(\b([123]\d{4})\b)";

// Numbers that the sources ask for. An argument that is no number stands for every such number in that file;
// if there is none, for those that the named constants hold.
std::set<ResId> numbersInUse() {
    std::set<ResId> numbers;
    std::regex const call(R"(\b(?:resourceStrW|paddedResourceStrW)\(\s*([^,()]+))");
    std::regex const constant(R"(constexpr ResId\s+\w+\s*=\s*(\d+))");
    auto const addAll = [&numbers](std::string const& text, std::regex const& pattern) {
        for (std::smatch const& match : matches(text, pattern)) {
            numbers.insert(static_cast<ResId>(std::stoul(match[1])));
        }
    };
    for (auto const& [path, text] : readSources()) {
        addAll(text, constant);
        if (path.parent_path() == root / "host/resources") {
            continue; // the door itself
        }
        for (std::smatch const& match : matches(text, call)) {
            std::string const argument = match[1];
            if (argument.find_first_not_of("0123456789") == std::string::npos) {
                numbers.insert(static_cast<ResId>(std::stoul(argument)));
            } else {
                addAll(text, std::regex(numberPattern));
            }
        }
        if (path == root / "host/attributes/LogAttribute.cpp") {
            addAll(text, std::regex(numberPattern)); // the titles of the well-known columns
        }
    }
    return numbers;
}

engine::TomlStrings::Texts shipped(std::string const& language) {
    std::filesystem::path const file = root / "resources/strings" / (language + ".toml");
    auto texts = engine::parseStrings(test::readBytes(file), file);
    EXPECT_TRUE(texts) << texts.error();
    return texts ? *texts : engine::TomlStrings::Texts();
}

std::vector<std::string> languages() {
    return engine::availableLanguages(root / "resources/strings");
}

// The place-holders of a text, such as $CLIP$.
std::multiset<std::string> placeHolders(WideString const& text) {
    std::string const narrow(toUTF8(text).view());
    std::multiset<std::string> found;
    for (std::smatch const& match : matches(narrow, std::regex(R"(\$[A-Z]+\$)"))) {
        found.insert(match.str());
    }
    return found;
}

TEST(StringsInUse, TheScanFindsWhatTheSourcesAskFor) {
    std::set<ResId> const numbers = numbersInUse();
    for (ResId const known : {10005U, 10663U, 13477U, 13652U, 13658U, 20059U, 30117U}) {
        EXPECT_TRUE(numbers.contains(known)) << known;
    }
}

TEST(StringsInUse, EveryShippedLanguageHasATextForEachNumberInUse) {
    ASSERT_GE(languages().size(), 3U);
    std::set<ResId> const numbers = numbersInUse();
    for (std::string const& language : languages()) {
        engine::TomlStrings::Texts const texts = shipped(language);
        for (ResId const number : numbers) {
            auto const found = texts.find(number);
            EXPECT_TRUE(found != texts.end() && !found->second.isEmpty()) << language << ' ' << number;
        }
    }
}

TEST(StringsInUse, EveryLanguageHasTheSameNumbersAndPlaceHoldersAsEnglish) {
    engine::TomlStrings::Texts const english = shipped("en");
    for (std::string const& language : languages()) {
        engine::TomlStrings::Texts const texts = shipped(language);
        EXPECT_EQ(texts.size(), english.size()) << language;
        for (auto const& [number, text] : english) {
            auto const found = texts.find(number);
            ASSERT_NE(found, texts.end()) << language << ' ' << number;
            EXPECT_EQ(placeHolders(found->second), placeHolders(text)) << language << ' ' << number;
        }
    }
}

TEST(StringsInUse, TheTextsThatAreFilledInHoldTheirPlaceHolders) {
    for (std::string const& language : languages()) {
        engine::TomlStrings::Texts const texts = shipped(language);
        EXPECT_TRUE(texts.at(13656).contains(L"$CLIP$")) << language;
        EXPECT_TRUE(texts.at(13658).contains(L"$WEBSITE$")) << language;
        EXPECT_TRUE(texts.at(30002).contains(L"$USER$")) << language;
    }
}

TEST(StringsInUse, EveryTextSaysInACommentWhatItIsFor) {
    for (std::string const& language : languages()) {
        std::string const content = test::readBytes(root / "resources/strings" / (language + ".toml"));
        bool explained = false;
        std::istringstream lines(content);
        for (std::string line; std::getline(lines, line);) {
            if (line.empty()) {
                explained = false;
            } else if (line.starts_with('#')) {
                explained = true;
            } else {
                EXPECT_TRUE(explained) << language << ": " << line;
            }
        }
    }
}

} // namespace
