#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

class Locations : public FrameQuarryTest {
protected:
    static RemoteAsset found() {
        return assetWith(
            R"("thumbnail_url":"https://m.test/t/1.jpg?x=1&y","preview_url":"http://m.test/p/1.mp4")");
    }
    std::string remote(RemoteAsset const& asset, int kind) {
        return utf8(resource.getRemoteLocation(asset, static_cast<TestResource::eMediaType>(kind)));
    }
    std::string local(std::string_view id, std::string_view extension) {
        RemoteAsset asset;
        asset.id = wide(id);
        asset.mediaExtension = wide(extension);
        return utf8(resource.getLocalMediaLocation(asset, TestResource::eFullMedia));
    }
};

TEST_F(Locations, TheExtensionIsNotThatOfTheAssets) {
    EXPECT_EQ(utf8(resource.getFileExtension()), "mov");
    EXPECT_EQ(utf8(assetOf(itemWith("")).mediaExtension), "mp4");
    EXPECT_FALSE(resource.handlesFile(L"a." + resource.getFileExtension()));
}

TEST_F(Locations, TheAddressesAreThoseOfTheServiceAsTheyStand) {
    EXPECT_EQ(remote(found(), TestResource::eThumbnail), "https://m.test/t/1.jpg?x=1&y");
    EXPECT_EQ(remote(found(), TestResource::ePreview), "http://m.test/p/1.mp4");
}

TEST_F(Locations, EveryKindButTheThumbnailIsThePreview) {
    for (int const kind : {1, 2, 3, 9, -1}) {
        EXPECT_EQ(remote(found(), kind), "http://m.test/p/1.mp4") << kind;
    }
}

TEST_F(Locations, WhatTheItemDoesNotHoldIsEmpty) {
    EXPECT_EQ(remote(assetWith(R"("preview_url":"https://m.test/1.mp4")"), 0), "");
    EXPECT_EQ(remote(assetWith(R"("thumbnail_url":"https://m.test/1.jpg")"), 2), "");
    EXPECT_EQ(remote(assetWith(R"("preview_url":7,"thumbnail_url":[])"), 2), "");
}

TEST_F(Locations, AnAssetWithoutAnItemHasNone) {
    RemoteAsset asset;
    EXPECT_EQ(remote(asset, 0), "");
    EXPECT_EQ(remote(asset, 2), "");
    asset.payload = Zq::makeShared<fake::Image>();
    EXPECT_EQ(remote(asset, 2), "");
}

TEST_F(Locations, TheLocalFileIsNamedByTheIdInTheFolderOfTheService) {
    EXPECT_EQ(local("123", "mp4"), "/media/FrameQuarry/123.mp4");
    EXPECT_EQ(local("-1", "mp4"), "/media/FrameQuarry/-1.mp4");
    EXPECT_EQ(local("123456789012", "mov"), "/media/FrameQuarry/123456789012.mov");
}

TEST_F(Locations, HostileNamesStayInTheFolder) {
    std::vector<std::pair<std::string, std::string>> const names = {{"../../etc/passwd", "mp4"},
                                                                    {"..", ""},
                                                                    {"", ""},
                                                                    {"1", "../../../x"},
                                                                    {"..\\x", "mp4"},
                                                                    {"a/b", "c/d"},
                                                                    {"1\n2", "m"},
                                                                    {"CON", ""},
                                                                    {std::string(5000, 'x'), "mp4"}};
    for (auto const& [id, extension] : names) {
        std::string const path = local(id, extension);
        std::string const folder = "/media/FrameQuarry/";
        ASSERT_TRUE(path.starts_with(folder)) << path;
        std::string const name = path.substr(folder.size());
        EXPECT_FALSE(name.empty());
        EXPECT_LE(name.size(), 255U);
        EXPECT_EQ(name.find_first_of("/\\\r\n"), std::string::npos) << path;
        EXPECT_EQ(name.find(".."), std::string::npos) << path;
    }
}

TEST_F(Locations, OtherKindsAreTheBasesToPlace) {
    RemoteAsset asset = found();
    asset.proxyLocation = resource.makeVirtualPath(resource.getRemoteLocation(asset, TestResource::ePreview));
    EXPECT_EQ(utf8(resource.getLocalMediaLocation(asset, TestResource::ePreview)),
              "/cache/partial/1.partial");
    EXPECT_EQ(utf8(resource.getLocalMediaLocation(asset, TestResource::eThumbnail)), "");
    (void)host.cache.store(resource.getRemoteLocation(asset, TestResource::eThumbnail), "picture", 7);
    EXPECT_EQ(utf8(resource.getLocalMediaLocation(asset, TestResource::eThumbnail)),
              "/cache/https://m.test/t/1.jpg?x=1&y");
}

TEST_F(Locations, TheThumbnailComesFromItsAddress) {
    host.network.answerWith(std::string("picture"));
    EXPECT_TRUE(resource.getThumbnail(found()));
    ASSERT_EQ(host.network.requestCount(), 1U);
    EXPECT_EQ(host.network.lastRequest().server, "m.test");
    EXPECT_EQ(host.network.lastRequest().path, "/t/1.jpg?x=1&y");
    EXPECT_TRUE(resource.getThumbnail(found()));
    EXPECT_EQ(host.network.requestCount(), 1U);
}

class Provider : public FrameQuarryTest {};

TEST_F(Provider, FilesThatEndInMp4AreHandled) {
    for (wchar_t const* const path :
         {L"Virtual:FQ https://m.test/p/1.mp4", L"/a/b.mp4", L".mp4", L"a.mov.mp4"}) {
        EXPECT_TRUE(resource.handlesFile(path)) << utf8(path);
    }
}

TEST_F(Provider, OtherEndingsAreNot) {
    for (wchar_t const* const path : {L"a.mov", L".mov", L"a.MP4", L"a.Mp4", L"a.mP4", L"a.mp4 ", L"a.mp4?x",
                                      L"amp4", L"a.mp", L"a.mp4.part", L"a.m4v"}) {
        EXPECT_FALSE(resource.handlesFile(path)) << utf8(path);
    }
}

TEST_F(Provider, PathsBelowFourCharactersAreNot) {
    for (wchar_t const* const path : {L"", L"4", L"p4", L"mp4", L".mp"}) {
        EXPECT_FALSE(resource.handlesFile(path)) << utf8(path);
    }
}

TEST_F(Provider, ItsNameIsTheShortNameAndBeginsEveryVirtualPath) {
    EXPECT_EQ(utf8(resource.getProviderName()), "FQ");
    EXPECT_EQ(utf8(resource.makeVirtualPath(L"https://m.test/a b.mp4?q")),
              "Virtual:FQ https://m.test/a b.mp4?q");
    EXPECT_EQ(utf8(resource.makeVirtualPath(L"")), "Virtual:FQ ");
}

TEST_F(Provider, AMappedPathIsThePath) {
    for (wchar_t const* const path : {L"", L"/a/b.mp4", L"Virtual:FQ https://m.test/../x"}) {
        EXPECT_EQ(resource.mapPath(path), path);
    }
}

TEST_F(Provider, ItsFilesAreRemoteNotWritableAndNotTemporary) {
    EXPECT_TRUE(resource.isRemote());
    EXPECT_FALSE(resource.isWritable());
    EXPECT_FALSE(resource.isTemporary());
    resource.handleFolderChange();
    EXPECT_EQ(host.files.providers.size(), 1U);
}

} // namespace
} // namespace framequarry_tests
