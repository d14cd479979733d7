#include "repository/Thumbnails.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/repository/TestRepository.h"

namespace repository_tests {
namespace {

constexpr auto thumbnailKind = MediaFileRepositoryBase::eThumbnail;

class ThumbnailsOfARepository : public testing::Test {
protected:
    ThumbnailsOfARepository() {
        host.network.answerWith([this](fake::Request const&) { return answer; });
    }
    [[nodiscard]] Zq::Ptr<iHostImage> thumbnail() { return repository.getThumbnail(asset); }

    fake::Host host;
    TestRepository repository;
    RemoteAsset asset = assetWithId(L"000000123");
    std::optional<fake::Answer> answer = fake::Answer{"picture of the sea", 200};
    WideString const address = L"https://media.test/000000123.jpeg";
};

TEST_F(ThumbnailsOfARepository, APictureComesFromItsAddress) {
    ASSERT_TRUE(thumbnail());
    ASSERT_EQ(host.network.requestCount(), 1U);
    fake::Request const request = host.network.lastRequest();
    EXPECT_EQ(request.method, fake::Request::Method::get);
    EXPECT_EQ(request.server, "media.test");
    EXPECT_EQ(request.path, "/000000123.jpeg");
    EXPECT_TRUE(request.secure);
}

TEST_F(ThumbnailsOfARepository, TheSecondTimeItComesFromTheCache) {
    ASSERT_TRUE(thumbnail());
    EXPECT_TRUE(thumbnail());
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(ThumbnailsOfARepository, TheServerAndTheSchemeAreThoseOfTheAddress) {
    repository.remote = [](RemoteAsset const&, MediaFileRepositoryBase::eMediaType) {
        return WideString(L"http://media.test:8080/a/b.jpeg?size=m");
    };
    ASSERT_TRUE(thumbnail());
    ASSERT_EQ(host.network.connections().size(), 1U);
    HTTPConnectionInfo const info = host.network.connections().front();
    EXPECT_EQ(info.server, L"media.test:8080");
    EXPECT_EQ(info.secure, 0);
    EXPECT_EQ(info.port, 0);
    EXPECT_TRUE(info.user.isEmpty());
    EXPECT_EQ(host.network.lastRequest().path, "/a/b.jpeg?size=m");
}

TEST_F(ThumbnailsOfARepository, OnlyTheAddressOfTheThumbnailIsAskedFor) {
    std::vector<MediaFileRepositoryBase::eMediaType> kinds;
    repository.remote = [&kinds](RemoteAsset const&, MediaFileRepositoryBase::eMediaType kind) {
        kinds.push_back(kind);
        return WideString(L"https://media.test/a.jpeg");
    };
    ASSERT_TRUE(thumbnail());
    ASSERT_FALSE(kinds.empty());
    EXPECT_EQ(std::ranges::count(kinds, thumbnailKind), static_cast<std::ptrdiff_t>(kinds.size()));
}

TEST_F(ThumbnailsOfARepository, ADamagedEntryIsFetchedOnceMore) {
    (void)host.cache.store(address, "damaged", 7);
    EXPECT_TRUE(thumbnail());
    EXPECT_EQ(host.network.requestCount(), 1U);
    EXPECT_TRUE(thumbnail());
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(ThumbnailsOfARepository, ADamagedEntryWhoseAddressGivesNoPictureIsAskedForOnceOnly) {
    (void)host.cache.store(address, "damaged", 7);
    answer = fake::Answer{"<html>", 200};
    EXPECT_FALSE(thumbnail());
    EXPECT_EQ(host.network.requestCount(), 1U);
}

TEST_F(ThumbnailsOfARepository, ADamagedEntryWhoseServerIsGoneGivesNone) {
    (void)host.cache.store(address, "damaged", 7);
    answer = std::nullopt;
    EXPECT_FALSE(thumbnail());
}

TEST_F(ThumbnailsOfARepository, APictureThatAnotherThreadFetchedMeanwhileCostsNoTransfer) {
    int looks = 0;
    repository.remote = [this, &looks](RemoteAsset const&, MediaFileRepositoryBase::eMediaType) {
        if (++looks == 2) { // after the look into the cache, before the transfer
            (void)host.cache.store(address, "picture", 7);
        }
        return address;
    };
    EXPECT_TRUE(thumbnail());
    EXPECT_EQ(looks, 2);
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(ThumbnailsOfARepository, WithoutAnAddressNothingIsAsked) {
    repository.remote = [](RemoteAsset const&, MediaFileRepositoryBase::eMediaType) { return WideString(); };
    EXPECT_FALSE(thumbnail());
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_TRUE(host.network.connections().empty());
}

TEST_F(ThumbnailsOfARepository, AnAddressThatIsNoneAsksNobody) {
    for (wchar_t const* bad :
         {L"file:///etc/passwd", L"https://", L"https:///a.jpeg", L"https://me@media.test/a",
          L"https://media.test/a\nHost: other", L"nonsense"}) {
        repository.remote = [bad](RemoteAsset const&, MediaFileRepositoryBase::eMediaType) {
            return WideString(bad);
        };
        EXPECT_FALSE(thumbnail()) << toUTF8(WideString(bad)).c_str();
    }
    EXPECT_TRUE(host.network.connections().empty());
}

TEST_F(ThumbnailsOfARepository, AHostileIdStaysTextOfTheAddress) {
    asset.id = L"../../../../home/user/.profile";
    ASSERT_TRUE(thumbnail());
    EXPECT_EQ(host.network.lastRequest().path, "/../../../../home/user/.profile.jpeg");
    // The address is the entry's key, never its path: the cache alone names files.
    EXPECT_FALSE(host.cache.find(L"https://media.test/../../../../home/user/.profile.jpeg").isEmpty());
    EXPECT_TRUE(host.files.disk->files.empty());
}

TEST_F(ThumbnailsOfARepository, AnotherStatusThan200GivesNoneAndCachesNothing) {
    for (int const status : {204, 206, 301, 403, 404, 500}) {
        answer = fake::Answer{"picture of an error", status};
        EXPECT_FALSE(thumbnail()) << status;
        EXPECT_TRUE(host.cache.find(address).isEmpty()) << status;
    }
    answer = fake::Answer{"picture", 200};
    EXPECT_TRUE(thumbnail());
}

TEST_F(ThumbnailsOfARepository, AnUnreachableServerGivesNone) {
    answer = std::nullopt;
    EXPECT_FALSE(thumbnail());
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_TRUE(host.cache.find(address).isEmpty());
}

TEST_F(ThumbnailsOfARepository, AnEmptyAnswerIsNotCached) {
    answer = fake::Answer{"", 200};
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_TRUE(host.cache.find(address).isEmpty());
}

TEST_F(ThumbnailsOfARepository, APictureOfTheGreatestSizeIsTakenAndOneByteMoreIsNot) {
    std::string body("picture");
    body.resize(Thumbnails::maximumBytes);
    answer = fake::Answer{body, 200};
    host.network.setBlockSize(std::size_t{1} << 20);
    WideString const path = repository.downloadThumbnail(asset);
    EXPECT_EQ(host.cache.bytesAt(path), body);

    host.cache.forget(address);
    body += 'x';
    answer = fake::Answer{body, 200};
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_TRUE(host.cache.find(address).isEmpty());
}

// Sends `blocks` blocks of one mebibyte, whatever length it announces, until the receiver has had enough.
class UnboundedServer final : public iHTTPServer {
public:
    UnboundedServer(std::uint64_t announced, int blocks, int status, int& sent)
        : announced_(announced), blocks_(blocks), status_(status), sent_(sent) {}
    Zq::Ptr<iHTTPReply> get(WideString const&) override { return {}; }
    Zq::Ptr<iHTTPReply> postForm(WideString const&, WideString const&) override { return {}; }
    int httpGetToReceiver(WideString const&, iDataReceiver& receiver) override {
        bool taken = receiver.beginReceive(announced_);
        std::string const block(std::size_t{1} << 20, 'p');
        for (int i = 0; taken && i < blocks_; ++i) {
            taken = receiver.receiveData(std::uint64_t{block.size()} * static_cast<std::uint64_t>(i),
                                         Zq::makeShared<fake::MemHolder>(block));
            ++sent_;
        }
        receiver.endReceive();
        return taken ? status_ : 0;
    }

private:
    std::uint64_t announced_;
    int blocks_;
    int status_;
    int& sent_;
};

class UnboundedNetwork final : public iNetwork {
public:
    Zq::Ptr<iHTTPServer> createHTTPServer(HTTPConnectionInfo const&) override {
        return Zq::makeShared<UnboundedServer>(announced, blocks, status, sent);
    }
    WideString encodeUrlComponent(WideString const& text) override { return text; }

    std::uint64_t announced = 0;
    int blocks = 1000;
    int status = 200;
    int sent = 0;
};

class ThumbnailsOfAnUnboundedServer : public testing::Test {
protected:
    ThumbnailsOfAnUnboundedServer() {
        HostServices services = installedHost();
        services.network = &network;
        before = installHost(services);
    }
    ~ThumbnailsOfAnUnboundedServer() override { installHost(before); }

    fake::Host host;
    UnboundedNetwork network;
    HostServices before;
    TestRepository repository;
    RemoteAsset asset = assetWithId(L"1");
};

TEST_F(ThumbnailsOfAnUnboundedServer, AnUnannouncedLengthIsBoundedToo) {
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_EQ(network.sent, 9);
}

TEST_F(ThumbnailsOfAnUnboundedServer, AServerThatSendsMoreThanItAnnouncedIsBoundedToo) {
    network.announced = 10;
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_EQ(network.sent, 9);
}

TEST_F(ThumbnailsOfAnUnboundedServer, AnAnnouncedLengthBeyondTheBoundTakesNoByte) {
    network.announced = 0xffffffffffffffffU;
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_EQ(network.sent, 0);
}

TEST_F(ThumbnailsOfAnUnboundedServer, AnUnannouncedLengthWithinTheBoundIsTaken) {
    network.blocks = 2;
    WideString const path = repository.downloadThumbnail(asset);
    EXPECT_EQ(host.cache.bytesAt(path).size(), std::size_t{2} << 20);
}

TEST_F(ThumbnailsOfAnUnboundedServer, TheBytesOfAnotherStatusThan200AreNoPicture) {
    network.blocks = 1;
    network.status = 206;
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_EQ(network.sent, 1);
}

// Refuses to keep anything, as on a full disk.
class FullCache final : public iCacheStore {
public:
    WideString find(WideString const&) override { return {}; }
    WideString store(WideString const&, void const*, std::size_t) override { return {}; }
    WideString partialFolder() override { return {}; }
};

class ThumbnailsWithoutServices : public ThumbnailsOfARepository {
protected:
    ThumbnailsWithoutServices() : before(installedHost()), services(before) {}
    ~ThumbnailsWithoutServices() override { installHost(before); }

    HostServices before;
    HostServices services;
};

TEST_F(ThumbnailsWithoutServices, WithoutACacheNothingIsAsked) {
    services.cache = nullptr;
    installHost(services);
    EXPECT_FALSE(thumbnail());
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(ThumbnailsWithoutServices, WithoutADecoderNothingIsAsked) {
    services.images = nullptr;
    installHost(services);
    EXPECT_FALSE(thumbnail());
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(ThumbnailsWithoutServices, WithoutANetworkThereIsNone) {
    services.network = nullptr;
    installHost(services);
    EXPECT_FALSE(thumbnail());
}

TEST_F(ThumbnailsWithoutServices, ACacheThatCannotKeepGivesNone) {
    FullCache full;
    services.cache = &full;
    installHost(services);
    EXPECT_FALSE(thumbnail());
    EXPECT_TRUE(repository.downloadThumbnail(asset).isEmpty());
}

TEST_F(ThumbnailsWithoutServices, ThePartialFolderIsTheCachesOwnOrEmpty) {
    repository.thumbInit();
    EXPECT_EQ(repository.partialFolder, L"/cache/partial");
    EXPECT_EQ(repository.getDownloadFolder(), L"/cache/partial");
    services.cache = nullptr;
    installHost(services);
    repository.thumbInit();
    EXPECT_TRUE(repository.partialFolder.isEmpty());
    EXPECT_TRUE(repository.getDownloadFolder().isEmpty());
}

} // namespace
} // namespace repository_tests
