// The FrameQuarry client in a real host, against the service over HTTPS: searches, pictures, previews, edits,
// and full media that somebody has put in their place by hand.

#include <gmock/gmock.h>
#include <httplib.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <thread>

#include "apps/tarn7d/FaultDesk.h"
#include "apps/tarn7d/Server.h"
#include "host/edit/EditPtr.h"
#include "host/engine/media/MediaFacts.h"
#include "host/engine/media/MediaReader.h"
#include "host/engine/project/Project.h"
#include "host/object/ExtIDMgr.h"
#include "host/os/OS.h"
#include "tests/framequarry/ProviderParts.h"
#include "tests/road/RoadHost.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

using namespace road_tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// What the class leaves open, in the simplest form. Its files are read and never copied.
using Quarry = framequarry_tests::Copying<
    framequarry_tests::MappingForReading<framequarry_tests::MappingForWriting<FrameQuarryResource>>>;

// "car.mov": 25 frames a second, 1 s; "tape.mov": 30000/1001, with sound; "tower.mov": 1080 lines,
// 24000/1001.
class FrameQuarryRoad : public testing::Test {
protected:
    FrameQuarryRoad() {
        std::filesystem::path const footage = folder_.path() / "footage";
        test::putFootage(test::Footage::plain, footage / "car.mov");
        test::putFootage(test::Footage::interlaced, footage / "tape.mov");
        test::putFootage(test::Footage::large, footage / "tower.mov");
        std::ofstream(footage / "tower.toml") << "title = \"T\u00fcrme & \\\"M\u00f6wen\\\" = 100%\"\n";
        tarn7d::ServerOptions options;
        options.data = folder_.path() / "data";
        options.footage = footage;
        options.rescanInterval = std::chrono::seconds(10);
        options.clock = [this] { return tarn7d::systemSeconds() + lead_s_; };
        service_ = std::make_unique<tarn7d::Server>(options);
        port_ = service_->start();
        ca_ = service_->caFile();
        host_ = std::make_unique<RoadHost>(folder_.path(), "127.0.0.1:" + std::to_string(port_), ca_);
        makeClient();
    }
    void makeClient() {
        client_ = std::make_unique<Quarry>();
        EXPECT_EQ(client_->connect(client_->getDescription().connection, LoggerHandle()), 0);
    }

    [[nodiscard]] SearchResults search(std::string_view words, std::uint16_t page = 1,
                                       std::uint16_t pageSize = 25) {
        SearchQuery query;
        query.words = wide(words);
        query.page = page;
        query.pageSize = pageSize;
        return client_->search(query);
    }
    [[nodiscard]] RemoteAsset clip(std::string_view word) {
        SearchResults const found = search(word);
        EXPECT_EQ(found.assets.size(), 1u) << word;
        return found.assets.empty() ? RemoteAsset() : found.assets[0];
    }
    [[nodiscard]] EditModifier open(RemoteAsset const& asset) {
        return client_->openEdit(asset, iMediaFileRepository::eOpenNormally);
    }
    [[nodiscard]] engine::Project& project() { return host_->engine().project(); }
    [[nodiscard]] engine::EditRecord record(RemoteAsset const& asset) {
        return project().edit(client_->findLocalItem(asset)).value_or(engine::EditRecord());
    }
    [[nodiscard]] std::filesystem::path fullFile(RemoteAsset const& asset) {
        return utf8(client_->describeLocalMediaLocation(asset, MediaFileRepositoryBase::eFullMedia));
    }
    // Fetches in a task, as a host does; gives what the person is told.
    [[nodiscard]] std::vector<FetchLog::Line> fetch(RemoteAsset const& asset) {
        auto const log = Zq::makeShared<FetchLog>();
        LightweightVector<RemoteAsset> assets;
        assets.push_back(asset);
        host_->asTask(
            [&] { EXPECT_TRUE(client_->fetchFullMedia(assets, 0, LoggerHandle(Zq::Ptr<LoggerBase>(log)))); });
        EXPECT_EQ(log->indent(), 0);
        return log->lines();
    }
    // What the service sends for the preview.
    [[nodiscard]] std::string servedPreview(RemoteAsset const& asset) {
        std::string const url =
            utf8(client_->describeRemoteLocation(asset, MediaFileRepositoryBase::ePreview));
        std::string const server = "https://api.framequarry.example";
        EXPECT_TRUE(url.starts_with(server + "/")) << url;
        httplib::SSLClient client("127.0.0.1", port_);
        client.set_ca_cert_path(ca_.c_str());
        client.set_read_timeout(30);
        auto const answer = client.Get(url.substr(server.size()));
        EXPECT_TRUE(answer && answer->status == 200) << url;
        return answer ? answer->body : std::string();
    }
    // Every file below the host's cache folder.
    [[nodiscard]] std::vector<std::string> cacheFiles() const {
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::recursive_directory_iterator(host_->home() / "cache")) {
            if (entry.is_regular_file()) {
                names.push_back(entry.path().lexically_relative(host_->home()).string());
            }
        }
        std::ranges::sort(names);
        return names;
    }

    test::TemporaryFolder folder_;
    std::atomic<std::int64_t> lead_s_{0}; // of the service's clock over the host's
    std::unique_ptr<tarn7d::Server> service_;
    int port_ = 0;
    std::filesystem::path ca_;
    std::unique_ptr<RoadHost> host_;
    std::unique_ptr<Quarry> client_; // ends before its host
};

