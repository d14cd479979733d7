#include <gtest/gtest.h>

#include "host/text/Unicode.h"
#include "tests/fake_host/FakeHost.h"
#include "tests/repository/DefaultAsset.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

// What a repository answers that overrides nothing it need not.
class Defaults : public testing::Test {
protected:
    fake::Host host;
    TestRepository repository;
    iMediaFileRepository& contract = repository;
};

TEST_F(Defaults, ANewDescriptionHasItsDefaults) {
    RepositoryDescription const description = contract.newDescription();
    EXPECT_TRUE(description.name.isEmpty());
    EXPECT_TRUE(description.summary.isEmpty());
    EXPECT_TRUE(description.legalNotice.isEmpty());
    EXPECT_TRUE(description.shortName.isEmpty());
    EXPECT_TRUE(description.category.isEmpty());
    EXPECT_TRUE(description.webLink.isEmpty());
    EXPECT_TRUE(description.supportLink.isEmpty());
    EXPECT_TRUE(description.connection.server.isEmpty());
    EXPECT_EQ(description.connection.secure, 0);
    EXPECT_EQ(description.resourceId, 0);
    EXPECT_EQ(description.version, 1);
    EXPECT_EQ(description.capabilities, 0);
    EXPECT_EQ(description.order, 0);
    EXPECT_TRUE(description.logo.isEmpty());
    EXPECT_FLOAT_EQ(description.thumbnailAspect, 16.0F / 9.0F);
}

TEST_F(Defaults, TheNameIsThatOfTheDescriptionEachTime) {
    class Renamed : public TestRepository {
    public:
        RepositoryDescription getDescription() const override {
            RepositoryDescription description;
            description.name = name;
            return description;
        }
        WideString name = L"First";
    } renamed;
    EXPECT_EQ(renamed.getName(), L"First");
    renamed.name = L"Second";
    EXPECT_EQ(renamed.getName(), L"Second");
}

TEST_F(Defaults, TheOnlyMediaKindIsZero) {
    EXPECT_EQ(contract.getMediaKinds(), (LightweightVector<std::int32_t>{0}));
}

TEST_F(Defaults, TheOnlyRootIsTheEmptyPath) {
    EXPECT_EQ(contract.getRootPaths(), (LightweightVector<WideString>{WideString()}));
    EXPECT_TRUE(contract.getSecondaryRoots().empty());
}

TEST_F(Defaults, TheRootAssetIsADefaultOne) {
    expectDefaults(contract.getRootAsset());
}

TEST_F(Defaults, ListsAreEmpty) {
    EXPECT_TRUE(contract.getCollections().empty());
    EXPECT_TRUE(contract.getSuggestions().empty());
    EXPECT_TRUE(contract.getPlaces().empty());
}

TEST_F(Defaults, TestsSayNoButThatTheRepositoryIsOffered) {
    EXPECT_EQ(contract.getBrowseStyle(), 0);
    EXPECT_FALSE(contract.hasFolders());
    EXPECT_FALSE(contract.canUpload());
    EXPECT_FALSE(contract.canRename());
    EXPECT_EQ(contract.isOffered(), 1);
}

TEST_F(Defaults, TextsAreEmpty) {
    EXPECT_TRUE(contract.getStatusText().isEmpty());
    EXPECT_TRUE(contract.getHelpText().isEmpty());
}

TEST_F(Defaults, AnAccountChangeIsTakenWithoutAWord) {
    repository.signedInUser = L"ada";
    contract.handleAccountChange();
    EXPECT_EQ(repository.signedInUser, L"ada");
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Defaults, AnAttributeIsReadFromTheLogAttributes) {
    RemoteAsset asset;
    LogAttribute const name(LogAttribute::eName);
    asset.logAttributes.add(name, WideString(L"Mer \u00e9t\u00e9 \xd83d\xde00"));
    EXPECT_EQ(contract.getAttribute(asset, name), L"Mer \u00e9t\u00e9 \xd83d\xde00");
}

TEST_F(Defaults, AnAttributeThatTheAssetDoesNotHoldIsEmpty) {
    EXPECT_TRUE(contract.getAttribute(RemoteAsset(), LogAttribute(LogAttribute::eName)).isEmpty());
}

TEST_F(Defaults, ADisplayColumnIsNoAttribute) {
    RemoteAsset asset;
    LogAttribute const price(LogAttribute::ePrice);
    asset.displayAttributes.add(price, NarrowString("3"));
    EXPECT_TRUE(contract.getAttribute(asset, price).isEmpty());
}

TEST_F(Defaults, AnAssetIsPurchasedWhenItsIdIsOwned) {
    repository.purchasedIds = {L"12", L"345"};
    EXPECT_TRUE(repository.isPurchased(assetWithId(L"345")));
    EXPECT_FALSE(repository.isPurchased(assetWithId(L"34")));
    EXPECT_FALSE(repository.isPurchased(assetWithId(L"0345")));
    EXPECT_FALSE(repository.isPurchased(RemoteAsset()));
}

} // namespace
} // namespace repository_tests
