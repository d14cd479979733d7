#include "apps/tarn7d/DownloadAddresses.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/tarn7d/MediaProbe.h"
#include "tests/tarn7d/ServerFixture.h"
#include "tests/tarn7d/TestFootage.h"

namespace {

namespace fs = std::filesystem;
using namespace tarn7d;
using test::Client;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class DownloadAddressesTest : public testing::Test {
protected:
    struct Parts {
        std::string path;
        std::string expires;
        std::string signature;
    };
    [[nodiscard]] static Parts split(std::string const& address) {
        std::size_t const expires = address.find("?expires=");
        std::size_t const signature = address.find("&signature=");
        return {address.substr(0, expires), address.substr(expires + 9, signature - expires - 9),
                address.substr(signature + 11)};
    }
    [[nodiscard]] std::optional<DownloadAddresses::Target> check(Parts const& parts) const {
        return addresses_.check(parts.path, parts.expires, parts.signature);
    }

    test::TemporaryFolder folder_;
    std::int64_t now_ = 1'800'000'000;
    fs::path const secret_ = folder_.path() / "download.key";
    DownloadAddresses addresses_{secret_, std::chrono::seconds(60), [this] { return now_; }};
    DownloadAddresses::Target const target_{5, ClipVersion::original, "mov"};
};

TEST_F(DownloadAddressesTest, AnAddressLeadsToItsClipAndVersion) {
    EXPECT_EQ(check(split(addresses_.make(target_))), target_);
    DownloadAddresses::Target const second{1234567890, ClipVersion::transcoded, "mp4"};
    EXPECT_EQ(check(split(addresses_.make(second))), second);
}

TEST_F(DownloadAddressesTest, AnAddressExpires) {
    Parts const parts = split(addresses_.make(target_));
    now_ += 59;
    EXPECT_TRUE(check(parts));
    now_ += 1;
    EXPECT_FALSE(check(parts));
    EXPECT_FALSE(check(split(addresses_.make(target_, DownloadAddresses::Expiry::past))));
}

TEST_F(DownloadAddressesTest, AnyChangeOfAnAddressMakesItBad) {
    Parts const good = split(addresses_.make(target_));
    Parts other = good;
    other.path = "/full/000000006.mov";
    EXPECT_FALSE(check(other));
    other = good;
    other.path = "/full/000000005_h264.mov";
    EXPECT_FALSE(check(other));
    other = good;
    other.expires = std::to_string(now_ + 1'000'000);
    EXPECT_FALSE(check(other));
    for (std::size_t i = 0; i < good.signature.size(); ++i) {
        other = good;
        other.signature[i] = good.signature[i] == '0' ? '1' : '0';
        EXPECT_FALSE(check(other)) << i;
    }
    other = good;
    other.signature.clear();
    EXPECT_FALSE(check(other));
    other.signature = good.signature + good.signature;
    EXPECT_FALSE(check(other));
    EXPECT_FALSE(addresses_.check("", "", ""));
}

TEST_F(DownloadAddressesTest, TheSecretIsKeptForTheOwnerAloneAndOutlivesTheService) {
    using fs::perms;
    EXPECT_EQ(fs::status(secret_).permissions(), perms::owner_read | perms::owner_write);
    Parts const parts = split(addresses_.make(target_));
    DownloadAddresses const restarted(secret_, std::chrono::seconds(60), [this] { return now_; });
    EXPECT_EQ(restarted.check(parts.path, parts.expires, parts.signature), target_);
    EXPECT_THAT(addresses_.make(target_), Not(HasSubstr(test::fileBytes(secret_))));
}

TEST_F(DownloadAddressesTest, AnotherServicesAddressIsBad) {
    DownloadAddresses const other(folder_.path() / "other.key", std::chrono::seconds(60),
                                  [this] { return now_; });
    EXPECT_FALSE(check(split(other.make(target_))));
}

TEST_F(DownloadAddressesTest, ADamagedSecretIsReplaced) {
    std::ofstream(secret_) << "short";
    DownloadAddresses const next(secret_, std::chrono::seconds(60), [this] { return now_; });
    EXPECT_EQ(test::fileBytes(secret_).size(), 64U);
    Parts const parts = split(addresses_.make(target_));
    EXPECT_FALSE(next.check(parts.path, parts.expires, parts.signature));
}

class FullFileTest : public test::ServerFixture {};

TEST_F(FullFileTest, ABoughtFileComesAsItIs) {
    start();
    Client connection = client();
    std::string const path = boughtFile(connection, signIn(connection), 2);
    ASSERT_THAT(path, StartsWith("/full/000000002.mov?"));
    auto const result = connection.Get(path);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    EXPECT_TRUE(result->body == test::fileBytes(footage_ / "b.mov"));
    EXPECT_EQ(result->get_header_value("Content-Length"), std::to_string(fs::file_size(footage_ / "b.mov")));
    EXPECT_EQ(result->get_header_value("Content-Type"), "video/quicktime");
    EXPECT_EQ(result->get_header_value("Accept-Ranges"), "bytes");
    EXPECT_EQ(result->get_header_value("Cache-Control"), "private, no-cache");
    EXPECT_EQ(result->get_header_value_count("Cache-Control"), 1U);
    auto const head = connection.Head(path);
    ASSERT_TRUE(head);
    EXPECT_EQ(head->status, 200);
    EXPECT_EQ(head->get_header_value("Content-Length"), std::to_string(result->body.size()));
}

TEST_F(FullFileTest, AFullFileComesInPartsWithValidators) {
    start();
    Client connection = client();
    std::string const path = boughtFile(connection, signIn(connection), 1);
    std::string const bytes = test::fileBytes(footage_ / "a.mov");
    auto const part = connection.Get(path, {{"Range", "bytes=100-199"}});
    ASSERT_TRUE(part);
    EXPECT_EQ(part->status, 206);
    EXPECT_TRUE(part->body == bytes.substr(100, 100));
    EXPECT_EQ(part->get_header_value("Content-Range"), "bytes 100-199/" + std::to_string(bytes.size()));
    std::string const etag = part->get_header_value("ETag");
    EXPECT_THAT(etag, StartsWith("\""));
    auto const same = connection.Get(path, {{"Range", "bytes=-5"}, {"If-Range", etag}});
    auto const other = connection.Get(path, {{"Range", "bytes=-5"}, {"If-Range", "\"x\""}});
    auto const known = connection.Get(path, {{"If-None-Match", etag}});
    auto const behind = connection.Get(path, {{"Range", "bytes=99999999-"}});
    ASSERT_TRUE(same && other && known && behind);
    EXPECT_EQ(same->status, 206);
    EXPECT_TRUE(same->body == bytes.substr(bytes.size() - 5));
    EXPECT_EQ(other->status, 200);
    EXPECT_EQ(other->body.size(), bytes.size());
    EXPECT_EQ(known->status, 304);
    EXPECT_TRUE(known->body.empty());
    EXPECT_EQ(behind->status, 416);
    EXPECT_EQ(behind->get_header_value("Content-Range"), "bytes */" + std::to_string(bytes.size()));
}

TEST_F(FullFileTest, AFileBeyondFourGigabytesHasItsEnd) {
    constexpr std::uintmax_t size = (std::uintmax_t{5} << 30) + 10; // mostly a hole
    fs::resize_file(footage_ / "a.mov", size);
    start();
    Client connection = client();
    std::string const path = boughtFile(connection, signIn(connection), 1);
    auto const head = connection.Head(path);
    ASSERT_TRUE(head);
    EXPECT_EQ(head->get_header_value("Content-Length"), std::to_string(size));
    auto const end = connection.Get(path, {{"Range", "bytes=" + std::to_string(size - 7) + "-"}});
    ASSERT_TRUE(end);
    EXPECT_EQ(end->status, 206);
    EXPECT_TRUE(end->body == std::string(7, '\0'));
    EXPECT_EQ(end->get_header_value("Content-Range"), "bytes " + std::to_string(size - 7) + "-" +
                                                          std::to_string(size - 1) + "/" +
                                                          std::to_string(size));
}

TEST_F(FullFileTest, AFileThatChangesGetsAnotherValidator) {
    start();
    Client connection = client();
    std::string const path = boughtFile(connection, signIn(connection), 1);
    auto const before = connection.Head(path);
    test::putFootage(test::Footage::fast, footage_ / "a.mov");
    server_->rescan();
    auto const after = connection.Head(path);
    ASSERT_TRUE(before && after);
    EXPECT_EQ(after->status, 200);
    EXPECT_NE(before->get_header_value("ETag"), after->get_header_value("ETag"));
}

TEST_F(FullFileTest, TheTranscodedVersionIsTheHighQualityPreview) {
    start();
    Client connection = client();
    std::string const path = boughtFile(connection, signIn(connection), 2, "1");
    ASSERT_THAT(path, StartsWith("/full/000000002_h264.mp4?"));
    auto const result = connection.Get(path);
    ASSERT_TRUE(result);
    ASSERT_EQ(result->status, 200);
    EXPECT_EQ(result->get_header_value("Content-Type"), "video/mp4");
    std::ofstream(folder_.path() / "small.mp4", std::ios::binary) << result->body;
    auto const info = probeMedia(folder_.path() / "small.mp4");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->width, 1280);
    EXPECT_EQ(info->height, 720);
    EXPECT_EQ(info->rate, (Rate{24000, 1001}));
}