TEST_F(FrameQuarryRoad, ASearchHasTheClipsAndTheFiguresOfItsPages) {
    SearchResults const first = search("", 1, 2);
    EXPECT_EQ(first.totalCount, 3);
    EXPECT_EQ(first.pageCount, 2);
    ASSERT_THAT(first.assets, SizeIs(2));
    EXPECT_EQ(first.assets[0].id, L"1");
    EXPECT_EQ(first.assets[1].id, L"2");
    SearchResults const second = search("", 2, 2);
    EXPECT_EQ(second.totalCount, 3);
    ASSERT_THAT(second.assets, SizeIs(1));
    EXPECT_EQ(second.assets[0].id, L"3");
    EXPECT_THAT(search("", 3, 2).assets, IsEmpty());
    SearchResults const none = search("", 1, 0);
    EXPECT_EQ(none.totalCount, 3);
    EXPECT_EQ(none.pageCount, 0);
    EXPECT_THAT(none.assets, IsEmpty());
}

TEST_F(FrameQuarryRoad, WordsArriveWithEveryCharacter) {
    for (std::string const words : {"t\u00fcrme", "m\u00f6wen & t\u00fcrme", "\"M\u00d6WEN\" = 100%",
                                    "100% turme", "  t\u00fcrme\u3000", "& t\u00fcrme &", "+ m\u00f6wen #"}) {
        SearchResults const found = search(words);
        ASSERT_THAT(found.assets, SizeIs(1)) << words;
        EXPECT_EQ(found.assets[0].id, L"3") << words;
        EXPECT_EQ(found.assets[0].logAttributes.find(LogAttribute(LogAttribute::eName)).view(),
                  "T\u00fcrme & \"M\u00f6wen\" = 100%");
    }
    EXPECT_EQ(search("pricelt:0").totalCount, 0) << "no filter words here";
    EXPECT_EQ(search("\U0001f6a2").totalCount, 0);
}

TEST_F(FrameQuarryRoad, RatesComeThroughThoughTheClientCutsThemShort) {
    EXPECT_EQ(clip("car").frameRate, Zq::FrameRate::f25);
    EXPECT_EQ(clip("tape").frameRate, Zq::FrameRate::f29_97);
    EXPECT_EQ(clip("t\u00fcrme").frameRate, Zq::FrameRate::f23_976);
}

TEST_F(FrameQuarryRoad, TheThumbnailIsAPicture) {
    Zq::Ptr<iHostImage> const picture = client_->getThumbnail(clip("t\u00fcrme"));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->getWidth(), 320u);
    EXPECT_EQ(picture->getHeight(), 180u);
}

TEST_F(FrameQuarryRoad, AnAssetBecomesAnEditThatKnowsItsClip) {
    RemoteAsset const asset = clip("car");
    Cookie cookie;
    {
        EditModifier const edit = open(asset);
        ASSERT_FALSE(edit.isEmpty());
        EXPECT_TRUE(edit->isTemporary());
        cookie = edit->getCookie();
        EXPECT_EQ(open(asset)->getCookie(), cookie) << "the local item";
        ASSERT_TRUE(project().place("S", cookie, {}, {}));
    }
    engine::EditRecord const kept = record(asset);
    EXPECT_EQ(kept.cookie, cookie);
    EXPECT_FALSE(kept.temporary);
    EXPECT_EQ(kept.name(), L"Car");
    EXPECT_EQ(kept.rate, Zq::FrameRate::f25);
    EXPECT_EQ(kept.durationInFrames(), 25);
    EXPECT_EQ(kept.sourceDuration_s, 1.0);
    EXPECT_EQ(kept.audioChannels, 0);
    EXPECT_EQ(kept.previewLocation, asset.proxyLocation);
    EXPECT_EQ(kept.mediaLocation, L"");
    EXPECT_EQ(client_->findRemoteAsset(cookie).id, asset.id);

    client_.reset();
    host_->restart();
    makeClient();
    EXPECT_EQ(client_->findLocalItem(clip("car")), cookie);
}

