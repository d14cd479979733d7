#include "apps/tarn7d/Server.h"

#include <atomic>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include "apps/tarn7d/MediaProbe.h"
#include "apps/tarn7d/Renditions.h"
#include "tests/tarn7d/ServerFixture.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

namespace fs = std::filesystem;
using namespace tarn7d;
using testing::HasSubstr;
using testing::StartsWith;

using test::Client;
using test::formType;

class ServerTest : public test::ServerFixture {};

TEST_F(ServerTest, ASearchIsAnsweredOverVerifiedTls) {
    start();
    Client good = client();
    EXPECT_EQ(total(good), 2);
    Client stranger = client();
    stranger.set_ca_cert_path((folder_.path() / "none.pem").c_str());
    EXPECT_FALSE(stranger.Post("/?page=api", "x", formType));
}

TEST_F(ServerTest, TheBodyArrivesWithEveryCharacter) {
    start();
    Client connection = client();
    ASSERT_TRUE(server_->addAccount("a&b=c%20+d", "{\"x\":[&apicx=1]}", 0));
    std::string const commands = R"([{"command":"login","username":"a&b=c%20+d","password":)" +
                                 test::jsonString("{\"x\":[&apicx=1]}") + "}]";
    auto const result = connection.Post("/?page=api", test::requestBody(commands), formType);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->get_header_value("Content-Type"), "application/json; charset=utf-8");
    EXPECT_GT(JSON::orEmpty(test::reply(test::parseJson(result->body))).getInt("cx", -1), 0);
}

TEST_F(ServerTest, OtherAddressesAndMethodsAreNotFound) {
    start();
    Client connection = client();
    for (char const* path : {"/", "/etc/passwd", "/icons/", "/icons/../catalogue.db",
                             "/icons/%2e%2e/accounts.db", "/000000001_iconm.jpeg.new", "/1_iconm.jpeg",
                             "/icons/99999999999_iconm.jpeg", "/icons/000000999_iconm.jpeg", "/server.key"}) {
        auto const result = connection.Get(path);
        ASSERT_TRUE(result) << path;
        EXPECT_EQ(result->status, 404) << path;
    }
    auto const otherPage = connection.Post("/?page=shop", test::requestBody("[]"), formType);
    ASSERT_TRUE(otherPage);
    EXPECT_EQ(otherPage->status, 404);
}

TEST_F(ServerTest, ABodyBeyondTheLimitIsRefused) {
    start();
    Client connection = client();
    auto const result = connection.Post("/?page=api", std::string((std::size_t{8} << 20) + 1, 'x'), formType);
    // The service may close before everything is sent, which the client sees as a failed write.
    EXPECT_TRUE(!result || result->status == 413);
    Client next = client();
    EXPECT_EQ(total(next), 2);
}

TEST_F(ServerTest, AnAnswerIsNotCompressed) {
    start();
    Client connection = client();
    auto const result = connection.Post("/?page=api", {{"Accept-Encoding", "gzip, br"}},
                                        test::requestBody(R"([{"command":"search","query":""}])"), formType);
    ASSERT_TRUE(result);
    EXPECT_FALSE(result->has_header("Content-Encoding"));
}

TEST_F(ServerTest, AThumbnailIsThereWhenFirstAskedFor) {
    start();
    Client connection = client();
    auto const result = connection.Get("/icons/000000001_iconm.jpeg");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    EXPECT_EQ(result->get_header_value("Content-Type"), "image/jpeg");
    EXPECT_THAT(result->body, StartsWith("\xff\xd8\xff"));
    auto const again =
        connection.Get("/icons/000000001_iconm.jpeg", {{"If-None-Match", result->get_header_value("ETag")}});
    ASSERT_TRUE(again);
    EXPECT_EQ(again->status, 304);
    EXPECT_TRUE(again->body.empty());
}

TEST_F(ServerTest, ManyAskingForOneThumbnailAtOnceAllGetIt) {
    start();
    std::atomic<int> good = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([this, &good] {
                Client connection = client();
                auto const result = connection.Get("/icons/000000002_iconm.jpeg");
                good += result && result->status == 200 && result->body.starts_with("\xff\xd8\xff") ? 1 : 0;
            });
        }
    }
    EXPECT_EQ(good, 8);
}