TEST_F(FullFileTest, ABadForgedOrMissingSignatureIsForbidden) {
    start();
    Client connection = client();
    std::string const good = boughtFile(connection, signIn(connection), 1);
    std::string otherClip = good;
    otherClip[otherClip.find("000000001") + 8] = '2';
    std::string forged = good;
    forged.back() = forged.back() == '0' ? '1' : '0';
    std::string longer = good;
    longer.insert(longer.find("&signature"), "0");
    for (std::string const& path :
         {otherClip, forged, longer, good.substr(0, good.find('?')), std::string("/full/"),
          std::string("/full/000000001.mov?expires=99999999999&signature="),
          std::string("/full/../accounts.db"), std::string("/full/%2e%2e/download.key"),
          "/full/x/" + good.substr(6)}) {
        auto const result = connection.Get(path);
        ASSERT_TRUE(result) << path;
        EXPECT_EQ(result->status, 403) << path;
        EXPECT_LT(result->body.size(), 100U);
    }
    // The place of a good address gives none of the file's own name away.
    EXPECT_THAT(good, Not(HasSubstr("a.mov")));
    EXPECT_THAT(good, Not(HasSubstr("footage")));
}

TEST_F(FullFileTest, AnExpiredAddressIsForbidden) {
    ServerOptions expired = options();
    expired.downloadLifetime = std::chrono::seconds(0);
    start(expired);
    Client connection = client();
    auto const result = connection.Get(boughtFile(connection, signIn(connection), 1));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 403);
}

