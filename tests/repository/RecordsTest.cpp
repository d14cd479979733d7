#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "repository/RepositoryDescription.h"
#include "repository/SearchRecords.h"
#include "repository/iFileProvider.h"
#include "tests/repository/DefaultAsset.h"

namespace repository_tests {
namespace {

struct Payload : iObject {
    explicit Payload(bool& gone) : gone_(gone) {}
    ~Payload() override { gone_ = true; }
    bool& gone_;
};

// True when each thing lies behind the one before it.
bool inOrder(std::vector<void const*> const& things) {
    return std::ranges::is_sorted(things, std::less_equal<>()) &&
           std::ranges::adjacent_find(things) == things.end();
}

RemoteAsset filled(bool& payloadGone) {
    RemoteAsset asset;
    asset.stamp.value = 7;
    asset.assetKind = 2;
    asset.payload = Zq::makeShared<Payload>(payloadGone);
    asset.id = L"123";
    asset.cookie.kind = {1, 2, 3};
    asset.status = 5;
    asset.displayAttributes.add(LogAttribute(LogAttribute::ePrice), NarrowString("3"));
    asset.logAttributes.add(LogAttribute(LogAttribute::eName), NarrowString("Sea"));
    asset.auxiliaryText = L"aux";
    asset.mediaLocation = L"/media/123.mov";
    asset.mediaSize = 1000;
    asset.mediaExtension = L"mov";
    asset.proxyLocation = L"Virtual:T7 https://media.test/123.mov";
    asset.proxySize = 10;
    asset.proxyExtension = L"mov";
    asset.frameRate = static_cast<Zq::FrameRate>(3);
    asset.auxiliary1 = 11;
    asset.auxiliary2 = 12;
    asset.extent = {1920, 1080};
    asset.videoChannels = 1;
    asset.audioChannels = 2;
    return asset;
}

void expectSame(RemoteAsset const& a, RemoteAsset const& b) {
    EXPECT_EQ(a.stamp, b.stamp);
    EXPECT_EQ(a.assetKind, b.assetKind);
    EXPECT_EQ(a.payload, b.payload);
    EXPECT_EQ(a.id, b.id);
    EXPECT_EQ(a.cookie, b.cookie);
    EXPECT_EQ(a.status, b.status);
    LogAttribute const price(LogAttribute::ePrice);
    EXPECT_EQ(a.displayAttributes.find(price), b.displayAttributes.find(price));
    LogAttribute const name(LogAttribute::eName);
    EXPECT_EQ(a.logAttributes.find(name), b.logAttributes.find(name));
    EXPECT_EQ(a.auxiliaryText, b.auxiliaryText);
    EXPECT_EQ(a.mediaLocation, b.mediaLocation);
    EXPECT_EQ(a.mediaSize, b.mediaSize);
    EXPECT_EQ(a.mediaExtension, b.mediaExtension);
    EXPECT_EQ(a.proxyLocation, b.proxyLocation);
    EXPECT_EQ(a.proxySize, b.proxySize);
    EXPECT_EQ(a.proxyExtension, b.proxyExtension);
    EXPECT_EQ(a.frameRate, b.frameRate);
    EXPECT_EQ(a.auxiliary1, b.auxiliary1);
    EXPECT_EQ(a.auxiliary2, b.auxiliary2);
    EXPECT_EQ(a.extent, b.extent);
    EXPECT_EQ(a.videoChannels, b.videoChannels);
    EXPECT_EQ(a.audioChannels, b.audioChannels);
}

TEST(RemoteAsset, ADefaultOneHasItsDefaults) {
    expectDefaults(RemoteAsset());
}

TEST(RemoteAsset, ACopyHasEveryMemberAndSharesThePayload) {
    bool gone = false;
    RemoteAsset const original = filled(gone);
    RemoteAsset const copy(original);
    expectSame(copy, original);
    EXPECT_EQ(copy.payload.get(), original.payload.get());
}

TEST(RemoteAsset, MovingCopiesAndLeavesTheSourceWhole) {
    bool gone = false;
    RemoteAsset source = filled(gone);
    RemoteAsset const moved(std::move(source));
    expectSame(moved, source);
    EXPECT_EQ(source.id, L"123");
    EXPECT_NE(source.payload, nullptr);
}

TEST(RemoteAsset, AssignmentTakesEveryMember) {
    bool gone = false;
    RemoteAsset const original = filled(gone);
    RemoteAsset assigned;
    assigned = original;
    expectSame(assigned, original);
    assigned = RemoteAsset();
    expectDefaults(assigned);
}

TEST(RemoteAsset, ThePayloadLivesAsLongAsAnyOfItsAssets) {
    bool gone = false;
    auto first = std::make_unique<RemoteAsset>(filled(gone));
    auto second = std::make_unique<RemoteAsset>(*first);
    first.reset();
    EXPECT_FALSE(gone);
    second.reset();
    EXPECT_TRUE(gone);
}

TEST(RemoteAsset, AssigningAStampSetsTheStampAlone) {
    bool gone = false;
    RemoteAsset asset = filled(gone);
    Identified& identified = asset;
    identified = IdStamp{99};
    EXPECT_EQ(asset.getStamp(), IdStamp{99});
    EXPECT_EQ(asset.stamp.value, 99U);
    EXPECT_EQ(asset.id, L"123");
}

TEST(RemoteAsset, ItsMembersLieInTheirOrder) {
    RemoteAsset const a;
    EXPECT_TRUE(inOrder({&a.stamp,
                         &a.assetKind,
                         &a.payload,
                         &a.id,
                         &a.cookie,
                         &a.status,
                         &a.displayAttributes,
                         &a.logAttributes,
                         &a.auxiliaryText,
                         &a.mediaLocation,
                         &a.mediaSize,
                         &a.mediaExtension,
                         &a.proxyLocation,
                         &a.proxySize,
                         &a.proxyExtension,
                         &a.frameRate,
                         &a.auxiliary1,
                         &a.auxiliary2,
                         &a.extent,
                         &a.videoChannels,
                         &a.audioChannels}));
}

TEST(RemoteAsset, TheMembersHaveTheirWidths) {
    EXPECT_EQ(sizeof RemoteAsset::assetKind, 4U);
    EXPECT_EQ(sizeof RemoteAsset::status, 4U);
    EXPECT_EQ(sizeof RemoteAsset::frameRate, 4U);
    EXPECT_EQ(sizeof RemoteAsset::mediaSize, 8U);
    EXPECT_EQ(sizeof RemoteAsset::auxiliary2, 8U);
    EXPECT_EQ(sizeof RemoteAsset::proxySize, 8U);
    EXPECT_EQ(sizeof RemoteAsset::auxiliary1, 8U);
    EXPECT_EQ(sizeof RemoteAsset::videoChannels, 1U);
    EXPECT_EQ(sizeof RemoteAsset::audioChannels, 1U);
}

TEST(SearchRecords, ResultsAreEmptyAtFirst) {
    SearchResults const results;
    EXPECT_TRUE(results.assets.empty());
    EXPECT_EQ(results.pageCount, 0);
    EXPECT_EQ(results.totalCount, 0);
    EXPECT_EQ(results.firstIndex, 0);
    EXPECT_TRUE(results.nextPage.isEmpty());
    EXPECT_TRUE(results.message.isEmpty());
    EXPECT_EQ(results.status, 0);
    EXPECT_TRUE(inOrder({&results.assets, &results.pageCount, &results.totalCount, &results.firstIndex,
                         &results.nextPage, &results.message, &results.status}));
    EXPECT_EQ(sizeof results.pageCount, 2U);
    EXPECT_EQ(sizeof results.totalCount, 2U);
    EXPECT_EQ(sizeof results.firstIndex, 2U);
    EXPECT_EQ(sizeof results.status, 4U);
}

TEST(SearchRecords, AQueryBeginsAtTheFirstPage) {
    EXPECT_EQ(SearchQuery().page, 1);
    EXPECT_EQ(BrowseQuery().page, 1);
    EXPECT_TRUE(SearchQuery().words.isEmpty());
    EXPECT_TRUE(BrowseQuery().path.isEmpty());
    EXPECT_EQ(sizeof SearchQuery::page, 2U);
    EXPECT_EQ(sizeof SearchQuery::pageSize, 2U);
}

TEST(RepositoryDescription, ItsMembersLieInTheirOrder) {
    RepositoryDescription const d;
    EXPECT_TRUE(inOrder({&d.name, &d.summary, &d.legalNotice, &d.shortName, &d.category, &d.webLink,
                         &d.supportLink, &d.connection, &d.resourceId, &d.version, &d.capabilities, &d.order,
                         &d.logo, &d.thumbnailAspect}));
    EXPECT_EQ(sizeof d.resourceId, 4U);
    EXPECT_EQ(sizeof d.version, 4U);
    EXPECT_EQ(sizeof d.capabilities, 4U);
    EXPECT_EQ(sizeof d.order, 4U);
    EXPECT_EQ(sizeof d.thumbnailAspect, 4U);
}

TEST(HTTPConnectionInfo, AllIsEmptyAtFirstAndInOrder) {
    HTTPConnectionInfo const info;
    EXPECT_TRUE(info.server.isEmpty());
    EXPECT_EQ(info.port, 0);
    EXPECT_TRUE(info.user.isEmpty());
    EXPECT_TRUE(info.realm.isEmpty());
    EXPECT_TRUE(info.headers.empty());
    EXPECT_TRUE(info.userAgent.isEmpty());
    EXPECT_EQ(info.secure, 0);
    EXPECT_TRUE(inOrder(
        {&info.server, &info.port, &info.user, &info.realm, &info.headers, &info.userAgent, &info.secure}));
    EXPECT_EQ(sizeof info.port, 4U);
    EXPECT_EQ(sizeof info.secure, 1U);
}

TEST(FileInfo, ItsMembersLieInTheirOrder) {
    FileInfo const info;
    EXPECT_EQ(info.kind, 1);
    EXPECT_TRUE(inOrder({&info.path, &info.kind, &info.size, &info.created, &info.modified}));
    EXPECT_EQ(sizeof info.kind, 4U);
    EXPECT_EQ(sizeof info.size, 8U);
    EXPECT_EQ(sizeof info.created, 8U);
    EXPECT_EQ(sizeof info.modified, 8U);
}

} // namespace
} // namespace repository_tests
