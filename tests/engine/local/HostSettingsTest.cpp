#include "host/engine/settings/HostSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include "host/engine/settings/HomeFolder.h"
#include "host/engine/settings/TomlConfiguration.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::string mistakeOf(std::string_view text) {
    auto const settings = engine::parseHostSettings(text, "/home/host.toml");
    return settings ? "no mistake" : settings.error();
}

TEST(HostSettings, WithoutAFileTheDefaultsApply) {
    test::TemporaryFolder const home;
    auto const settings = engine::loadHostSettings(home.path());
    ASSERT_TRUE(settings) << settings.error();
    EXPECT_EQ(settings->hostName, "Zq Host");
    EXPECT_TRUE(settings->config.empty());
    EXPECT_TRUE(settings->modulePath.empty());
    EXPECT_TRUE(settings->network.connect.empty());
    EXPECT_TRUE(settings->network.caFile.empty());
    EXPECT_EQ(settings->mediaFolder, home.path() / "media");
    EXPECT_EQ(settings->cacheFolder, home.path() / "cache");
    EXPECT_EQ(settings->cacheLimit_MiB, 2048);
}

TEST(HostSettings, EverySettingIsRead) {
    test::TemporaryFolder const home;
    test::writeBytes(home.path() / "ca.pem", "certificates");
    test::writeBytes(home.path() / "host.toml", R"(language = "de"
name = "Cutting Room"
[config]
t7 = 0
other = -5
[modules]
path = ["modules", "/opt/modules"]
[network]
connect = { "www.tarn7.example:443" = "127.0.0.1:8443", "api.example:443" = "[::1]:9000" }
ca_file = "ca.pem"
proxy = "http://proxy.example:3128"
[folders]
media = "/srv/media"
cache = "../cache"
cache_limit_mib = 64
)");
    auto const settings = engine::loadHostSettings(home.path());
    ASSERT_TRUE(settings) << settings.error();
    EXPECT_EQ(settings->language, "de");
    EXPECT_EQ(settings->hostName, "Cutting Room");
    EXPECT_EQ(settings->config.at("t7"), 0);
    EXPECT_EQ(settings->config.at("other"), -5);
    EXPECT_THAT(settings->modulePath, ElementsAre(home.path() / "modules", "/opt/modules"));
    EXPECT_EQ(settings->network.connect.at("www.tarn7.example:443"), "127.0.0.1:8443");
    EXPECT_EQ(settings->network.connect.at("api.example:443"), "[::1]:9000");
    EXPECT_EQ(settings->network.caFile, home.path() / "ca.pem");
    EXPECT_EQ(settings->network.proxy, "http://proxy.example:3128");
    EXPECT_EQ(settings->mediaFolder, "/srv/media");
    EXPECT_EQ(settings->cacheFolder, home.path().parent_path() / "cache");
    EXPECT_EQ(settings->cacheLimit_MiB, 64);
}

TEST(HostSettings, ATildeStandsForTheUsersFolder) {
    test::EnvironmentVariable const user("HOME", "/home/kim");
    auto const settings = engine::parseHostSettings("[folders]\nmedia = \"~/footage\"\n", "/x/host.toml");
    ASSERT_TRUE(settings) << settings.error();
    EXPECT_EQ(settings->mediaFolder, "/home/kim/footage");
}

TEST(HostSettings, ASyntaxErrorNamesFileAndLine) {
    EXPECT_THAT(mistakeOf("language = \"en\"\n[config]\nt7 = \n"), StartsWith("/home/host.toml:3:"));
}

TEST(HostSettings, AnUnknownKeyIsNamedWithTheNearestKnownOne) {
    std::string const mistake = mistakeOf("[folders]\nmedia = \"/m\"\n  cache_limt_mib = 5\n");
    EXPECT_THAT(mistake, StartsWith("/home/host.toml:3:3: "));
    EXPECT_THAT(mistake, HasSubstr("\"cache_limt_mib\""));
    EXPECT_THAT(mistake, HasSubstr("did you mean \"cache_limit_mib\"?"));
}

