// Whole fetches over HTTP into a file: what is there after each way in which one can end.

#include <gmock/gmock.h>

#include <csignal>

#include <sys/resource.h>

#include "host/engine/network/CurlNetwork.h"
#include "host/text/Unicode.h"
#include "repository/HTTPFileSaver.h"
#include "tests/engine/files/FilesFixture.h"
#include "tests/engine/local/Bytes.h"
#include "tests/engine/local/OtherProcess.h"
#include "tests/support/RawServer.h"

namespace {

using test::RawConnection;
using test::RawServer;
using testing::ElementsAre;
using testing::IsEmpty;

class FetchedFiles : public test::FilesFixture {
protected:
    int fetch(std::filesystem::path const& file) {
        HTTPConnectionInfo info;
        info.server = fromUTF8(std::string_view(raw_.name()));
        HTTPFileSaver saver(engine::wideText(file), LoggerHandle());
        return network_.createHTTPServer(info)->httpGetToReceiver(L"/whole.mov", saver);
    }
    // The same in a process of its own.
    std::unique_ptr<test::OtherProcess> fetchElsewhere(char const* path) {
        return std::make_unique<test::OtherProcess>(
            std::vector<std::string>{journal_, at("a.mov"), raw_.name(), path});
    }

    std::string const content_ = std::string(1 << 20, 'x') + "end";
    RawServer const raw_{[this](RawConnection& connection) {
        auto const request = connection.readRequest();
        if (!request) {
            return;
        }
        std::string const head =
            "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(content_.size()) + "\r\n\r\n";
        if (request->line.starts_with("GET /whole.mov ")) {
            connection.send(head + content_);
        } else {
            connection.send(head + content_.substr(0, content_.size() - 1));
        }
        if (request->line.starts_with("GET /stops.mov ")) {
            connection.waitForEnd();
        }
    }};

private:
    engine::CurlNetwork network_{engine::NetworkSettings()};
};

TEST_F(FetchedFiles, AWholeOneIsOnDiskAndNotInTheJournal) {
    EXPECT_EQ(fetch(at("a.mov")), 200);
    EXPECT_TRUE(test::readBytes(at("a.mov")) == content_);
    EXPECT_EQ(notes(), 0U);
}

TEST_F(FetchedFiles, ADiskThatIsFullInTheMiddleGivesZeroAndAFileThatIsNotWhole) {
    // The system's limit on a file's size stands in for a full disk.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit const small{300'000, before.rlim_max};
    auto const oldHandler = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    int const status = fetch(at("a.mov"));
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(notes(), 1U);
    EXPECT_TRUE(remove(at("a.mov")));
    EXPECT_EQ(notes(), 0U);
    EXPECT_FALSE(std::filesystem::exists(at("a.mov")));
}

TEST_F(FetchedFiles, WithoutAFileToWriteNothingIsFetched) {
    EXPECT_EQ(fetch(at("gone/a.mov")), 0);
    EXPECT_FALSE(std::filesystem::exists(at("gone")));
    EXPECT_EQ(notes(), 0U);
}

TEST_F(FetchedFiles, OneThatAHostWasKilledOverIsRemovedAtTheNextStart) {
    auto const other = fetchElsewhere("/stops.mov");
    ASSERT_EQ(other->readLine(), "block");
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty()) << "its writer lives";
    other->kill();
    (void)other->wait();
    EXPECT_THAT(files_.journal().removeUnfinished(), ElementsAre(at("a.mov")));
    EXPECT_FALSE(std::filesystem::exists(at("a.mov")));
    EXPECT_EQ(notes(), 0U);
}

TEST_F(FetchedFiles, ACutOneWhoseHostDiesBeforeDeletingItIsRemovedAtTheNextStart) {
    auto const other = fetchElsewhere("/cut.mov");
    ASSERT_EQ(other->readLine(), "block");
    ASSERT_EQ(other->readLine(), "status 0");
    other->kill();
    (void)other->wait();
    EXPECT_TRUE(std::filesystem::exists(at("a.mov")));
    EXPECT_THAT(files_.journal().removeUnfinished(), ElementsAre(at("a.mov")));
    EXPECT_FALSE(std::filesystem::exists(at("a.mov")));
    EXPECT_EQ(log_.count("a.mov"), 1);
}

TEST_F(FetchedFiles, AWholeOneSurvivesTheDeathOfItsHost) {
    auto const other = fetchElsewhere("/whole.mov");
    ASSERT_EQ(other->readLine(), "block");
    ASSERT_EQ(other->readLine(), "status 200");
    other->kill();
    (void)other->wait();
    EXPECT_THAT(files_.journal().removeUnfinished(), IsEmpty());
    EXPECT_TRUE(test::readBytes(at("a.mov")) == content_);
}

} // namespace
