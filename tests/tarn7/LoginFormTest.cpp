#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class LoginForm : public Tarn7Test {};

constexpr std::string_view untilTheValue =
    R"({"":[{"name":"username","legend":"Username","type":"text","hint":"[ type your username ]","value":")";
constexpr std::string_view behindTheValue =
    R"("},{"name":"password","legend":"Password","type":"text","obfuscated":true,"advance":true,)"
    R"("hint":"[ type your password ]"}]})";

std::string formWithValue(std::string_view value) {
    return std::string(untilTheValue).append(value).append(behindTheValue);
}

TEST_F(LoginForm, BeforeAnySignInTheFieldOfTheNameIsEmpty) {
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue(""));
}

TEST_F(LoginForm, TheLastNameIsFilledIn) {
    host.preferences.write("T7 User", WideString(L"ada"));
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue("ada"));
}

TEST_F(LoginForm, ANameThatMeansSomethingInJsonIsEscaped) {
    host.preferences.write("T7 User", WideString(L"a\"d\\a\n"));
    EXPECT_EQ(utf8(resource.getLoginForm()), formWithValue(R"(a\"d\\a\n)"));
}

TEST_F(LoginForm, AskingForTheFormSendsNothingAndWritesNothing) {
    connect();
    (void)resource.getLoginForm();
    (void)resource.getLoginLinkForm();
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.preferences.writes().empty());
}

TEST_F(LoginForm, TheLinkFormPutsTheTaggedLinkIntoTheTextOfTheHost) {
    host.strings.texts[13658] = L"Visit $WEBSITE$ to join, or $WEBSITE$.";
    EXPECT_EQ(utf8(resource.getLoginLinkForm()),
              R"({"":[{"name":"link","legend":"<p>Visit )"
              R"(<a href=\"https://www.tarn7.example/login?utm_source=ZqHost&amp;utm_medium=partner\">)"
              R"(www.tarn7.example</a> to join, or )"
              R"(<a href=\"https://www.tarn7.example/login?utm_source=ZqHost&amp;utm_medium=partner\">)"
              R"(www.tarn7.example</a>.</p>","type":"label"}]})");
}

TEST_F(LoginForm, ATextWithoutAPlaceForTheLinkStaysAsItIs) {
    host.strings.texts[13658] = L"Ask $WEBSITE";
    EXPECT_EQ(utf8(resource.getLoginLinkForm()),
              R"({"":[{"name":"link","legend":"<p>Ask $WEBSITE</p>","type":"label"}]})");
}

} // namespace
} // namespace tarn7_tests