TEST(HostSettings, AnUnknownKeyThatIsLikeNoneListsTheKnownOnes) {
    std::string const mistake = mistakeOf("[network]\ncolour = 1\n");
    EXPECT_THAT(mistake, StartsWith("/home/host.toml:2:1: "));
    EXPECT_THAT(mistake, HasSubstr("connect ca_file proxy"));
}

TEST(HostSettings, AnUnknownTableIsAMistakeToo) {
    EXPECT_THAT(mistakeOf("\n[netwrok]\nproxy = \"\"\n"), HasSubstr("did you mean \"network\"?"));
}

struct Mistake {
    char const* text;
    char const* place;
    char const* expectation;
};

class WrongValue : public testing::TestWithParam<Mistake> {};

TEST_P(WrongValue, NamesItsPlaceAndWhatIsExpected) {
    EXPECT_THAT(mistakeOf(GetParam().text), StartsWith(GetParam().place));
    EXPECT_THAT(mistakeOf(GetParam().text), HasSubstr(GetParam().expectation));
}

INSTANTIATE_TEST_SUITE_P(
    HostSettings, WrongValue,
    testing::Values(
        Mistake{"language = 5",
                "/home/host.toml:1:12: ", "language must be a text in quotes, not a whole number"},
        Mistake{"[config]\nt7 = \"1\"", "/home/host.toml:2:6: ", "t7 must be a whole number"},
        Mistake{"[config]\nt7 = 1.5", "/home/host.toml:2:6: ", "not a number with a fraction"},
        Mistake{"[config]\nt7 = 3000000000", "/home/host.toml:2:6: ", "to 2147483647"},
        Mistake{"config = 1", "/home/host.toml:1:10: ", "config must be a table"},
        Mistake{"[modules]\npath = \"/m\"", "/home/host.toml:2:8: ", "path must be an array of texts"},
        Mistake{"[modules]\npath = [\"/m\", 7]", "/home/host.toml:2:15: ", "text in quotes"},
        Mistake{"[modules]\npath = [\"\"]", "/home/host.toml:2:9: ", "must be the path"},
        Mistake{"[network]\nconnect = \"a:1\"", "/home/host.toml:2:11: ", "connect must be a table"},
        Mistake{"[network]\nconnect = { \"a:443\" = \"b\" }", "/home/host.toml:2:23: ", "\"host:port\""},
        Mistake{"[network]\nconnect = { \"a\" = \"b:443\" }", "/home/host.toml:2:19: ", "\"host:port\""},
        Mistake{"[network]\nconnect = { \"a:1\" = \"b:99999\" }", "/home/host.toml:2:21: ", "\"host:port\""},
        Mistake{"[network]\nconnect = { \"a:1\" = \"x@b:9\" }", "/home/host.toml:2:21: ", "\"host:port\""},
        Mistake{"[network]\nca_file = \"gone.pem\"",
                "/home/host.toml:2:11: ", "there is no file /home/gone.pem"},
        Mistake{"[network]\nproxy = true", "/home/host.toml:2:9: ", "proxy must be a text"},
        Mistake{"[folders]\nmedia = []",
                "/home/host.toml:2:9: ", "media must be a text in quotes, not an array"},
        Mistake{"[folders]\ncache = \"a\\u0000b\"", "/home/host.toml:2:9: ", "must be the path"},
        Mistake{"[folders]\ncache_limit_mib = 0", "/home/host.toml:2:19: ", "from 1 to"},
        Mistake{"[folders]\ncache_limit_mib = -1", "/home/host.toml:2:19: ", "from 1 to"},
        Mistake{"[folders]\nmedia = \"/a\"\nmedia = \"/b\"", "/home/host.toml:3:", ""}));

TEST(HostSettings, BytesThatAreNotUtf8AreAMistakeAndNoCrash) {
    EXPECT_THAT(mistakeOf("name = \"\xff\xfe\""), StartsWith("/home/host.toml:1:"));
}