TEST_F(FrameQuarryRoad, APreviewReadsAsTheServiceSendsItAndLeavesNothingOnTheDisk) {
    RemoteAsset const asset = clip("t\u00fcrme");
    std::string const served = servedPreview(asset);
    ASSERT_GT(served.size(), 4000u);
    std::vector<std::string> const before = cacheFiles();
    ASSERT_TRUE(asset.proxyLocation.startsWith(L"Virtual:FQ https://api.framequarry.example/"));

    EXPECT_TRUE(same(RoadHost::readThroughHost(asset.proxyLocation), served));
    Zq::Ptr<iFile> const file = OS().fileManager().openForRead(asset.proxyLocation);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->getSize(), served.size());
    struct {
        std::size_t position;
        std::size_t size;
    } const ranges[] = {
        {served.size() - 7, 7}, {0, 1}, {served.size() / 2, 1000}, {served.size() - 3, 500}, {1, 1999}};
    for (auto const& range : ranges) {
        std::string bytes(range.size, '\0');
        ASSERT_TRUE(file->setPosition(range.position));
        std::int64_t const count = file->read(bytes.data(), static_cast<std::uint32_t>(range.size));
        std::string const expected = served.substr(range.position, range.size);
        ASSERT_EQ(count, static_cast<std::int64_t>(expected.size())) << range.position;
        EXPECT_TRUE(same(std::string_view(bytes).substr(0, expected.size()), expected)) << range.position;
    }
    EXPECT_EQ(cacheFiles(), before);
}

TEST_F(FrameQuarryRoad, APreviewDecodesToItsLastPicture) {
    RemoteAsset const asset = clip("car");
    auto const facts = engine::inspectMedia(asset.proxyLocation);
    ASSERT_TRUE(facts) << facts.error();
    EXPECT_EQ(facts->videoCodec, "h264");
    EXPECT_EQ(facts->width, 320);
    EXPECT_EQ(facts->height, 240);
    EXPECT_EQ(facts->rate, Zq::FrameRate::f25);
    EXPECT_EQ(facts->frames, 25);
    auto reader = engine::MediaReader::open(asset.proxyLocation);
    ASSERT_TRUE(reader) << reader.error();
    int pictures = 0;
    for (;;) {
        auto const picture = (*reader)->next();
        ASSERT_TRUE(picture) << picture.error();
        if (!*picture) {
            break;
        }
        EXPECT_TRUE((*picture)->toImage());
        ++pictures;
    }
    EXPECT_EQ(pictures, 25);
}

TEST_F(FrameQuarryRoad, MediaThatLiesInItsPlaceIsRelinkedAndTheCutStays) {
    RemoteAsset const asset = clip("car");
    Cookie const edit = open(asset)->getCookie();
    ASSERT_TRUE(project().place("S", edit, 0.2, 0.8));
    engine::Sequence const before = project().sequence("S").value();
    ASSERT_THAT(before.placements, SizeIs(1));
    EXPECT_EQ(before.placements[0].in, 5);
    EXPECT_EQ(before.placements[0].out, 20);
    std::filesystem::path const file = fullFile(asset);
    EXPECT_EQ(file, host_->mediaFolder() / "FrameQuarry" / "1.mp4");
    test::putFootage(test::Footage::plain, file);

    EXPECT_THAT(fetch(asset), ElementsAre(FetchLog::Line{"Car", LoggerBase::ePlain, 0}));
    EXPECT_EQ(utf8(record(asset).mediaLocation), file.string());
    auto const expectSameCut = [&] {
        engine::Sequence const now = project().sequence("S").value();
        ASSERT_THAT(now.placements, SizeIs(1));
        EXPECT_EQ(now.placements[0].number, before.placements[0].number);
        EXPECT_EQ(now.placements[0].edit, edit);
        EXPECT_EQ(now.placements[0].in, 5);
        EXPECT_EQ(now.placements[0].out, 20);
        EXPECT_EQ(now.length(), before.length());
    };
    expectSameCut();

    auto const undone = project().undo();
    ASSERT_TRUE(undone) << undone.error();
    EXPECT_EQ(record(asset).mediaLocation, L"");
    EXPECT_EQ(record(asset).previewLocation, asset.proxyLocation);
    expectSameCut();
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_THAT(fetch(asset), SizeIs(1));
    EXPECT_EQ(utf8(record(asset).mediaLocation), file.string()) << "and once more";
}

