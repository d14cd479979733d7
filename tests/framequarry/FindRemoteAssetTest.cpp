#include "tests/framequarry/FrameQuarryFixture.h"
#include "tests/repository/DefaultAsset.h"

namespace framequarry_tests {
namespace {

class FindRemoteAsset : public FrameQuarryTest {
protected:
    // An edit of the project, with that id in that repository.
    static Cookie newEditOf(wchar_t const* repository, wchar_t const* id) {
        EditModifier const edit = EditManager::makeNewClip(1, 0, 10, Zq::FrameRate::f29_97, {});
        LogAttributeMap attributes;
        attributes.add(LogAttribute(LogAttribute::eName), NarrowString("Sea"));
        attributes.add(LogAttribute(LogAttribute::ePrice), NarrowString("$79"));
        edit->setLogAttributes(attributes);
        ShotVideoMetadata picture;
        picture.width = 1920;
        picture.height = 1080;
        picture.setDataFormat(Zq::Image::formatFromCode("avc1"));
        edit->setVideoMetadata(picture, false);
        ExtIDMgr::instance().setAssociatedID(edit->getCookie(), repository, id);
        return edit->getCookie();
    }
};

TEST_F(FindRemoteAsset, ACookieThatOpensNothingGivesADefaultAsset) {
    repository_tests::expectDefaults(resource.findRemoteAsset({}));
    Cookie const cookie = newEditOf(L"FQ", L"123");
    host.edits.remove(cookie);
    host.externalIds.record.forget();
    repository_tests::expectDefaults(resource.findRemoteAsset(cookie));
    EXPECT_TRUE(host.externalIds.record.calls().empty());
}

TEST_F(FindRemoteAsset, AnEditOfTheOtherRepositoryGivesADefaultAsset) {
    Cookie const cookie = newEditOf(L"T7", L"123");
    host.externalIds.record.forget();
    repository_tests::expectDefaults(resource.findRemoteAsset(cookie));
    EXPECT_EQ(host.externalIds.record.calls(), std::vector<std::string>{"find FQ"});
    repository_tests::expectDefaults(resource.findRemoteAsset(newEditOf(L"FQ", L"")));
}

TEST_F(FindRemoteAsset, TheAssetHasTheIdAndNoCookie) {
    Cookie const cookie = newEditOf(L"FQ", L"123");
    RemoteAsset const asset = resource.findRemoteAsset(cookie);
    EXPECT_EQ(utf8(asset.id), "123");
    EXPECT_TRUE(asset.cookie.isNull());
    EXPECT_EQ(resource.findLocalItem(asset), cookie);
}

TEST_F(FindRemoteAsset, TheColumnsAreNameFormatRateAndPriceInThisOrder) {
    std::vector<std::pair<int, std::string>> columns;
    RemoteAsset const asset = resource.findRemoteAsset(newEditOf(L"FQ", L"123"));
    for (auto const& entry : asset.displayAttributes.entries()) {
        columns.emplace_back(entry.type, std::string(entry.value.view()));
    }
    EXPECT_EQ(columns, (std::vector<std::pair<int, std::string>>{
                           {1, "Sea"}, {45, "H.264 1920x1080"}, {18, "29.97"}, {59, "$79"}}));
}

TEST_F(FindRemoteAsset, EverythingElseKeepsItsDefault) {
    RemoteAsset asset = resource.findRemoteAsset(newEditOf(L"FQ", L"123"));
    asset.id.clear();
    asset.displayAttributes = {};
    repository_tests::expectDefaults(asset);
}

TEST_F(FindRemoteAsset, TheEditIsLetGoAgainAndUnchanged) {
    Cookie const cookie = newEditOf(L"FQ", L"123");
    host.edits.record.forget();
    (void)resource.findRemoteAsset(cookie);
    std::vector<std::string> const calls = host.edits.record.calls();
    EXPECT_FALSE(calls.empty());
    EXPECT_EQ(host.edits.stateOf(cookie).openings, 0);
    EXPECT_TRUE(std::ranges::none_of(calls, [](std::string const& call) { return call.starts_with("set"); }));
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(FindRemoteAsset, ASearchResultThatBecameAnEditIsFoundAgain) {
    RemoteAsset const asset = assetOf(itemWith(R"("id":7,"title":"Sea","duration":4)"));
    EditModifier const edit = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
    ASSERT_FALSE(edit.isEmpty());
    RemoteAsset const found = resource.findRemoteAsset(edit->getCookie());
    EXPECT_EQ(utf8(found.id), "7");
    EXPECT_EQ(found.displayAttributes.find(LogAttribute(LogAttribute::eName)), "Sea");
    EXPECT_EQ(found.displayAttributes.find(LogAttribute(LogAttribute::eFrameRate)), "25");
    EXPECT_EQ(resource.findLocalItem(found), edit->getCookie());
}

} // namespace
} // namespace framequarry_tests