TEST(HostSettings, NestingWithoutEndIsAMistakeAndNoCrash) {
    EXPECT_THAT(mistakeOf("a = " + std::string(100'000, '[')), StartsWith("/home/host.toml:"));
}

TEST(HostSettings, APipeInThePlaceOfTheFileIsRefusedAtOnce) {
    test::TemporaryFolder const home;
    ASSERT_EQ(mkfifo((home.path() / "host.toml").c_str(), 0600), 0);
    auto const settings = engine::loadHostSettings(home.path());
    ASSERT_FALSE(settings);
    EXPECT_THAT(settings.error(), HasSubstr("host.toml"));
}

TEST(TomlConfiguration, GivesTheIntegersOfTheTableAndNothingElse) {
    engine::TomlConfiguration configuration({{"t7", 0}});
    EXPECT_EQ(configuration.readInt("t7"), 0);
    EXPECT_FALSE(configuration.readInt("T7").has_value());
    EXPECT_FALSE(configuration.readInt(nullptr).has_value());
}

class HomeFolder : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    test::EnvironmentVariable zqHome_{"ZQ_HOME", nullptr};
    test::EnvironmentVariable data_{"XDG_DATA_HOME", nullptr};
    test::EnvironmentVariable user_{"HOME", folder_.path().c_str()};
};

TEST_F(HomeFolder, LiesInTheUsersDataFolderByDefault) {
    auto const home = engine::findHomeFolder({});
    ASSERT_TRUE(home) << home.error();
    EXPECT_EQ(*home, folder_.path() / ".local/share/zq");
    EXPECT_TRUE(std::filesystem::is_directory(*home));
}

TEST_F(HomeFolder, IsClosedToOtherUsersWhenItIsMade) {
    auto const home = engine::findHomeFolder(folder_.path() / "a" / "b");
    ASSERT_TRUE(home) << home.error();
    EXPECT_EQ(std::filesystem::status(*home).permissions(), std::filesystem::perms::owner_all);
}

TEST_F(HomeFolder, ComesFromTheOptionThenFromZqHomeThenFromTheDataFolder) {
    test::EnvironmentVariable const data("XDG_DATA_HOME", (folder_.path() / "data").c_str());
    EXPECT_EQ(*engine::findHomeFolder({}), folder_.path() / "data" / "zq");
    test::EnvironmentVariable const named("ZQ_HOME", (folder_.path() / "named").c_str());
    EXPECT_EQ(*engine::findHomeFolder({}), folder_.path() / "named");
    EXPECT_EQ(*engine::findHomeFolder(folder_.path() / "given"), folder_.path() / "given");
}

TEST_F(HomeFolder, ARelativeDataFolderIsPassedOver) {
    test::EnvironmentVariable const data("XDG_DATA_HOME", "relative");
    EXPECT_EQ(*engine::findHomeFolder({}), folder_.path() / ".local/share/zq");
}

TEST_F(HomeFolder, AFolderThatCannotBeMadeIsRefusedWithWhatToDo) {
    test::writeBytes(folder_.path() / "file", "");
    for (std::filesystem::path const& wrong :
         {folder_.path() / "file", folder_.path() / "file" / "zq", std::filesystem::path("/proc/zq")}) {
        auto const home = engine::findHomeFolder(wrong);
        ASSERT_FALSE(home) << wrong;
        EXPECT_THAT(home.error(), HasSubstr(wrong.native()));
        EXPECT_THAT(home.error(), HasSubstr("choose another with ZQ_HOME or --home"));
    }
}

TEST_F(HomeFolder, WithoutAnyHintThereIsAnErrorThatSaysWhatToSet) {
    test::EnvironmentVariable const user("HOME", nullptr);
    auto const home = engine::findHomeFolder({});
    ASSERT_FALSE(home);
    EXPECT_THAT(home.error(), HasSubstr("set ZQ_HOME"));
}

} // namespace
