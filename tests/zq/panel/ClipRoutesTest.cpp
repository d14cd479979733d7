// Searches, clips, pictures and previews, with a repository of the tests' own.

#include "tests/zq/panel/PanelFixture.h"

#include <atomic>
#include <fstream>
#include <semaphore>
#include <thread>

#include "apps/zq/Text.h"
#include "apps/zq/panel/Previews.h"
#include "host/edit/EditModifier.h"
#include "host/engine/project/Project.h"
#include "tests/support/RawServer.h"

namespace {

using namespace panel_tests;
using namespace zq::panel;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ClipRoutes : public testing::Test {
protected:
    ClipRoutes() {
        repository_->onSearch = [this](SearchQuery const& query) {
            asked_.push_back(query);
            SearchResults results;
            results.assets = clips_;
            results.totalCount = static_cast<std::uint16_t>(clips_.size());
            results.pageCount = clips_.empty() ? 0 : 1;
            return results;
        };
    }
    void add(RemoteAsset const& asset) { clips_.push_back(asset); }
    // A new search: nothing comes from what the repository remembers.
    void search() {
        repository_->disconnect();
        static_cast<void>(handlers_.call("GET", "/search"));
    }
    WideString file(std::string const& name, std::string_view bytes) {
        std::ofstream(home_.path() / name, std::ios::binary) << bytes;
        return zq::wide((home_.path() / name).string());
    }

    EngineHome home_;
    Zq::Ptr<ShelfRepository> const repository_ = Zq::makeShared<ShelfRepository>();
    LightweightVector<RemoteAsset> clips_;
    std::vector<SearchQuery> asked_;
    std::vector<engine::ServerStatistics> network_;
    Handlers handlers_{home_.engine(), *repository_, [this] { return network_; }};
};

TEST_F(ClipRoutes, ASearchAsksForTheWordsAndThePageAndGivesItsClips) {
    RemoteAsset asset = ShelfRepository::clip("12", "Red car", "$5");
    asset.frameRate = Zq::FrameRate::f29_97;
    asset.audioChannels = 2;
    asset.proxyLocation = L"Virtual:SH https://a.example/12.mov";
    asset.displayAttributes.add(LogAttribute(LogAttribute::ePrice), WideString(L"Five"));
    asset.displayAttributes.add(LogAttribute(LogAttribute::eFormat), WideString(L""));
    asset.logAttributes.add(LogAttribute(LogAttribute::eFormat), WideString(L"HD"));
    add(asset);
    auto const page =
        handlers_.json("GET", "/search", {}, {{"words", "red \xc3\xa9"}, {"page", "3"}, {"pageSize", "7"}});
    ASSERT_EQ(asked_.size(), 1U);
    EXPECT_EQ(zq::utf8(asked_[0].words), "red \xc3\xa9");
    EXPECT_EQ(asked_[0].page, 3);
    EXPECT_EQ(asked_[0].pageSize, 7);
    EXPECT_EQ(page->getInt("page", 0), 3);
    EXPECT_EQ(page->getInt("pageSize", 0), 7);
    EXPECT_EQ(page->getInt("pageCount", 0), 3);
    EXPECT_EQ(page->getInt("totalCount", 0), 15) << "two full pages stand before it";
    auto const clip = item(page, "clips", 0);
    EXPECT_EQ(text(clip, "id"), "12");
    EXPECT_EQ(text(clip, "name"), "Red car");
    EXPECT_EQ(text(child(clip, "attributes"), "59"), "Five") << "what is shown stands before what is kept";
    EXPECT_EQ(text(child(clip, "attributes"), "45"), "HD") << "an empty text shows nothing";
    EXPECT_EQ(text(clip, "rate"), "29.97");
    ASSERT_EQ(child(clip, "rateFraction")->numbers().size(), 2U);
    EXPECT_EQ(child(clip, "rateFraction")->numbers()[0].value, 30'000);
    EXPECT_EQ(child(clip, "rateFraction")->numbers()[1].value, 1'001);
    EXPECT_EQ(clip->getInt("audioChannels", 0), 2);
    EXPECT_FALSE(clip->getBool("owned", true));
    EXPECT_FALSE(clip->getBool("hasThumbnail", true));
    EXPECT_TRUE(clip->getBool("hasPreview", false));
    EXPECT_EQ(text(clip, "edit"), "");
    EXPECT_EQ(text(clip, "state"), "");
}

TEST_F(ClipRoutes, ClipsThatAreThereCountWhateverTheServiceTells) {
    std::uint16_t told = 0;
    repository_->onSearch = [&](SearchQuery const&) {
        SearchResults results;
        results.assets = clips_;
        results.totalCount = told;
        results.pageCount = 0;
        return results;
    };
    std::string const words = "count ";
    int asked = 0;
    auto const ask = [&](char const* page, char const* pageSize) {
        return handlers_.json(
            "GET", "/search", {},
            {{"words", words + std::to_string(++asked)}, {"page", page}, {"pageSize", pageSize}});
    };
    EXPECT_EQ(ask("2", "50")->getInt("totalCount", -1), 0) << "nothing is nothing";
    for (char const* const id : {"1", "2", "3"}) {
        add(ShelfRepository::clip(id, "Red car", "$5"));
    }
    auto const first = ask("1", "50");
    EXPECT_EQ(first->getInt("totalCount", -1), 3);
    EXPECT_EQ(first->getInt("pageCount", -1), 1);
    auto const second = ask("2", "50");
    EXPECT_EQ(second->getInt("totalCount", -1), 53);
    EXPECT_EQ(second->getInt("pageCount", -1), 2);
    EXPECT_EQ(ask("1", "2")->getInt("totalCount", -1), 2) << "a page that is too full has room for its size";
    told = 700;
    EXPECT_EQ(ask("1", "50")->getInt("totalCount", -1), 700);
}

TEST_F(ClipRoutes, WithoutFiguresASearchIsForTheFirstFiftyClips) {
    search();
    EXPECT_EQ(asked_.at(0).page, 1);
    EXPECT_EQ(asked_.at(0).pageSize, 50);
    EXPECT_EQ(zq::utf8(asked_.at(0).words), "");
}

TEST_F(ClipRoutes, FiguresOutOfTheirBoundsAreRefused) {
    using Query = std::vector<Handlers::Query>;
    for (Query const& query :
         {Query{{"page", "0"}}, Query{{"page", "65536"}}, Query{{"page", "-1"}}, Query{{"page", "1x"}},
          Query{{"page", ""}}, Query{{"page", "99999999999999999999"}}, Query{{"pageSize", "0"}},
          Query{{"pageSize", "501"}}, Query{{"words", std::string(1'001, 'x')}}}) {
        EXPECT_EQ(handlers_.failureOf("GET", "/search", {}, query), "bad_request")
            << query[0].key << " " << query[0].value;
    }
    EXPECT_THAT(asked_, IsEmpty());
    EXPECT_EQ(handlers_.failureOf("GET", "/search", {}, {{"page", "65535"}, {"pageSize", "500"}}), "none");
}

TEST_F(ClipRoutes, APageThatFailsSaysWhy) {
    repository_->onSearch = [this](SearchQuery const&) {
        network_ = {{.server = "https://a.example", .requests = 1, .failures = 1, .lastError = "no route"}};
        return SearchResults();
    };
    try {
        search();
        FAIL();
    } catch (zq::CommandError const& error) {
        EXPECT_STREQ(error.what(), "the request to the service failed: no route");
    }
}

TEST_F(ClipRoutes, AClipIsKnownOnceItWasShown) {
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}", {"12"}), "not_found");
    add(ShelfRepository::clip("12", "Red car", "$5"));
    search();
    EXPECT_EQ(text(handlers_.json("GET", "/clips/{clip}", {"12"}), "name"), "Red car");
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}", {"13"}), "not_found");
}

TEST_F(ClipRoutes, AColumnWithoutADisplayTextIsAskedOfTheRepository) {
    repository_->columns.push_back(LogAttribute(LogAttribute::eFormat));
    repository_->onAttribute = [](RemoteAsset const& asset, LogAttribute const& column) {
        return asset.id + L" asked for " + zq::wide(std::to_string(column.getType()));
    };
    RemoteAsset asset = ShelfRepository::clip("12", "Red car", "$5");
    asset.displayAttributes.add(LogAttribute(LogAttribute::ePrice), WideString(L"Five"));
    asset.logAttributes.add(LogAttribute(LogAttribute::eFrameRate), WideString(L"25"));
    add(asset);
    auto const page = handlers_.json("GET", "/search");
    auto const attributes = child(item(page, "clips", 0), "attributes");
    EXPECT_EQ(text(attributes, "59"), "Five") << "what is to be shown needs no asking";
    EXPECT_EQ(text(attributes, "45"), "12 asked for 45");
    EXPECT_EQ(text(attributes, "18"), "25") << "what is no column stays as it is";
}

class ClipsOfTheProject : public ClipRoutes {
protected:
    ClipsOfTheProject() {
        engine::Project& project = home_.engine().project();
        EditModifier edit(project.makeNewClip(1, 2, 2.0, Zq::FrameRate::f25, Cookie()));
        LogAttributeMap attributes;
        attributes.add(LogAttribute(LogAttribute::eName), NarrowString("Red car"));
        attributes.add(LogAttribute(LogAttribute::ePrice), NarrowString("$5"));
        edit->setLogAttributes(attributes);
        edit->setPreviewLocation(file("kept.mov", "a film of an earlier run"));
        edit->setTemporary(false);
        project.associate(edit->getCookie(), L"SH", L"12");
    }
};

TEST_F(ClipsOfTheProject, AreKnownThoughNobodyHasShownThemSinceTheStart) {
    auto const clip = handlers_.json("GET", "/clips/{clip}", {"12"});
    EXPECT_EQ(text(clip, "id"), "12");
    EXPECT_EQ(text(clip, "name"), "Red car");
    EXPECT_EQ(text(child(clip, "attributes"), "59"), "$5");
    EXPECT_EQ(text(clip, "rate"), "25");
    EXPECT_EQ(clip->getInt("audioChannels", 0), 2);
    EXPECT_TRUE(clip->getBool("hasPreview", false));
    EXPECT_EQ(text(clip, "state"), "preview");
    EXPECT_NE(text(clip, "edit"), "");
    EXPECT_THAT(asked_, IsEmpty()) << "the service is not asked";
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}", {"13"}), "not_found");
}

TEST_F(ClipsOfTheProject, PlayTheirPreviewWhileTheRepositoryIsBusy) {
    std::binary_semaphore entered(0);
    std::binary_semaphore leave(0);
    handlers_.desk().post([&](zq::Session&) {
        entered.release();
        leave.acquire();
    });
    entered.acquire();
    Response const preview = handlers_.call("GET", "/clips/{clip}/preview", {"12"});
    leave.release();
    handlers_.desk().ask([](zq::Session&) {}); // behind it: the semaphores are this test's
    ASSERT_TRUE(preview.content);
    std::string bytes(100, ' ');
    bytes.resize(preview.content->read(0, bytes));
    EXPECT_EQ(bytes, "a film of an earlier run");
}

TEST_F(ClipsOfTheProject, HaveTheirPictureWhereTheRepositoryKnowsItsPlace) {
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/thumbnail", {"12"}), "not_found");
    EXPECT_FALSE(handlers_.json("GET", "/clips/{clip}", {"12"})->getBool("hasThumbnail", true));
    WideString const path = file("12.jpeg", "\xff\xd8\xff picture");
    handlers_.desk().ask([&](zq::Session&) { repository_->thumbnailPaths[L"12"] = path; });
    EXPECT_EQ(handlers_.call("GET", "/clips/{clip}/thumbnail", {"12"}).body, "\xff\xd8\xff picture");
    EXPECT_TRUE(handlers_.json("GET", "/clips/{clip}", {"12"})->getBool("hasThumbnail", false));
}

TEST_F(ClipsOfTheProject, AreAsTheRepositoryTellsThemOnceItHas) {
    add(ShelfRepository::clip("12", "Red car, longer", "$7"));
    search();
    auto const clip = handlers_.json("GET", "/clips/{clip}", {"12"});
    EXPECT_EQ(text(clip, "name"), "Red car, longer");
    EXPECT_FALSE(clip->getBool("hasPreview", true));
}

TEST_F(ClipRoutes, HostileTextsComeOutAsTheyAre) {
    std::string const hostile[] = {"<script>alert(1)</script>",
                                   "\"},{\"owned\":true",
                                   "\\u0022 \\\\",
                                   "line\nend\r\n\ttab",
                                   "\x1b[31mred\x07",
                                   "\xe2\x80\xae txet \xe2\x80\xa8\xe2\x80\xa9",
                                   "\xf0\x9f\x8e\xac \xe6\x9d\xb1\xe4\xba\xac",
                                   "../../etc/passwd",
                                   "%s%n",
                                   "data: x\n\nevent: reset"};
    for (std::string const& name : hostile) {
        clips_.clear();
        add(ShelfRepository::clip("1", name, name));
        std::string const body = handlers_.call("GET", "/search", {}, {{"words", name}}).body;
        EXPECT_EQ(body.find('\n'), std::string::npos);
        auto const clip = item(parsed(body), "clips", 0);
        EXPECT_EQ(text(clip, "name"), name);
        EXPECT_EQ(text(child(clip, "attributes"), "59"), name);
        EXPECT_FALSE(clip->getBool("owned", true));
    }
    clips_.clear();
    repository_->disconnect();
    add(ShelfRepository::clip("1", "bad \xff\xc0 bytes", ""));
    EXPECT_EQ(text(item(handlers_.json("GET", "/search"), "clips", 0), "name"),
              "bad \xef\xbf\xbd\xef\xbf\xbd bytes");
}

TEST_F(ClipRoutes, ThePictureOfAClipWithoutAnAddressIsTheFileThatTheRepositoryNames) {
    repository_->thumbnailPaths[L"1"] = file("1.jpeg", "\xff\xd8\xff picture");
    repository_->thumbnailPaths[L"2"] = file("2.jpeg", "<svg/>");
    for (char const* id : {"1", "2", "3"}) {
        add(ShelfRepository::clip(id, id, ""));
    }
    auto const page = handlers_.json("GET", "/search");
    EXPECT_TRUE(item(page, "clips", 0)->getBool("hasThumbnail", false));
    EXPECT_FALSE(item(page, "clips", 2)->getBool("hasThumbnail", true));
    Response const picture = handlers_.call("GET", "/clips/{clip}/thumbnail", {"1"});
    EXPECT_EQ(picture.type, "image/jpeg");
    EXPECT_EQ(picture.body, "\xff\xd8\xff picture");
    EXPECT_EQ(picture.fresh_s, 86'400U);
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/thumbnail", {"2"}), "not_found");
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/thumbnail", {"3"}), "not_found");
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/thumbnail", {"4"}), "not_found");
}

class PreviewRoutes : public ClipRoutes {
protected:
    Response preview(std::string_view bytes) {
        clips_.clear();
        RemoteAsset asset = ShelfRepository::clip("1", "one", "");
        asset.proxyLocation = file("preview.mov", bytes);
        add(asset);
        search();
        return handlers_.call("GET", "/clips/{clip}/preview", {"1"});
    }
    static std::string read(Content& content, std::uint64_t offset, std::size_t size) {
        std::string bytes(size, '\0');
        bytes.resize(content.read(offset, bytes));
        return bytes;
    }
};

TEST_F(PreviewRoutes, APreviewIsReadByRanges) {
    Response const response = preview(std::string("\0\0\0\x14"
                                                  "ftypqt  0123456789",
                                                  22));
    EXPECT_EQ(response.type, "video/mp4");
    ASSERT_TRUE(response.content);
    EXPECT_EQ(response.content->size(), 22U);
    EXPECT_EQ(read(*response.content, 12, 3), "012");
    EXPECT_EQ(read(*response.content, 4, 4), "ftyp");
    EXPECT_EQ(read(*response.content, 20, 100), "89");
    EXPECT_EQ(read(*response.content, 22, 1), "");
    EXPECT_EQ(read(*response.content, 1'000'000, 1), "");
}

TEST_F(PreviewRoutes, ItsTypeIsReadOffItsFirstBytes) {
    EXPECT_EQ(preview(std::string("\0\0\0\x08wide", 8)).type, "video/mp4");
    EXPECT_EQ(preview(std::string("\0\0\0\x08moov", 8)).type, "video/mp4");
    EXPECT_EQ(preview("\x1a\x45\xdf\xa3 webm").type, "video/webm");
    EXPECT_EQ(preview("<html><script>").type, "application/octet-stream");
    EXPECT_EQ(preview("x").type, "application/octet-stream");
}

TEST_F(PreviewRoutes, AClipWithoutAPreviewHasNone) {
    add(ShelfRepository::clip("1", "one", ""));
    search();
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/preview", {"1"}), "not_found");
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/preview", {"2"}), "not_found");
    clips_[0].proxyLocation = zq::wide((home_.path() / "gone.mov").string());
    search();
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/preview", {"1"}), "not_found");
}

TEST_F(PreviewRoutes, OnlySoManyAreOpenAtOnce) {
    std::vector<Response> open;
    open.push_back(preview("12345678"));
    while (open.size() < static_cast<std::size_t>(Previews::mostOpen)) {
        open.push_back(handlers_.call("GET", "/clips/{clip}/preview", {"1"}));
    }
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/preview", {"1"}), "conflict");
    open.pop_back();
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/preview", {"1"}), "none");
}

TEST_F(ClipRoutes, APictureBehindARedirectIsShown) {
    test::RawServer server([](test::RawConnection& connection) {
        while (auto const request = connection.readRequest()) {
            if (request->line.starts_with("GET /moved/")) {
                connection.answer(200, "\xff\xd8\xff picture");
            } else if (request->line.starts_with("GET /1 ")) {
                connection.answer(302, "", "Location: /moved/1.jpeg\r\n");
            } else {
                connection.answer(404, "");
            }
        }
    });
    repository_->thumbnailBase = zq::wide("http://" + server.name() + "/");
    add(ShelfRepository::clip("1", "one", ""));
    add(ShelfRepository::clip("2", "two", ""));
    search();
    EXPECT_EQ(handlers_.call("GET", "/clips/{clip}/thumbnail", {"1"}).body, "\xff\xd8\xff picture");
    EXPECT_EQ(handlers_.failureOf("GET", "/clips/{clip}/thumbnail", {"2"}), "not_found");
}

TEST_F(ClipRoutes, APictureThatIsSlowKeepsNoRequestAndIsThereLater) {
    std::atomic<bool> isOpen{false};
    test::RawServer server([&](test::RawConnection& connection) {
        while (connection.readRequest()) {
            while (!isOpen) {
                std::this_thread::yield();
            }
            connection.answer(200, "\xff\xd8\xff picture");
        }
    });
    repository_->thumbnailBase = zq::wide("http://" + server.name() + "/");
    add(ShelfRepository::clip("1", "one", ""));
    search();
    auto const ask = [this] { return handlers_.call("GET", "/clips/{clip}/thumbnail", {"1"}); };
    Response answer = ask();
    EXPECT_EQ(answer.status, 202);
    EXPECT_EQ(answer.body, "");
    EXPECT_EQ(answer.fresh_s, 0U) << "no browser takes it for the picture";
    isOpen = true;
    do {
        answer = ask();
    } while (answer.status == 202);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "\xff\xd8\xff picture");
}

TEST_F(ClipRoutes, WhatIsOwnedIsAPageOfClipsAndMarksThemEverywhere) {
    add(ShelfRepository::clip("1", "one", "$5"));
    add(ShelfRepository::clip("2", "two", "$5"));
    repository_->onOwned = [this](auto&) { return LightweightVector<RemoteAsset>{clips_[1]}; };
    EXPECT_EQ(handlers_.failureOf("GET", "/owned"), "failed") << "nobody is signed in";
    handlers_.desk().ask([this](zq::Session&) { repository_->signedInUser = L"ada"; });
    auto const owned = handlers_.json("GET", "/owned");
    EXPECT_EQ(owned->getInt("totalCount", 0), 1);
    EXPECT_EQ(text(item(owned, "clips", 0), "id"), "2");
    EXPECT_TRUE(item(owned, "clips", 0)->getBool("owned", false));
    EXPECT_GE(handlers_.countEvents("repository"), 2U) << "its purchases have changed";
    auto const page = handlers_.json("GET", "/search");
    EXPECT_FALSE(item(page, "clips", 0)->getBool("owned", true));
    EXPECT_TRUE(item(page, "clips", 1)->getBool("owned", false));
}

TEST_F(ClipRoutes, AListOfOwnedClipsThatCannotBeReadTakesNoMarkAway) {
    add(ShelfRepository::clip("1", "one", "$5"));
    repository_->onOwned = [this](auto&) { return clips_; };
    handlers_.desk().ask([this](zq::Session&) { repository_->signedInUser = L"ada"; });
    static_cast<void>(handlers_.call("GET", "/owned"));
    repository_->onOwned = [this](auto&) {
        network_ = {{.server = "https://a.example", .requests = 1, .failures = 1, .lastError = "no route"}};
        return LightweightVector<RemoteAsset>();
    };
    EXPECT_EQ(handlers_.failureOf("GET", "/owned"), "failed");
    EXPECT_TRUE(handlers_.json("GET", "/clips/{clip}", {"1"})->getBool("owned", false));
    static_cast<void>(handlers_.call("POST", "/logout"));
    EXPECT_FALSE(handlers_.json("GET", "/clips/{clip}", {"1"})->getBool("owned", true));
}

} // namespace
