#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

using Calls = std::vector<std::string>;

class OpenEdit : public testing::Test {
protected:
    OpenEdit() {
        repository.edits = [this](RemoteAsset const& asset) {
            created.push_back(asset.id);
            return EditManager::makeNewClip(1, 2, 10, Zq::FrameRate::f25, asset.cookie);
        };
    }
    static RemoteAsset seaAsset() {
        RemoteAsset asset = assetWithId(L"7");
        asset.proxyLocation = L"Virtual:TR https://media.test/7.mov";
        return asset;
    }
    EditModifier open(RemoteAsset const& asset) {
        return repository.openEdit(asset, iMediaFileRepository::eOpenNormally);
    }
    static Cookie cookieNumber(std::uint8_t number) {
        Cookie cookie;
        cookie.uuid.bytes[0] = number;
        return cookie;
    }
    fake::EditState stateOf(EditModifier const& edit) {
        Cookie const cookie = edit->getCookie();
        return host.edits.stateOf(cookie);
    }

    fake::Host host;
    TestRepository repository;
    std::vector<WideString> created; // ids that reached createEdit
};

TEST_F(OpenEdit, AnAssetWithoutALocalItemBecomesANewEdit) {
    EditModifier const edit = open(seaAsset());
    ASSERT_FALSE(edit.isEmpty());
    EXPECT_EQ(created, (std::vector<WideString>{L"7"}));
    EXPECT_EQ(stateOf(edit).previewLocation, L"Virtual:TR https://media.test/7.mov");
    EXPECT_EQ(ExtIDMgr::instance().getAssociatedID(edit->getCookie(), L"TR"), L"7");
}

TEST_F(OpenEdit, ANewEditIsAssociatedBeforeItLearnsItsPreview) {
    Calls steps;
    auto const note = [&steps](std::string const& call) { steps.push_back(call); };
    host.edits.record.listen(note);
    host.externalIds.record.listen(note);
    (void)open(seaAsset());
    EXPECT_EQ(steps,
              (Calls{"findObject TR 7", "make 1 2 10 3", "opened", "getCookie", "closed", "associate TR 7",
                     "opened", "setPreviewLocation Virtual:TR https://media.test/7.mov", "closed"}));
}

TEST_F(OpenEdit, WhatTheResourceDoesNotCreateIsNotAssociated) {
    repository.edits = [](RemoteAsset const&) { return EditModifier(); };
    EXPECT_TRUE(open(seaAsset()).isEmpty());
    EXPECT_EQ(host.externalIds.record.calls(), Calls{"findObject TR 7"});
    EXPECT_TRUE(host.edits.record.calls().empty());
}

TEST_F(OpenEdit, TheSameIdOpensTheSameEdit) {
    Cookie const first = open(seaAsset())->getCookie();
    RemoteAsset later = assetWithId(L"7");
    later.proxyLocation = L"another";
    EditModifier const again = open(later);
    EXPECT_EQ(again->getCookie(), first);
    EXPECT_EQ(created.size(), 1U);
    EXPECT_EQ(stateOf(again).previewLocation, L"Virtual:TR https://media.test/7.mov");
}

TEST_F(OpenEdit, AnotherIdOpensAnother) {
    Cookie const first = open(seaAsset())->getCookie();
    EXPECT_NE(open(assetWithId(L"07"))->getCookie(), first);
    EXPECT_EQ(created, (std::vector<WideString>{L"7", L"07"}));
}

TEST_F(OpenEdit, TheAssetsOwnCookieComesBeforeItsId) {
    (void)open(seaAsset());
    EditModifier const own = EditManager::makeNewClip(1, 0, 1, Zq::FrameRate::f25, cookieNumber(9));
    RemoteAsset asset = seaAsset();
    asset.cookie = cookieNumber(9);
    EXPECT_EQ(repository.findLocalItem(asset), cookieNumber(9));
    EXPECT_EQ(open(asset)->getCookie(), cookieNumber(9));
    EXPECT_EQ(created.size(), 1U);
}

