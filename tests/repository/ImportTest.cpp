#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

// Assets whose ids begin with "no" become no edit; the name of an edit is its id.
class Import : public testing::Test {
protected:
    Import() {
        repository.edits = [](RemoteAsset const& asset) {
            if (asset.id.startsWith(L"no")) {
                return EditModifier();
            }
            EditModifier edit = EditManager::makeNewClip(1, 2, 10, Zq::FrameRate::f25, asset.cookie);
            edit->setTemporary(true);
            LogAttributeMap attributes;
            attributes.add(LogAttribute(LogAttribute::eName), L"clip " + asset.id);
            edit->setLogAttributes(attributes);
            return edit;
        };
    }
    static RemoteAsset assetThatPlays(wchar_t const* id, wchar_t const* path) {
        RemoteAsset asset = assetWithId(id);
        asset.proxyLocation = path;
        return asset;
    }
    ImportResult import(LightweightVector<RemoteAsset> const& assets) {
        return repository.import(assets, LoggerHandle(log));
    }

    fake::Host host;
    TestRepository repository;
    Zq::Ptr<fake::ImportLog> log = Zq::makeShared<fake::ImportLog>();
};

TEST_F(Import, NothingIsImportedWithoutAWord) {
    ImportResult const result = import({});
    EXPECT_TRUE(result.edits.empty());
    EXPECT_TRUE(result.failedIds.empty());
    EXPECT_TRUE(log->lines.empty());
}

TEST_F(Import, EachAssetBecomesAnEditThatIsKept) {
    ImportResult const result = import({assetWithId(L"7"), assetWithId(L"8")});
    ASSERT_EQ(result.edits.size(), 2U);
    EXPECT_TRUE(result.failedIds.empty());
    for (Cookie const& cookie : result.edits) {
        EXPECT_FALSE(host.edits.stateOf(cookie).temporary);
        EXPECT_EQ(host.edits.stateOf(cookie).openings, 0);
    }
    ASSERT_EQ(log->lines.size(), 2U);
    EXPECT_EQ(log->lines[0].text, L"clip 7");
    EXPECT_EQ(log->lines[1].text, L"clip 8");
    EXPECT_EQ(log->lines[0].type, LoggerBase::ePlain);
    EXPECT_EQ(log->lines[0].indent, 0);
}

TEST_F(Import, AnEditIsKeptBeforeItIsAnalysed) {
    (void)import({assetWithId(L"7")});
    std::vector<std::string> const calls = host.edits.record.calls();
    auto const kept = std::ranges::find(calls, "setTemporary false");
    ASSERT_NE(kept, calls.end());
    EXPECT_NE(std::find(kept, calls.end(), "analyse"), calls.end());
    EXPECT_EQ(std::ranges::count(calls, "analyse"), 1);
}

TEST_F(Import, WhatTheEditPlaysIsLookedAt) {
    host.files.disk->files[L"/media/7.mov"] = "media";
    ImportResult const result = import({assetThatPlays(L"7", L"/media/7.mov")});
    ASSERT_EQ(result.edits.size(), 1U);
    EXPECT_EQ(host.edits.stateOf(result.edits[0]).bitRate, 8'000'000);
}

TEST_F(Import, AnEditWhoseMediaCannotBeLookedAtIsImportedAllTheSame) {
    ImportResult const result = import({assetThatPlays(L"7", L"/media/missing.mov")});
    EXPECT_EQ(result.edits.size(), 1U);
    EXPECT_TRUE(result.failedIds.empty());
    EXPECT_EQ(log->lines.size(), 1U);
}

TEST_F(Import, AnAssetWithoutAnIdIsLookedAtToo) {
    host.files.disk->files[L"/media/7.mov"] = "media";
    ImportResult const result = import({assetThatPlays(L"", L"/media/7.mov")});
    ASSERT_EQ(result.edits.size(), 1U);
    EXPECT_EQ(host.edits.stateOf(result.edits[0]).bitRate, 8'000'000);
}

TEST_F(Import, AnAssetThatBecomesNoEditIsReportedAndEndsNothing) {
    ImportResult const result = import({assetWithId(L"no 1"), assetWithId(L"7"), assetWithId(L"no 2")});
    EXPECT_EQ(result.failedIds, (LightweightVector<WideString>{L"no 1", L"no 2"}));
    EXPECT_EQ(result.edits.size(), 1U);
    ASSERT_EQ(log->lines.size(), 3U);
    EXPECT_EQ(log->lines[0].text, L"TR no 1 could not be imported.");
    EXPECT_EQ(log->lines[0].type, LoggerBase::eTransferFailed);
    EXPECT_EQ(log->lines[1].text, L"clip 7");
    EXPECT_EQ(log->lines[2].type, LoggerBase::eTransferFailed);
}

TEST_F(Import, TheSameAssetTwiceIsOneEdit) {
    ImportResult const result = import({assetWithId(L"7"), assetWithId(L"7")});
    ASSERT_EQ(result.edits.size(), 2U);
    EXPECT_EQ(result.edits[0], result.edits[1]);
    EXPECT_EQ(host.edits.cookies().size(), 1U);
}

TEST_F(Import, AnEditThatWasPlacedIsTheOneThatIsImported) {
    Cookie const placed =
        repository.openEdit(assetWithId(L"7"), iMediaFileRepository::eOpenNormally)->getCookie();
    EXPECT_TRUE(host.edits.stateOf(placed).temporary);
    EXPECT_EQ(import({assetWithId(L"7")}).edits, LightweightVector<Cookie>{placed});
    EXPECT_FALSE(host.edits.stateOf(placed).temporary);
}

TEST_F(Import, AHostWithoutEditsReportsEveryAsset) {
    HostServices services = installedHost();
    services.edits = nullptr;
    HostServices const before = installHost(services);
    repository.edits = [](RemoteAsset const&) {
        return EditManager::makeNewClip(1, 2, 10, Zq::FrameRate::f25, {});
    };
    EXPECT_EQ(import({assetWithId(L"7")}).failedIds, LightweightVector<WideString>{L"7"});
    installHost(before);
}

TEST_F(Import, NeitherIdsNorNamesBreakALineOfTheLog) {
    wchar_t const* const hostile = L"7\nimported\r\x1b[2J\x85\x2028x";
    wchar_t const* const hostileToo = L"no 7\nimported\r\x1b[2J\x85\x2028x";
    (void)import({assetWithId(hostile), assetWithId(hostileToo)});
    ASSERT_EQ(log->lines.size(), 2U);
    for (fake::ImportLog::Line const& line : log->lines) {
        EXPECT_EQ(line.text.view().find_first_of(L"\n\r\x1b\x85\x2028"), std::wstring_view::npos);
        EXPECT_TRUE(line.text.contains(L"imported"));
    }
}

TEST_F(Import, TheLogIsReleased) {
    (void)import({assetWithId(L"7"), assetWithId(L"no")});
    Zq::InternalRefCount& counted = *log;
    EXPECT_EQ(counted.refCount().owners.load(), 1U);
}

} // namespace
} // namespace repository_tests
