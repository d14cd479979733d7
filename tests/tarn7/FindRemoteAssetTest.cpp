#include "tests/repository/DefaultAsset.h"
#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class FindRemoteAsset : public Tarn7Test {
protected:
    // An edit of the project, made by nobody in particular.
    Cookie newEdit() {
        EditModifier const edit = EditManager::makeNewClip(1, 2, 10, Zq::FrameRate::f29_97, {});
        LogAttributeMap attributes;
        attributes.add(LogAttribute(LogAttribute::eName), NarrowString("Sea"));
        attributes.add(LogAttribute(LogAttribute::ePrice), NarrowString("$79"));
        edit->setLogAttributes(attributes);
        ShotVideoMetadata picture;
        picture.width = 1920;
        picture.height = 1080;
        picture.setDataFormat(Zq::Image::formatFromCode("avc1"));
        edit->setVideoMetadata(picture, false);
        return edit->getCookie();
    }
    Cookie newEditOf(wchar_t const* repository, wchar_t const* id) {
        Cookie const cookie = newEdit();
        ExtIDMgr::instance().setAssociatedID(cookie, repository, id);
        return cookie;
    }
    static std::string column(RemoteAsset const& asset, LogAttribute::eType type) {
        return std::string(asset.displayAttributes.find(LogAttribute(type)).view());
    }
};

TEST_F(FindRemoteAsset, ACookieThatOpensNothingGivesADefaultAsset) {
    repository_tests::expectDefaults(resource.findRemoteAsset({}));
    Cookie unknown;
    unknown.uuid.bytes[3] = 9;
    repository_tests::expectDefaults(resource.findRemoteAsset(unknown));
    EXPECT_TRUE(host.externalIds.record.calls().empty());
}

TEST_F(FindRemoteAsset, AnIdThatOutlivedItsEditGivesADefaultAsset) {
    Cookie const cookie = newEditOf(L"T7", L"123");
    host.edits.remove(cookie);
    repository_tests::expectDefaults(resource.findRemoteAsset(cookie));
}

TEST_F(FindRemoteAsset, AnEditOfAnotherRepositoryGivesADefaultAsset) {
    repository_tests::expectDefaults(resource.findRemoteAsset(newEdit()));
    repository_tests::expectDefaults(resource.findRemoteAsset(newEditOf(L"FQ", L"123")));
    repository_tests::expectDefaults(resource.findRemoteAsset(newEditOf(L"T7", L"")));
}

TEST_F(FindRemoteAsset, TheAssetHasTheIdAndTheEditsOwnCookie) {
    Cookie const cookie = newEditOf(L"T7", L"123");
    RemoteAsset const asset = resource.findRemoteAsset(cookie);
    EXPECT_EQ(utf8(asset.id), "123");
    EXPECT_EQ(asset.cookie, cookie);
}

TEST_F(FindRemoteAsset, TheColumnsAreNameFormatRateAndPriceInThisOrder) {
    Cookie const cookie = newEditOf(L"T7", L"123");
    EditModifier const edit(host.edits.open(cookie));
    RemoteAsset const asset = resource.findRemoteAsset(cookie);
    std::vector<int> types;
    for (LogAttributeMap::Entry const& entry : asset.displayAttributes.entries()) {
        types.push_back(entry.type);
    }
    EXPECT_EQ(types, (std::vector<int>{1, 45, 18, 59}));
    EXPECT_EQ(column(asset, LogAttribute::eName), "Sea");
    EXPECT_EQ(column(asset, LogAttribute::eFormat), "H.264 1920x1080");
    EXPECT_EQ(column(asset, LogAttribute::eFrameRate), "29.97");
    EXPECT_EQ(column(asset, LogAttribute::ePrice), "$79");
}

TEST_F(FindRemoteAsset, TheFormatTellsTheBitRateOnceTheEditWasAnalysed) {
    Cookie const cookie = newEditOf(L"T7", L"123");
    host.files.disk->files[L"/media/sea.mov"] = "media";
    EditModifier const edit(host.edits.open(cookie));
    edit->setPreviewLocation(L"/media/sea.mov");
    ASSERT_TRUE(host.edits.analyse(*edit.open()));
    EXPECT_EQ(column(resource.findRemoteAsset(cookie), LogAttribute::eFormat), "H.264 1920x1080, 8 Mbit/s");
}

TEST_F(FindRemoteAsset, WhatTheEditDoesNotKnowIsAnEmptyColumn) {
    EditModifier const edit = EditManager::makeNewClip(1, 2, 10, Zq::FrameRate::unknown, {});
    Cookie const cookie = edit->getCookie();
    ExtIDMgr::instance().setAssociatedID(cookie, L"T7", L"123");
    RemoteAsset const asset = resource.findRemoteAsset(cookie);
    EXPECT_EQ(asset.displayAttributes.entries().size(), 4U);
    for (LogAttributeMap::Entry const& entry : asset.displayAttributes.entries()) {
        EXPECT_TRUE(entry.value.isEmpty()) << entry.type;
    }
}

TEST_F(FindRemoteAsset, EverythingElseKeepsItsDefault) {
    RemoteAsset asset = resource.findRemoteAsset(newEditOf(L"T7", L"123"));
    asset.id.clear();
    asset.cookie = {};
    asset.displayAttributes = {};
    repository_tests::expectDefaults(asset);
}

TEST_F(FindRemoteAsset, TheEditIsLetGoAgainAndUnchanged) {
    Cookie const cookie = newEditOf(L"T7", L"123");
    host.edits.record.forget();
    (void)resource.findRemoteAsset(cookie);
    std::vector<std::string> const calls = host.edits.record.calls();
    EXPECT_EQ(host.edits.stateOf(cookie).openings, 0);
    EXPECT_TRUE(std::ranges::none_of(calls, [](std::string const& call) { return call.starts_with("set"); }));
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(FindRemoteAsset, AnAssetThatBecameAnEditIsFoundAgain) {
    RemoteAsset asset;
    asset.id = L"123";
    asset.payload = parsed(R"({"ox":1280,"oy":720,"codg":"prores","dur":"1000"})");
    asset.frameRate = Zq::FrameRate::f25;
    asset.logAttributes.add(LogAttribute(LogAttribute::eName), NarrowString("Sea"));
    EditModifier const edit = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
    ASSERT_FALSE(edit.isEmpty());
    RemoteAsset const found = resource.findRemoteAsset(edit->getCookie());
    EXPECT_EQ(utf8(found.id), "123");
    EXPECT_EQ(column(found, LogAttribute::eName), "Sea");
    EXPECT_EQ(column(found, LogAttribute::eFormat), "ProRes 422 HQ 1280x720");
    EXPECT_EQ(column(found, LogAttribute::eFrameRate), "25");
    EXPECT_EQ(resource.findLocalItem(found), found.cookie);
}

} // namespace
} // namespace tarn7_tests