TEST_F(OpenEdit, ACookieThatOpensNothingLeavesTheIdToDecide) {
    Cookie const first = open(seaAsset())->getCookie();
    RemoteAsset asset = seaAsset();
    asset.cookie = cookieNumber(9);
    EXPECT_EQ(repository.findLocalItem(asset), first);
    EXPECT_EQ(open(asset)->getCookie(), first);
}

TEST_F(OpenEdit, AnEditThatIsGoneIsMadeAnewAndTakesTheIdOver) {
    Cookie const first = open(seaAsset())->getCookie();
    host.edits.remove(first);
    EXPECT_TRUE(repository.findLocalItem(seaAsset()).isNull());
    RemoteAsset asset = seaAsset();
    asset.cookie = cookieNumber(9);
    EXPECT_EQ(open(asset)->getCookie(), cookieNumber(9));
    EXPECT_EQ(created.size(), 2U);
    EXPECT_EQ(repository.findLocalItem(seaAsset()), cookieNumber(9));
}

TEST_F(OpenEdit, AnEditOfAnotherRepositoryIsNoLocalItem) {
    EditModifier const other = EditManager::makeNewClip(1, 0, 1, Zq::FrameRate::f25, {});
    ExtIDMgr::instance().setAssociatedID(other->getCookie(), L"T7", L"7");
    EXPECT_TRUE(repository.findLocalItem(seaAsset()).isNull());
    EXPECT_NE(open(seaAsset())->getCookie(), other->getCookie());
}

TEST_F(OpenEdit, AnAssetWithoutAnIdIsNeverAssociated) {
    RemoteAsset asset;
    EXPECT_TRUE(repository.findLocalItem(asset).isNull());
    EditModifier const edit = open(asset);
    ASSERT_FALSE(edit.isEmpty());
    EXPECT_TRUE(host.externalIds.record.calls().empty());
    EXPECT_TRUE(repository.findLocalItem(asset).isNull());
    EXPECT_NE(open(asset)->getCookie(), edit->getCookie());
}

TEST_F(OpenEdit, AnAssetWithoutAnIdStillLeadsWhereItsCookieDoes) {
    EditModifier const edit = open(RemoteAsset());
    RemoteAsset asset;
    asset.cookie = edit->getCookie();
    EXPECT_EQ(repository.findLocalItem(asset), asset.cookie);
}

TEST_F(OpenEdit, AHostWithoutEditsOrIdsFindsNothing) {
    HostServices services = installedHost();
    services.edits = nullptr;
    services.externalIds = nullptr;
    HostServices const before = installHost(services);
    RemoteAsset asset = seaAsset();
    asset.cookie = cookieNumber(9);
    EXPECT_TRUE(repository.findLocalItem(asset).isNull());
    EXPECT_TRUE(open(asset).isEmpty());
    repository.analyse(asset);
    EXPECT_FALSE(MediaFileRepositoryBase::replaceProxyMedia(EditPtr(), L"/media/a.mov"));
    installHost(before);
}

TEST_F(OpenEdit, ReplacingTheProxyHasTheEditPlayTheFile) {
    host.files.disk->files[L"/media/a.mov"] = "media";
    EditModifier const edit = open(seaAsset());
    EXPECT_TRUE(MediaFileRepositoryBase::replaceProxyMedia(edit.open(), L"/media/a.mov"));
    EXPECT_EQ(stateOf(edit).mediaLocation, L"/media/a.mov");
    EXPECT_EQ(stateOf(edit).previewLocation, L"Virtual:TR https://media.test/7.mov");
    EXPECT_EQ(stateOf(edit).openings, 0);
}

TEST_F(OpenEdit, AFileThatTheHostRefusesReplacesNothing) {
    EditModifier const edit = open(seaAsset());
    EXPECT_FALSE(MediaFileRepositoryBase::replaceProxyMedia(edit.open(), L"/media/missing.mov"));
    EXPECT_FALSE(MediaFileRepositoryBase::replaceProxyMedia(edit.open(), L""));
    EXPECT_TRUE(stateOf(edit).mediaLocation.isEmpty());
}

TEST_F(OpenEdit, WithoutAnEditThereIsNothingToReplace) {
    host.files.disk->files[L"/media/a.mov"] = "media";
    EXPECT_FALSE(MediaFileRepositoryBase::replaceProxyMedia(EditPtr(), L"/media/a.mov"));
    EXPECT_TRUE(host.edits.record.calls().empty());
}