TEST_F(FullFileTest, AnAddressOutlivesTheSessionAndTheService) {
    start();
    std::string path;
    {
        Client connection = client();
        SessionKey const session = signIn(connection);
        path = boughtFile(connection, session, 1);
        (void)askOne(connection, R"({"command":"logout"})", session);
    }
    server_.reset();
    start();
    Client connection = client();
    auto const result = connection.Head(path);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
}

TEST_F(FullFileTest, AFileThatIsGoneIsNotFound) {
    start();
    Client connection = client();
    std::string const path = boughtFile(connection, signIn(connection), 1);
    fs::remove(footage_ / "a.mov");
    auto const unnoticed = connection.Get(path);
    ASSERT_TRUE(unnoticed);
    EXPECT_EQ(unnoticed->status, 404);
    server_->rescan();
    auto const noticed = connection.Get(path);
    ASSERT_TRUE(noticed);
    EXPECT_EQ(noticed->status, 404);
}

TEST_F(FullFileTest, FootageThatIsALinkIsServed) {
    test::putFootage(test::Footage::fast, folder_.path() / "elsewhere.mov");
    fs::create_symlink(folder_.path() / "elsewhere.mov", footage_ / "c.mov");
    start();
    Client connection = client();
    auto const result = connection.Get(boughtFile(connection, signIn(connection), 3));
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    EXPECT_TRUE(result->body == test::fileBytes(folder_.path() / "elsewhere.mov"));
}

} // namespace
