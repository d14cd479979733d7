#include <clocale>

#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class Identity : public Tarn7Test {
protected:
    std::string titleFor(std::string_view hostName) {
        host.files.hostName = wide(hostName);
        return utf8(Tarn7Resource::titleCaseHostName());
    }
    std::string taggedFor(std::string_view hostName, wchar_t const* url) {
        host.files.hostName = wide(hostName);
        return utf8(Tarn7Resource::addPartnerTags(url));
    }
};

// What counts as a letter is the program's choice of locale.
class Locale {
public:
    explicit Locale(char const* name) : before_(std::setlocale(LC_CTYPE, nullptr)) {
        known = std::setlocale(LC_CTYPE, name) != nullptr;
    }
    ~Locale() { std::setlocale(LC_CTYPE, before_.c_str()); }
    Locale(Locale const&) = delete;
    Locale& operator=(Locale const&) = delete;
    bool known = false;

private:
    std::string before_;
};

TEST_F(Identity, TheDescriptionHasItsValuesMemberByMember) {
    RepositoryDescription const description = resource.getDescription();
    EXPECT_EQ(utf8(description.name), "Tarn7");
    EXPECT_EQ(utf8(description.summary),
              "Bring your vision to life, without compromise.  Find inspiration by searching the largest "
              "library of royalty-free HD and 4k stock video.");
    EXPECT_EQ(utf8(description.legalNotice),
              R"(<p><small>All Tarn7 clips are subject to the )"
              R"(<a href="https://www.tarn7.example/legal/terms?utm_source=ZqHost&amp;utm_medium=partner">)"
              R"(Terms of Service</a></small></p>)");
    EXPECT_EQ(utf8(description.shortName), "T7");
    EXPECT_EQ(utf8(description.webLink), "http://www.tarn7.example/?utm_source=ZqHost&utm_medium=partner");
    EXPECT_EQ(description.resourceId, 13337);
    EXPECT_EQ(description.capabilities, 1);
    EXPECT_EQ(utf8(description.logo), "t7.png");
}

TEST_F(Identity, EveryOtherMemberKeepsItsDefault) {
    RepositoryDescription const description = resource.getDescription();
    EXPECT_TRUE(description.category.isEmpty());
    EXPECT_TRUE(description.supportLink.isEmpty());
    EXPECT_EQ(description.version, 1);
    EXPECT_EQ(description.order, 0);
    EXPECT_EQ(description.thumbnailAspect, 16.0F / 9.0F);
}

TEST_F(Identity, TheConnectionLeadsToTheSecureServer) {
    HTTPConnectionInfo const connection = resource.getDescription().connection;
    EXPECT_EQ(utf8(connection.server), "www.tarn7.example");
    EXPECT_EQ(connection.secure, 1);
    EXPECT_EQ(connection.port, 0);
    EXPECT_TRUE(connection.user.isEmpty());
    EXPECT_TRUE(connection.realm.isEmpty());
    EXPECT_TRUE(connection.headers.empty());
    EXPECT_TRUE(connection.userAgent.isEmpty());
}

TEST_F(Identity, TheUserIsTheOneWhoIsSignedIn) {
    connect();
    signIn();
    EXPECT_EQ(utf8(resource.getDescription().connection.user), "ada");
    resource.logout();
    EXPECT_TRUE(resource.getDescription().connection.user.isEmpty());
}

TEST_F(Identity, TheNewDescriptionHasItsDefaults) {
    RepositoryDescription const description = resource.newDescription();
    EXPECT_TRUE(description.name.isEmpty());
    EXPECT_TRUE(description.connection.server.isEmpty());
    EXPECT_EQ(description.connection.secure, 0);
    EXPECT_EQ(description.resourceId, 0);
    EXPECT_EQ(description.version, 1);
    EXPECT_EQ(description.capabilities, 0);
    EXPECT_EQ(description.thumbnailAspect, 16.0F / 9.0F);
}

TEST_F(Identity, TheNameAndTheShortNameAreTwo) {
    EXPECT_EQ(utf8(resource.getName()), "Tarn7");
    EXPECT_EQ(utf8(resource.getShortName()), "T7");
}

class Renamed final : public TestResource {
public:
    RepositoryDescription getDescription() const override {
        RepositoryDescription description = TestResource::getDescription();
        description.name = L"Other";
        description.shortName = L"O";
        return description;
    }
};

TEST_F(Identity, AnotherNameInTheDescriptionChangesTheNameAndNothingElse) {
    Renamed const renamed;
    RemoteAsset asset;
    asset.id = L"1";
    asset.mediaExtension = L"mov";
    EXPECT_EQ(utf8(renamed.getName()), "Other");
    EXPECT_EQ(utf8(renamed.getShortName()), "T7");
    EXPECT_EQ(utf8(renamed.getLocalMediaLocation(asset, TestResource::eFullMedia)), "/media/Tarn7/1.mov");
}

TEST_F(Identity, EachWordOfTheHostsNameGetsOneCapital) {
    EXPECT_EQ(titleFor("ABC DEF"), "Abc Def");
    EXPECT_EQ(titleFor("zq host"), "Zq Host");
    EXPECT_EQ(titleFor("a"), "A");
    EXPECT_EQ(titleFor(""), "");
    EXPECT_EQ(titleFor("3D eDIT-suite x2"), "3d Edit-suite X2");
}

TEST_F(Identity, BlanksStayAndOnlyABlankBeginsAWord) {
    EXPECT_EQ(titleFor("  two  blanks "), "  Two  Blanks ");
    EXPECT_EQ(titleFor("tab\there\nand-there"), "Tab\there\nand-there");
}

TEST_F(Identity, LettersBeyondAsciiFollowTheLocaleAndNothingIsBroken) {
    Locale const locale("C.UTF-8");
    ASSERT_TRUE(locale.known);
    EXPECT_EQ(titleFor("\u00e9DITEUR \u00d6STLICH"), "\u00c9diteur \u00d6stlich");
    EXPECT_EQ(titleFor("\u4e16\u754c \U0001f3acCUT \U0001d504"), "\u4e16\u754c \U0001f3accut \U0001d504");
}

TEST_F(Identity, WithoutALocaleLettersBeyondAsciiStayAsTheyAre) {
    Locale const locale("C");
    ASSERT_TRUE(locale.known);
    EXPECT_EQ(titleFor("\u00e9DITEUR \U0001f3acCUT"), "\u00e9diteur \U0001f3accut");
}

TEST_F(Identity, ThePartnerIsTheTitleWithoutBlanks) {
    EXPECT_EQ(taggedFor("ABC DEF", L"http://h.test/"), "http://h.test/?utm_source=AbcDef&utm_medium=partner");
    EXPECT_EQ(taggedFor("  a  b ", L"x"), "x?utm_source=AB&utm_medium=partner");
    EXPECT_EQ(taggedFor("", L"x"), "x?utm_source=&utm_medium=partner");
}

TEST_F(Identity, AnEmptyAddressGetsNoQuestionMark) {
    EXPECT_EQ(taggedFor("zq", L""), "utm_source=Zq&utm_medium=partner");
}

TEST_F(Identity, AQueryThatIsThereAlreadyIsNotLookedAt) {
    EXPECT_EQ(taggedFor("zq", L"http://h.test/?a=1"), "http://h.test/?a=1?utm_source=Zq&utm_medium=partner");
}

TEST_F(Identity, NothingInThePartnersNameIsEncoded) {
    EXPECT_EQ(taggedFor("a&b=c%/\u00e9", L"x"), "x?utm_source=A&b=c%/\u00e9&utm_medium=partner");
}

} // namespace
} // namespace tarn7_tests
