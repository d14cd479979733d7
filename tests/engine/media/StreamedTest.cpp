// Media read over the network: libcurl, the streaming files with their store, the decoder, and a web server.

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "host/engine/media/MediaReader.h"
#include "tests/engine/media/MediaFootage.h"
#include "tests/engine/streaming/StreamingFixture.h"

namespace {

class StreamedMedia : public test::StreamingFixture {
protected:
    StreamedMedia() {
        for (char const* const name :
             {"front.mp4", "end.mov", "jpeg.mov", "larger.mp4", "larger_front.mp4"}) {
            std::ifstream in(test::mediaFootage(name), std::ios::binary);
            media.put(std::string("/") + name,
                      {{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()}});
        }
    }

    [[nodiscard]] std::unique_ptr<engine::MediaReader> play(std::string const& name) {
        Zq::Ptr<StreamingFile> const file = open(name, name + ".partial");
        auto opened = engine::MediaReader::open(Zq::Ptr<iFile>(file));
        EXPECT_TRUE(opened) << name << ": " << opened.error();
        return opened ? std::move(*opened) : nullptr;
    }
    [[nodiscard]] engine::StreamingStatistics spent() { return streams().statistics(); }
};

TEST_F(StreamedMedia, HasTheFramesOfTheLocalFile) {
    for (std::string const name : {"front.mp4", "end.mov", "jpeg.mov", "larger.mp4"}) {
        auto const file = play(name);
        ASSERT_NE(file, nullptr);
        for (test::ReferenceFrame const& expected : test::referenceFrames(test::mediaFootage(name))) {
            auto const frame = file->next();
            ASSERT_TRUE(frame) << name << ": " << frame.error();
            ASSERT_TRUE(*frame) << name;
            ASSERT_EQ(test::digestOf((*frame)->picture()), expected.digest) << name;
        }
        auto const behind = file->next();
        ASSERT_TRUE(behind) << behind.error();
        EXPECT_FALSE(*behind);
    }
}

// How much is fetched ahead depends on how fast this machine decodes: what is asked for does not.
TEST_F(StreamedMedia, OpeningASecondAndASeekReadLittleOfTheFileWithFewRequests) {
    std::uint64_t const size = std::filesystem::file_size(test::mediaFootage("larger_front.mp4"));
    auto const reference = test::referenceFrames(test::mediaFootage("larger_front.mp4"));
    auto const file = play("larger_front.mp4");
    ASSERT_NE(file, nullptr);
    auto const first = file->next();
    ASSERT_TRUE(first && *first);
    engine::StreamingStatistics const opened = spent();
    EXPECT_LE(opened.bytesRead, size / 10);

    for (int i = 1; i < 25; ++i) {
        auto const frame = file->next();
        ASSERT_TRUE(frame && *frame);
        ASSERT_EQ(test::digestOf((*frame)->picture()), reference[static_cast<std::size_t>(i)].digest);
    }
    engine::StreamingStatistics const played = spent();
    EXPECT_LE(played.bytesRead - opened.bytesRead, size / 4); // an eighth of the file, and a buffer or two

    auto const sought = file->seek(6);
    ASSERT_TRUE(sought) << sought.error();
    EXPECT_EQ(test::digestOf(sought->picture()), reference[150].digest);
    engine::StreamingStatistics const all = spent();
    EXPECT_LE(all.bytesRead - played.bytesRead, size / 4);

    // A request for each read would be more than forty.
    EXPECT_LE(all.requests, 20U);
    EXPECT_LE(media.requests().size(), all.requests);
    EXPECT_LE(all.bytesReceived, size * 5 / 4);
    RecordProperty("openRequests", static_cast<int>(opened.requests));
    RecordProperty("openBytes", static_cast<int>(opened.bytesReceived));
    RecordProperty("secondRequests", static_cast<int>(played.requests - opened.requests));
    RecordProperty("secondBytes", static_cast<int>(played.bytesReceived - opened.bytesReceived));
    RecordProperty("seekRequests", static_cast<int>(all.requests - played.requests));
    RecordProperty("seekBytes", static_cast<int>(all.bytesReceived - played.bytesReceived));
}

TEST_F(StreamedMedia, AnIndexAtTheEndIsNotReadThroughTheWholeFile) {
    std::uint64_t const size = std::filesystem::file_size(test::mediaFootage("larger.mp4"));
    auto const file = play("larger.mp4");
    ASSERT_NE(file, nullptr);
    auto const first = file->next();
    ASSERT_TRUE(first && *first);
    EXPECT_LE(spent().bytesRead, size / 8);
    EXPECT_LE(spent().requests, 10U);
}

TEST_F(StreamedMedia, AClipOpenedAgainComesFromItsStore) {
    ASSERT_TRUE(play("front.mp4")->last());
    engine::StreamingStatistics const before = spent();
    auto const frame = play("front.mp4")->last();
    ASSERT_TRUE(frame) << frame.error();
    EXPECT_EQ(spent().requests, before.requests);
    EXPECT_GT(spent().bytesFromStore, before.bytesFromStore);
}

TEST_F(StreamedMedia, AServerThatIsNotThereAndAFileThatIsNotThereAreToldApart) {
    auto const unreachable = engine::MediaReader::open(
        streams().create(server("127.0.0.1:" + std::to_string(test::closedPort())), L"front.mp4", L"", L""));
    EXPECT_EQ(unreachable.error(), "the file cannot be read");
    auto const absent = engine::MediaReader::open(Zq::Ptr<iFile>(open("nothing.mp4")));
    EXPECT_EQ(absent.error(), "the file is empty");
}

TEST_F(StreamedMedia, ACancelEndsOpeningOnASilentServer) {
    media.setFault([](test::RawConnection& connection, test::RawRequest const&) {
        connection.waitForEnd();
        return true;
    });
    std::string error;
    std::thread thread([&] { error = engine::MediaReader::open(Zq::Ptr<iFile>(open("front.mp4"))).error(); });
    media.waitForRequests(1);
    task.cancel();
    thread.join();
    EXPECT_EQ(error, "cancelled");
}

} // namespace
