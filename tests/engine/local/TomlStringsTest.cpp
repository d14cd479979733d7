#include "host/engine/resources/TomlStrings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class TomlStrings : public testing::Test {
protected:
    void SetUp() override {
        test::writeBytes(folder_.path() / "en.toml", "\"1\" = \"one\"\n\"2\" = \"two\"\n");
        test::writeBytes(folder_.path() / "de.toml", "\"1\" = \"eins\"\n");
    }
    test::TemporaryFolder folder_;
};

TEST_F(TomlStrings, GivesTheTextOfTheLanguage) {
    auto const strings = engine::TomlStrings::load(folder_.path(), "de");
    ASSERT_TRUE(strings) << strings.error();
    EXPECT_EQ((*strings)->read(1), WideString(L"eins"));
}

TEST_F(TomlStrings, ANumberThatTheLanguageLacksFallsBackToEnglish) {
    auto const strings = engine::TomlStrings::load(folder_.path(), "de");
    ASSERT_TRUE(strings) << strings.error();
    EXPECT_EQ((*strings)->read(2), WideString(L"two"));
}

TEST_F(TomlStrings, ANumberThatNoLanguageHasGivesEmptyText) {
    auto const strings = engine::TomlStrings::load(folder_.path(), "en");
    ASSERT_TRUE(strings) << strings.error();
    EXPECT_TRUE((*strings)->read(3).isEmpty());
}

TEST_F(TomlStrings, ACharacterBeyondTheBasicPlaneBecomesASurrogatePair) {
    test::writeBytes(folder_.path() / "en.toml", "\"1\" = \"\xf0\x9f\x8e\xac!\"\n");
    auto const strings = engine::TomlStrings::load(folder_.path(), "en");
    ASSERT_TRUE(strings) << strings.error();
    EXPECT_EQ((*strings)->read(1), WideString(L"\xd83c\xdfac!"));
}

TEST_F(TomlStrings, WithoutEnglishThereIsAnError) {
    std::filesystem::remove(folder_.path() / "en.toml");
    auto const strings = engine::TomlStrings::load(folder_.path(), "de");
    ASSERT_FALSE(strings);
    EXPECT_THAT(strings.error(), HasSubstr(folder_.path().native()));
}

TEST_F(TomlStrings, AFolderThatIsNotThereIsAnError) {
    EXPECT_FALSE(engine::TomlStrings::load(folder_.path() / "gone", "en"));
}

TEST_F(TomlStrings, ALanguageThatIsNotThereIsAnErrorThatListsThoseThatAre) {
    for (char const* const wrong : {"fr", "", "../en", "en.toml", "EN"}) {
        auto const strings = engine::TomlStrings::load(folder_.path(), wrong);
        ASSERT_FALSE(strings) << wrong;
        EXPECT_THAT(strings.error(), HasSubstr("there are: de en"));
    }
}

TEST_F(TomlStrings, AMistakeInAFileNamesFileAndLine) {
    for (char const* const wrong :
         {"\"1\" = \"one\"\nword = \"two\"\n", "\"1\" = \"one\"\n\"2\" = 2\n",
          "\"1\" = \"one\"\n\"99999999999\" = \"x\"\n", "\"1\" = \"one\"\n\"2\" = \"x\n",
          "\"1\" = \"one\"\n\"1\" = \"again\"\n", "\"1\" = \"one\"\n\"-1\" = \"x\"\n"}) {
        test::writeBytes(folder_.path() / "de.toml", wrong);
        auto const strings = engine::TomlStrings::load(folder_.path(), "de");
        ASSERT_FALSE(strings) << wrong;
        EXPECT_THAT(strings.error(), StartsWith((folder_.path() / "de.toml").native() + ":2:"));
    }
}

TEST_F(TomlStrings, TheEnvironmentsLocaleLeadsToItsLanguage) {
    test::EnvironmentVariable const all("LC_ALL", nullptr);
    test::EnvironmentVariable const messages("LC_MESSAGES", nullptr);
    std::vector<std::string> const available{"de", "de_AT", "en"};
    struct Case {
        char const* locale;
        char const* language;
    };
    for (Case const& example : {Case{"de_DE.UTF-8", "de"}, Case{"de_AT@euro", "de_AT"}, Case{"de", "de"},
                                Case{"fr_FR.UTF-8", "en"}, Case{"C", "en"}, Case{"", "en"}}) {
        test::EnvironmentVariable const language("LANG", example.locale);
        EXPECT_EQ(engine::environmentLanguage(available), example.language) << example.locale;
    }
}

TEST_F(TomlStrings, LcAllGoesBeforeLang) {
    test::EnvironmentVariable const language("LANG", "en_GB.UTF-8");
    test::EnvironmentVariable const all("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(engine::environmentLanguage({"de", "en"}), "de");
}

TEST_F(TomlStrings, OnlyTomlFilesAreLanguages) {
    test::writeBytes(folder_.path() / "notes.txt", "");
    EXPECT_THAT(engine::availableLanguages(folder_.path()), ElementsAre("de", "en"));
}

TEST_F(TomlStrings, TheFolderIsFoundBesideTheProgramOrInTheShareFolder) {
    std::filesystem::path const program = folder_.path() / "bin";
    std::filesystem::create_directories(program);
    EXPECT_TRUE(engine::findStringsFolder(program).empty());
    std::filesystem::create_directories(folder_.path() / "share/zq/strings");
    EXPECT_EQ(engine::findStringsFolder(program), folder_.path() / "share/zq/strings");
    std::filesystem::create_directories(program / "strings");
    EXPECT_EQ(engine::findStringsFolder(program), program / "strings");
}

} // namespace