TEST_F(OpenEdit, AnalysingLooksAtTheLocalItem) {
    host.files.disk->files[L"/media/a.mov"] = "media";
    EditModifier const edit = open(seaAsset());
    (void)MediaFileRepositoryBase::replaceProxyMedia(edit.open(), L"/media/a.mov");
    repository.analyse(seaAsset());
    EXPECT_EQ(stateOf(edit).bitRate, 8'000'000);
    EXPECT_EQ(stateOf(edit).openings, 0);
}

TEST_F(OpenEdit, AnalysingAnAssetWithoutALocalItemDoesNothing) {
    repository.analyse(seaAsset());
    repository.analyse(RemoteAsset());
    EXPECT_TRUE(created.empty());
    EXPECT_TRUE(host.edits.cookies().empty());
    EXPECT_EQ(host.network.requestCount(), 0U);
}

class OpenDocument : public OpenEdit {
protected:
    static NarrowString textOf(ContainerModifier<Document> const& document, LogAttribute::eType type) {
        return document->texts.find(LogAttribute(type));
    }
};

TEST_F(OpenDocument, AnAssetWithoutAnIdHasNone) {
    EXPECT_TRUE(repository.openDocument(RemoteAsset()).isEmpty());
}

TEST_F(OpenDocument, ItHasTheNameAndTheTextsOfTheAsset) {
    RemoteAsset asset = seaAsset();
    asset.logAttributes.add(LogAttribute(LogAttribute::eName), NarrowString("M\xc3\xa9r"));
    asset.logAttributes.add(LogAttribute(LogAttribute::eSource), NarrowString("Tarn7"));
    asset.displayAttributes.add(LogAttribute(LogAttribute::eFormat), NarrowString("1080p"));
    ContainerModifier<Document> const document = repository.openDocument(asset);
    ASSERT_FALSE(document.isEmpty());
    EXPECT_EQ(document->title, L"M\u00e9r");
    EXPECT_EQ(textOf(document, LogAttribute::eSource), "Tarn7");
    EXPECT_EQ(textOf(document, LogAttribute::eFormat), "1080p");
    EXPECT_TRUE(document->subject.isNull());
}

TEST_F(OpenDocument, WhatAColumnShowsComesBeforeWhatStaysWithTheAsset) {
    RemoteAsset asset = seaAsset();
    asset.logAttributes.add(LogAttribute(LogAttribute::ePrice), NarrowString("$79"));
    asset.displayAttributes.add(LogAttribute(LogAttribute::ePrice), NarrowString("Purchased"));
    asset.displayAttributes.add(LogAttribute(LogAttribute::eName), NarrowString("Sea"));
    ContainerModifier<Document> const document = repository.openDocument(asset);
    ASSERT_FALSE(document.isEmpty());
    EXPECT_EQ(textOf(document, LogAttribute::ePrice), "Purchased");
    EXPECT_EQ(document->title, L"Sea");
}

TEST_F(OpenDocument, CustomColumnsKeepTheirKeys) {
    auto const custom = [](char const* key) {
        return LogAttribute(UIString(), key, DBFieldTypes::duration, 1, 60,
                            static_cast<LogAttribute::eType>(1003));
    };
    RemoteAsset asset = seaAsset();
    asset.displayAttributes.add(custom("length"), NarrowString("0:12"));
    asset.displayAttributes.add(custom("mood"), NarrowString("calm"));
    ContainerModifier<Document> const document = repository.openDocument(asset);
    ASSERT_FALSE(document.isEmpty());
    EXPECT_EQ(document->texts.find(custom("length")), "0:12");
    EXPECT_EQ(document->texts.find(custom("mood")), "calm");
}

TEST_F(OpenDocument, ItIsAboutTheLocalItem) {
    EditModifier const edit = open(seaAsset());
    ContainerModifier<Document> const document = repository.openDocument(seaAsset());
    ASSERT_FALSE(document.isEmpty());
    EXPECT_EQ(document->subject, edit->getCookie());
}

} // namespace
} // namespace repository_tests