TEST_F(ServerTest, APreviewKeepsRateAndLengthAndComesInParts) {
    start();
    Client connection = client();
    auto const whole = connection.Get("/previews/000000002.mov");
    ASSERT_TRUE(whole);
    ASSERT_EQ(whole->status, 200);
    EXPECT_EQ(whole->get_header_value("Content-Type"), "video/quicktime");
    std::ofstream(folder_.path() / "preview.mov", std::ios::binary) << whole->body;
    auto const info = probeMedia(folder_.path() / "preview.mov");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->rate, (Rate{24000, 1001}));
    EXPECT_NEAR(static_cast<double>(info->duration_ms), 500, 45);
    EXPECT_EQ(info->width, 640);
    EXPECT_EQ(info->height, 360);

    std::string const& bytes = whole->body;
    std::string const size = std::to_string(bytes.size());
    struct {
        char const* range;
        int status;
        std::string body;
        std::string contentRange;
    } const cases[] = {
        {"bytes=0-9", 206, bytes.substr(0, 10), "bytes 0-9/" + size},
        {"bytes=100-", 206, bytes.substr(100), "bytes 100-" + std::to_string(bytes.size() - 1) + "/" + size},
        {"bytes=-7", 206, bytes.substr(bytes.size() - 7),
         "bytes " + std::to_string(bytes.size() - 7) + "-" + std::to_string(bytes.size() - 1) + "/" + size},
        {"bytes=5-99999999999", 206, bytes.substr(5),
         "bytes 5-" + std::to_string(bytes.size() - 1) + "/" + size},
        {"bytes=0-1,5-6", 200, bytes, ""},
    };
    for (auto const& expected : cases) {
        auto const part = connection.Get("/000000002_prev_264.mov", {{"Range", expected.range}});
        ASSERT_TRUE(part) << expected.range;
        EXPECT_EQ(part->status, expected.status) << expected.range;
        EXPECT_TRUE(part->body == expected.body) << expected.range;
        EXPECT_EQ(part->get_header_value("Content-Range"), expected.contentRange);
    }
    auto const behind = connection.Get("/000000002_prev_264.mov", {{"Range", "bytes=" + size + "-"}});
    ASSERT_TRUE(behind);
    EXPECT_EQ(behind->status, 416);
    EXPECT_EQ(behind->get_header_value("Content-Range"), "bytes */" + size);
}

TEST_F(ServerTest, AnAnswerThatIsNoFileIsWholeWhateverRangeWasAskedFor) {
    start();
    Client connection = client();
    for (char const* const range : {"bytes=0-524287", "bytes=5-", "bytes=-65536", "bytes=0-1,5-6"}) {
        for (char const* const path : {"/000000009_prev_264.mov", "/000000001_main_xl.mp4", "/nowhere"}) {
            auto const answer = connection.Get(path, {{"Range", range}});
            ASSERT_TRUE(answer) << path << " " << range;
            EXPECT_EQ(answer->status, 404);
            EXPECT_EQ(answer->get_header_value("Content-Length"), std::to_string(answer->body.size()));
            EXPECT_THAT(answer->body, testing::AnyOf("not found\n", ""));
        }
    }
}

TEST_F(ServerTest, ARangeOfAnotherVersionGetsTheWholeFile) {
    start();
    Client connection = client();
    auto const head = connection.Head("/icons/000000001_iconm.jpeg");
    ASSERT_TRUE(head);
    std::string const etag = head->get_header_value("ETag");
    EXPECT_THAT(etag, StartsWith("\""));
    EXPECT_GT(std::stoul(head->get_header_value("Content-Length")), 100U);
    auto const same =
        connection.Get("/icons/000000001_iconm.jpeg", {{"Range", "bytes=0-0"}, {"If-Range", etag}});
    auto const other =
        connection.Get("/icons/000000001_iconm.jpeg", {{"Range", "bytes=0-0"}, {"If-Range", "\"x\""}});
    ASSERT_TRUE(same && other);
    EXPECT_EQ(same->status, 206);
    EXPECT_EQ(same->body.size(), 1U);
    EXPECT_EQ(other->status, 200);
    EXPECT_GT(other->body.size(), 100U);
}

TEST_F(ServerTest, OnlyLargeClipsHaveAHighQualityPreview) {
    start();
    Client connection = client();
    auto const small = connection.Head("/000000001_main_xl.mp4");
    ASSERT_TRUE(small);
    EXPECT_EQ(small->status, 404);
    auto const large = connection.Get("/000000002_main_xl.mp4");
    ASSERT_TRUE(large);
    EXPECT_EQ(large->status, 200);
    EXPECT_EQ(large->get_header_value("Content-Type"), "video/mp4");
}

TEST_F(ServerTest, AClipWhoseFileCannotBeConvertedHasNoPreviewAndHoldsNobodyUp) {
    start();
    // The file goes between the scan and the request.
    server_->rescan();
    Client connection = client();
    std::ofstream(footage_ / "a.mov", std::ios::binary) << "no longer a movie, and found out on conversion";
    auto const result = connection.Get("/000000001.mov");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 404);
    auto const other = connection.Get("/icons/000000002_iconm.jpeg");
    ASSERT_TRUE(other);
    EXPECT_EQ(other->status, 200);
}

TEST_F(ServerTest, AnAddedFileIsFoundWithoutARestart) {
    start();
    Client connection = client();
    test::putFootage(test::Footage::fast, footage_ / "c.mov");
    server_->rescan();
    EXPECT_EQ(total(connection), 3);
    fs::remove(footage_ / "a.mov");
    server_->rescan();
    EXPECT_EQ(total(connection), 2);
}

