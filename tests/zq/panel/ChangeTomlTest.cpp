// Changes of a TOML file that a person wrote.

#include <gmock/gmock.h>

#include "apps/zq/panel/changeToml.h"
#include "host/engine/settings/TomlFile.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;
using zq::panel::changeToml;
using zq::panel::TomlChange;

std::string changed(std::string const& text, std::vector<TomlChange> const& changes) {
    return changeToml(text, "host.toml", changes);
}
std::string proxySet(std::string const& text, std::string const& proxy) {
    return changed(text, {{"network", "proxy", proxy}});
}
toml::table values(std::string const& text) {
    return toml::parse(text);
}

TEST(ChangeToml, ReplacesAValueAndNothingElse) {
    EXPECT_EQ(proxySet("# mine\n[network] # the way out\n  proxy = \"http://a:1\"  # old\nca_file = '/c'\n",
                       "http://b:2"),
              "# mine\n[network] # the way out\n  proxy = \"http://b:2\"  # old\nca_file = '/c'\n");
}

TEST(ChangeToml, FindsItsPlaceBehindCharactersOfSeveralBytes) {
    EXPECT_EQ(changed("x = { \"日本\" = \"é\", y = 1 } # ü\n", {{"x", "y", std::int64_t{22}}}),
              "x = { \"日本\" = \"é\", y = 22 } # ü\n");
}

TEST(ChangeToml, AddsAKeyBelowItsTable) {
    EXPECT_EQ(proxySet("[network]\nca_file = \"/c\"\n\n[folders]\nmedia = \"/m\"\n", "p"),
              "[network]\nproxy = \"p\"\nca_file = \"/c\"\n\n[folders]\nmedia = \"/m\"\n");
}

TEST(ChangeToml, AddsATableAtTheEnd) {
    EXPECT_EQ(proxySet("", "p"), "[network]\nproxy = \"p\"\n");
    EXPECT_EQ(proxySet("language = \"de\"", "p"), "language = \"de\"\n\n[network]\nproxy = \"p\"\n");
}

TEST(ChangeToml, AddsAKeyOfTheFileItselfInFrontOfItsTables) {
    EXPECT_EQ(changed("# mine\n\n[network]\nproxy = \"p\"\n", {{"", "language", "ja"}}),
              "# mine\n\nlanguage = \"ja\"\n[network]\nproxy = \"p\"\n");
}

TEST(ChangeToml, TakesAKeyAwayWithItsLine) {
    EXPECT_EQ(changed("[network]\nca_file = \"/c\" # gone\nproxy = \"p\"\n", {{"network", "ca_file", {}}}),
              "[network]\nproxy = \"p\"\n");
    EXPECT_EQ(changed("# nothing there\n", {{"network", "ca_file", {}}}), "# nothing there\n");
}

TEST(ChangeToml, WritesTheFileAnewWhereAValueCannotBeChangedInItsPlace) {
    std::string const text = "# mine\nnetwork = { ca_file = \"/c\", proxy = \"p\" }\nname = \"x\"\n";
    std::string const without = changed(text, {{"network", "ca_file", {}}});
    EXPECT_THAT(without, StartsWith("# mine\n"));
    EXPECT_EQ(values(without), values("name = \"x\"\n[network]\nproxy = \"p\"\n"));
    std::string const with = changed("network = { proxy = \"p\" }\n", {{"network", "ca_file", "/c"}});
    EXPECT_EQ(values(with), values("[network]\nproxy = \"p\"\nca_file = \"/c\"\n"));
    std::string const dotted =
        changed("network.proxy = \"p\"\nname = \"x\"\n", {{"network", "ca_file", "/c"}});
    EXPECT_EQ(values(dotted), values("name = \"x\"\n[network]\nproxy = \"p\"\nca_file = \"/c\"\n"));
}

TEST(ChangeToml, CarriesEveryTextWhole) {
    for (std::string const text :
         {"a\"b\\c", "\t\n\x01\x7f", "日本語 \xf0\x9f\x8e\xac", "\"\"\"", "", "# no comment"}) {
        toml::table const read = values(proxySet("[network]\nproxy = '''x\ny'''\n", text));
        EXPECT_EQ(read["network"]["proxy"].value_or(std::string("?")), text);
    }
}

TEST(ChangeToml, LeavesAFileAloneThatSaysItAlready) {
    std::string const text = "[network]\nproxy = 'p'   # mine\n";
    EXPECT_EQ(proxySet(text, "p"), text);
}

TEST(ChangeToml, RefusesWhatIsNoToml) {
    EXPECT_THROW(static_cast<void>(proxySet("[network\n", "p")), engine::TomlMistake);
}

} // namespace