TEST_F(FrameQuarryRoad, WithoutMediaInItsPlaceTheEditStaysOnItsPreview) {
    RemoteAsset const asset = clip("car");
    ASSERT_TRUE(project().place("S", open(asset)->getCookie(), {}, {}));
    std::vector<std::string> const log = host_->logLines();
    EXPECT_THAT(fetch(asset), ElementsAre(FetchLog::Line{"Car", LoggerBase::ePlain, 0}));
    EXPECT_EQ(record(asset).mediaLocation, L"");
    EXPECT_EQ(record(asset).previewLocation, asset.proxyLocation);
    EXPECT_EQ(host_->logLines(), log);
    EXPECT_THAT(host_->mediaFiles(), IsEmpty());
    auto const undone = project().undo();
    ASSERT_TRUE(undone) << undone.error();
    EXPECT_FALSE(project().sequence("S") && !project().sequence("S")->placements.empty())
        << "placing was the last step";
}

TEST_F(FrameQuarryRoad, AFileThatIsNoMediaIsNotUsedAndKeptAside) {
    RemoteAsset const asset = clip("car");
    ASSERT_TRUE(project().place("S", open(asset)->getCookie(), {}, {}));
    std::filesystem::path const file = fullFile(asset);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << "no media";
    EXPECT_THAT(fetch(asset), ElementsAre(FetchLog::Line{"Car", LoggerBase::ePlain, 0}));
    EXPECT_EQ(record(asset).mediaLocation, L"");
    EXPECT_EQ(bytesOf(file.string() + ".refused"), "no media");
}

TEST_F(FrameQuarryRoad, PreviewsAreReadByManyWhileOthersSearch) {
    WideString const preview = clip("car").proxyLocation;
    std::string const bytes = servedPreview(clip("car"));
    std::atomic<int> wrongReads{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            for (int round = 0; round < 5; ++round) {
                wrongReads += same(RoadHost::readThroughHost(preview), bytes) ? 0 : 1;
            }
        });
    }
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(search(round % 2 == 0 ? "car" : "tape").totalCount, 1);
        client_->handleProjectExit(); // the next search asks the service again
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(wrongReads, 0);
}

TEST_F(FrameQuarryRoad, AClockThatIsTenMinutesWrongFindsNothingUntilItIsRight) {
    for (std::int64_t const lead_s : {600, -600}) {
        lead_s_ = lead_s;
        SearchResults const nothing = search("car");
        EXPECT_THAT(nothing.assets, IsEmpty()) << lead_s;
        EXPECT_EQ(nothing.totalCount, 0) << lead_s;
        EXPECT_EQ(nothing.pageCount, 0) << lead_s;
    }
    lead_s_ = 200;
    EXPECT_THAT(search("car").assets, SizeIs(1));
}

TEST_F(FrameQuarryRoad, ASearchThatGoesWrongFindsNothingAndTheNextOneEverything) {
    using enum tarn7d::FaultKind;
    for (tarn7d::FaultKind const kind : {status, notJson, cut, wrongLength, lostAnswer, expiredAddress}) {
        tarn7d::FaultRule rule;
        rule.path = "/api/v1/stock-items/search/";
        rule.kind = kind;
        rule.bytes = kind == wrongLength ? -10 : 20;
        rule.count = 10; // also where the host asks again
        (void)service_->faults().add(rule);
        client_->disconnect(); // forgets the pages that it knows
        EXPECT_EQ(client_->connect(client_->getDescription().connection, LoggerHandle()), 0);
        SearchResults const nothing = search("");
        EXPECT_GT(service_->faults().list().at(0).met, 0);
        EXPECT_THAT(nothing.assets, IsEmpty()) << static_cast<int>(kind);
        EXPECT_EQ(nothing.totalCount, 0) << static_cast<int>(kind);
        service_->faults().clear();
        EXPECT_THAT(search("").assets, SizeIs(3)) << static_cast<int>(kind);
    }
}

TEST_F(FrameQuarryRoad, AServiceThatIsGoneGivesNothingAndHarmsNothing) {
    RemoteAsset const asset = clip("car");
    service_.reset();
    SearchResults const nothing = search("tape");
    EXPECT_THAT(nothing.assets, IsEmpty());
    EXPECT_EQ(nothing.totalCount, 0);
    EXPECT_EQ(nothing.pageCount, 0);
    EXPECT_FALSE(client_->getThumbnail(asset));
    EXPECT_EQ(RoadHost::readThroughHost(asset.proxyLocation), "(failed)");
    EXPECT_FALSE(engine::inspectMedia(asset.proxyLocation));
    EditModifier const edit = open(asset);
    ASSERT_FALSE(edit.isEmpty()) << "a clip needs no service";
    EXPECT_THAT(fetch(asset), ElementsAre(FetchLog::Line{"Car", LoggerBase::ePlain, 0}));
    EXPECT_EQ(client_->connect(client_->getDescription().connection, LoggerHandle()), 0);
    EXPECT_THAT(search("").assets, IsEmpty());
}

} // namespace
