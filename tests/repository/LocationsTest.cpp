#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

using Base = MediaFileRepositoryBase;

class Locations : public testing::Test {
protected:
    Locations() { repository.thumbInit(); }

    fake::Host host;
    TestRepository repository;
    RemoteAsset asset = assetWithId(L"000000123");
};

TEST_F(Locations, TheThumbnailLiesInTheCacheOnceItWasFetched) {
    host.network.answerWith("picture");
    EXPECT_TRUE(repository.getLocalMediaLocation(asset, Base::eThumbnail).isEmpty());
    WideString const path = repository.downloadThumbnail(asset);
    ASSERT_FALSE(path.isEmpty());
    EXPECT_EQ(repository.getLocalMediaLocation(asset, Base::eThumbnail), path);
}

TEST_F(Locations, AnAssetWithoutAnAddressHasNoThumbnail) {
    repository.remote = [](RemoteAsset const&, Base::eMediaType) { return WideString(); };
    EXPECT_TRUE(repository.getLocalMediaLocation(asset, Base::eThumbnail).isEmpty());
}

TEST_F(Locations, ThePreviewLiesInThePartialFolderUnderItsBaseName) {
    EXPECT_EQ(repository.getLocalMediaLocation(asset, Base::ePreview), L"/cache/partial/000000123.partial");
}

TEST_F(Locations, ThePreviewThatTheAssetNamesComesFirst) {
    asset.proxyLocation = L"Virtual:T7 https://media.test/preview/000000777.mov?token=1/2";
    EXPECT_EQ(repository.getLocalMediaLocation(asset, Base::ePreview), L"/cache/partial/000000777.partial");
}

TEST_F(Locations, APreviewWithoutAFolderOrAnAddressHasNoPlace) {
    repository.remote = [](RemoteAsset const&, Base::eMediaType) { return WideString(L"nonsense"); };
    EXPECT_TRUE(repository.getLocalMediaLocation(asset, Base::ePreview).isEmpty());
    repository.remote = [](RemoteAsset const&, Base::eMediaType) {
        return WideString(L"https://media.test/1.mov");
    };
    repository.partialFolder.clear();
    EXPECT_TRUE(repository.getLocalMediaLocation(asset, Base::ePreview).isEmpty());
}

TEST_F(Locations, AHostilePreviewNameStaysInThePartialFolder) {
    for (wchar_t const* bad : {L"https://media.test/../../etc/passwd", L"https://media.test/a\\..\\..\\b.mov",
                               L"https://media.test/..", L"https://media.test/a/..%2f..%2fb.mov",
                               L"https://media.test/C:evil.mov"}) {
        repository.remote = [bad](RemoteAsset const&, Base::eMediaType) { return WideString(bad); };
        WideString const path = repository.getLocalMediaLocation(asset, Base::ePreview);
        ASSERT_TRUE(path.startsWith(L"/cache/partial/")) << toUTF8(path).c_str();
        std::wstring_view const name = path.view().substr(std::wstring_view(L"/cache/partial/").size());
        EXPECT_EQ(name.find_first_of(L"/\\"), std::wstring_view::npos) << toUTF8(path).c_str();
        EXPECT_TRUE(path.endsWith(L".partial")) << toUTF8(path).c_str();
    }
}

TEST_F(Locations, TheFullMediaIsTheResourcesToPlace) {
    EXPECT_TRUE(repository.getLocalMediaLocation(asset, Base::eFullMedia).isEmpty());
}

TEST_F(Locations, AnAddressIsTakenApart) {
    ParsedURI const plain = repository.parseURI(L"https://media.test:8443/a/b.mov?q");
    EXPECT_TRUE(plain.valid());
    EXPECT_EQ(plain.server, L"media.test:8443");
    EXPECT_EQ(plain.path, L"/a/b.mov?q");
    EXPECT_EQ(plain.secure, 1);
    ParsedURI const path = repository.parseURI(L"Virtual:T7 http://media.test/a.mov");
    EXPECT_TRUE(path.valid());
    EXPECT_EQ(path.server, L"media.test");
    EXPECT_EQ(path.secure, 0);
    EXPECT_FALSE(repository.parseURI(L"").valid());
    EXPECT_FALSE(repository.parseURI(L"ftp://media.test/a").valid());
}

TEST_F(Locations, ARemoteAddressBecomesAVirtualPathOfTheProvider) {
    EXPECT_TRUE(repository.remoteToVirtualLocal(L"https://media.test/a.mov").isEmpty());
    TestProvider provider;
    repository.providerPointer = &provider;
    WideString const path = repository.remoteToVirtualLocal(L"https://media.test/a.mov");
    EXPECT_EQ(path, L"Virtual:T7 https://media.test/a.mov");
    EXPECT_EQ(repository.parseURI(path).server, L"media.test");
}

} // namespace
} // namespace repository_tests
