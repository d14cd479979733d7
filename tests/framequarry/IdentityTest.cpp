#include "tests/framequarry/FrameQuarryFixture.h"
#include "tests/repository/DefaultAsset.h"

namespace framequarry_tests {
namespace {

class Identity : public FrameQuarryTest {};

TEST_F(Identity, TheDescriptionHasItsValuesMemberByMember) {
    RepositoryDescription const description = resource.getDescription();
    EXPECT_EQ(utf8(description.name), "FrameQuarry");
    EXPECT_EQ(utf8(description.summary),
              "<p>FrameQuarry is the first place creators go to find amazing content for a fraction of the "
              "usual cost</p>");
    EXPECT_EQ(
        utf8(description.legalNotice),
        R"(<p><small>All FrameQuarry clips are subject to the )"
        R"(<a href="https://www.framequarry.example/terms-of-service">Terms of Service</a></small></p>)");
    EXPECT_EQ(utf8(description.shortName), "FQ");
    EXPECT_EQ(utf8(description.webLink), "http://www.framequarry.example/");
    EXPECT_EQ(description.resourceId, 13337);
    EXPECT_EQ(description.capabilities, 1);
    EXPECT_EQ(utf8(description.logo), "fq.png");
}

TEST_F(Identity, EveryOtherMemberKeepsItsDefault) {
    RepositoryDescription const description = resource.getDescription();
    EXPECT_TRUE(description.category.isEmpty());
    EXPECT_TRUE(description.supportLink.isEmpty());
    EXPECT_EQ(description.version, 1);
    EXPECT_EQ(description.order, 0);
    EXPECT_EQ(description.thumbnailAspect, 16.0F / 9.0F);
}

TEST_F(Identity, TheConnectionLeadsToTheSecureServerOfTheInterfaceAndNotToTheSite) {
    HTTPConnectionInfo const connection = resource.getDescription().connection;
    EXPECT_EQ(utf8(connection.server), "api.framequarry.example");
    EXPECT_EQ(resource.getDescription().webLink.view().find(connection.server.view()),
              std::wstring_view::npos);
    EXPECT_EQ(connection.secure, 1);
    EXPECT_EQ(connection.port, 0);
    EXPECT_TRUE(connection.user.isEmpty());
    EXPECT_TRUE(connection.realm.isEmpty());
    EXPECT_TRUE(connection.headers.empty());
    EXPECT_TRUE(connection.userAgent.isEmpty());
}

TEST_F(Identity, NoLinkNamesThePartner) {
    host.files.hostName = L"ABC DEF";
    RepositoryDescription const description = resource.getDescription();
    for (WideString const& text : {description.webLink, description.legalNotice, description.summary}) {
        EXPECT_EQ(utf8(text).find("utm_"), std::string::npos) << utf8(text);
        EXPECT_EQ(utf8(text).find("Abc"), std::string::npos) << utf8(text);
    }
}

TEST_F(Identity, TheUserIsWhomeverTheBaseHolds) {
    resource.signedInUser = L"ada";
    EXPECT_EQ(utf8(resource.getDescription().connection.user), "ada");
}

TEST_F(Identity, TheNameAndTheShortNameAreTwo) {
    EXPECT_EQ(utf8(resource.getName()), "FrameQuarry");
    EXPECT_EQ(utf8(resource.getShortName()), "FQ");
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
    EXPECT_EQ(utf8(renamed.getName()), "Other");
    EXPECT_EQ(utf8(renamed.getShortName()), "FQ");
    EXPECT_EQ(utf8(renamed.getProviderName()), "FQ");
    EXPECT_EQ(utf8(renamed.getLocalMediaLocation(assetWith(""), TestResource::eFullMedia)),
              "/media/FrameQuarry/123.mp4");
}

TEST_F(Identity, TheFixedAnswersAreThoseOfEveryRepository) {
    EXPECT_EQ(resource.getMediaKinds(), LightweightVector<std::int32_t>{0});
    EXPECT_EQ(resource.getRootPaths(), LightweightVector<WideString>{L""});
    EXPECT_TRUE(resource.getSecondaryRoots().empty());
    EXPECT_TRUE(resource.getCollections().empty());
    EXPECT_TRUE(resource.getSuggestions().empty());
    EXPECT_TRUE(resource.getPlaces().empty());
    EXPECT_EQ(resource.getBrowseStyle(), 0);
    EXPECT_FALSE(resource.hasFolders());
    EXPECT_FALSE(resource.canUpload());
    EXPECT_FALSE(resource.canRename());
    EXPECT_EQ(resource.isOffered(), 1);
    repository_tests::expectDefaults(resource.getRootAsset());
}

TEST_F(Identity, TheHostShowsNoFilters) {
    EXPECT_TRUE(resource.getSearchOptions().empty());
    resource.signedInUser = L"ada";
    connect();
    EXPECT_TRUE(resource.getSearchOptions().empty());
}

} // namespace
} // namespace framequarry_tests