TEST_F(ServerTest, TheFolderIsWatched) {
    start();
    Client connection = client();
    test::putFootage(test::Footage::fast, footage_ / "c.mov");
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (total(connection) != 3 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_EQ(total(connection), 3);
}

TEST_F(ServerTest, IdleConnectionsStarveNobodyAndDoNotHoldUpTheEnd) {
    start();
    std::vector<std::unique_ptr<Client>> idle;
    for (int i = 0; i < 40; ++i) {
        idle.push_back(std::make_unique<Client>(port_, server_->caFile()));
        ASSERT_EQ(total(*idle.back()), 2);
    }
    Client next = client();
    EXPECT_EQ(total(next), 2);
    auto const begin = std::chrono::steady_clock::now();
    server_->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST_F(ServerTest, ManyClientsAtOnceGetTheirOwnAnswers) {
    start();
    std::atomic<int> good = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 6; ++i) {
            threads.emplace_back([this, &good, i] {
                Client connection = client();
                for (int round = 0; round < 10; ++round) {
                    std::string const word = "nonsense" + std::to_string(i * 100 + round);
                    auto const result = connection.Post(
                        "/?page=api", test::requestBody("[{\"command\":\"" + word + "\"}]"), formType);
                    good +=
                        result && result->body.find("Unknown command: " + word + "\"") != std::string::npos
                            ? 1
                            : 0;
                }
            });
        }
        threads.emplace_back([this] { server_->rescan(); });
    }
    EXPECT_EQ(good, 60);
}

TEST_F(ServerTest, TheSamePortAndFolderAreNotSharedAndOnlyLoopbackIsServed) {
    start();
    EXPECT_THROW(Server{options()}, std::runtime_error);
    ServerOptions other = options();
    other.data = folder_.path() / "other";
    other.port = port_;
    Server second(other);
    EXPECT_THROW(second.start(), std::runtime_error);
    other.data = folder_.path() / "third";
    other.host = "0.0.0.0";
    EXPECT_THROW(Server{other}, std::runtime_error);
    EXPECT_FALSE(fs::exists(other.data));
}

TEST_F(ServerTest, TheDataFolderMustNotLieInTheFootageFolder) {
    ServerOptions inside = options();
    inside.data = footage_ / "data";
    EXPECT_THROW(Server{inside}, std::runtime_error);
    EXPECT_FALSE(fs::exists(inside.data));
}

TEST_F(ServerTest, PreviewsArePreparedAhead) {
    ServerOptions ahead = options();
    ahead.prepareAhead = true;
    server_ = std::make_unique<Server>(ahead);
    (void)server_->start();
    auto const made = [this] {
        int files = 0;
        for (auto const& entry : fs::recursive_directory_iterator(folder_.path() / "data" / "renditions")) {
            files += entry.is_regular_file() && entry.path().extension() != ".new" ? 1 : 0;
        }
        return files;
    };
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (made() < 5 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    EXPECT_EQ(made(), 5); // two thumbnails, two previews, one of high quality
}

TEST_F(ServerTest, NumbersAndRenditionsSurviveARestart) {
    auto const thumbnail = [this]() -> std::string {
        Client connection = client();
        auto const answer = connection.Get("/icons/000000001_iconm.jpeg");
        return answer && answer->status == 200 ? answer->body : std::string();
    };
    auto const whenMade = [this]() -> fs::file_time_type {
        for (fs::directory_entry const& entry : fs::recursive_directory_iterator(options().data)) {
            if (entry.path().extension() == ".jpeg") { // the one thumbnail that was asked for
                return entry.last_write_time();
            }
        }
        return {};
    };
    start();
    std::string const before = thumbnail();
    fs::file_time_type const made = whenMade();
    ASSERT_NE(before, "");
    ASSERT_NE(made, fs::file_time_type());
    server_.reset();
    start();
    Client connection = client();
    EXPECT_EQ(total(connection), 2);
    EXPECT_EQ(thumbnail(), before);
    EXPECT_EQ(whenMade(), made) << "the picture was made again";
}

TEST(RenditionName, IsReadStrictly) {
    EXPECT_EQ(parseRenditionName("000000123_iconm.jpeg"), (RenditionName{123, RenditionKind::thumbnail}));
    EXPECT_EQ(parseRenditionName("000000123.mov"), (RenditionName{123, RenditionKind::preview}));
    EXPECT_EQ(parseRenditionName("000000123_prev_264.mov"), (RenditionName{123, RenditionKind::preview}));
    EXPECT_EQ(parseRenditionName("1000000123_main_xl.mp4"),
              (RenditionName{1000000123, RenditionKind::highQualityPreview, highQualityHeight}));
    EXPECT_EQ(parseRenditionName("000000123.mp4"), (RenditionName{123, RenditionKind::highQualityPreview}));
    for (char const* name : {"", "123.mov", "000000123", "000000123.MOV", "000000123.mov ", "-00000123.mov",
                             "00000000000123.mov", "000000123_iconm.jpg"}) {
        EXPECT_FALSE(parseRenditionName(name)) << name;
    }
}

} // namespace
