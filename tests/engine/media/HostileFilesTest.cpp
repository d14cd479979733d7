// Files that name other files: nothing of what they name is opened.

#include <gmock/gmock.h>

#include <array>

#include <sys/inotify.h>
#include <unistd.h>

#include "host/engine/media/MediaInput.h"
#include "tests/engine/media/MediaFixture.h"
#include "tests/support/RawServer.h"

namespace {

// Sees whether anybody opens the file.
class OpenWatch {
public:
    explicit OpenWatch(std::filesystem::path const& file) : events_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        if (inotify_add_watch(events_, file.c_str(), IN_OPEN | IN_ACCESS) < 0) {
            throw std::runtime_error("no watch");
        }
    }
    ~OpenWatch() { close(events_); }
    OpenWatch(OpenWatch const&) = delete;
    OpenWatch& operator=(OpenWatch const&) = delete;

    [[nodiscard]] bool sawOne() const {
        std::array<char, 4096> buffer{};
        return ::read(events_, buffer.data(), buffer.size()) > 0;
    }

private:
    int const events_;
};

class HostileFiles : public test::MediaFixture {
protected:
    // A file that could be shown, if anybody opened it.
    std::filesystem::path const secret_ = [this] {
        std::filesystem::path const copy = folder.path() / "secret.ts";
        std::filesystem::copy_file(test::mediaFootage("late_start.ts"), copy);
        return copy;
    }();
    test::RawServer server_{[](test::RawConnection& connection) { connection.waitForEnd(); }};

    [[nodiscard]] std::string url() const { return "http://" + server_.name() + "/secret.ts"; }

    void expectRefused(std::string const& name, std::string const& text) const {
        WideString const path = write(name, text);
        OpenWatch const watch(secret_);
        EXPECT_FALSE(engine::inspectMedia(path)) << name;
        EXPECT_FALSE(engine::MediaReader::open(path)) << name;
        EXPECT_FALSE(watch.sawOne()) << name << " had the file opened";
        EXPECT_EQ(server_.connections(), 0) << name << " had the address opened";
    }
};

TEST_F(HostileFiles, TheWatchSeesAFileThatIsOpened) {
    OpenWatch const watch(secret_);
    EXPECT_FALSE(watch.sawOne());
    EXPECT_TRUE(engine::inspectMedia(engine::wideText(secret_)));
    EXPECT_TRUE(watch.sawOne());
}

TEST_F(HostileFiles, SuchListsMakeFFmpegItselfOpenTheFile) {
    static_cast<void>(write("list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXTINF:10,\n" +
                                             secret_.string() + "\n#EXT-X-ENDLIST\n"));
    static_cast<void>(write("parts.mp4", "ffconcat version 1.0\nfile '" + secret_.string() + "'\n"));
    OpenWatch const lists(secret_);
    test::runFFmpeg({"-i", (folder.path() / "list.m3u8").string(), "-frames:v", "1", "-f", "null", "-"});
    EXPECT_TRUE(lists.sawOne());
    OpenWatch const parts(secret_);
    test::runFFmpeg(
        {"-safe", "0", "-i", (folder.path() / "parts.mp4").string(), "-frames:v", "1", "-f", "null", "-"});
    EXPECT_TRUE(parts.sawOne());
}

TEST_F(HostileFiles, APlaylistOpensNothing) {
    std::string const head = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:10\n";
    std::string const end = "\n#EXT-X-ENDLIST\n";
    for (std::string const& target :
         {secret_.string(), "file://" + secret_.string(), url(), std::string("/etc/passwd")}) {
        expectRefused("list.m3u8", head + "#EXTINF:10,\n" + target + end);
        expectRefused("list.mov", head + "#EXTINF:10,\n" + target + end);
        expectRefused("key.m3u8", head + "#EXT-X-KEY:METHOD=AES-128,URI=\"" + target + "\"\n#EXTINF:10,\n" +
                                      target + end);
    }
    expectRefused("master.m3u8", "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1\n" + url() + "\n");
}

TEST_F(HostileFiles, AListOfPartsOpensNothing) {
    for (std::string const& target : {secret_.string(), url(), std::string("/etc/passwd")}) {
        expectRefused("parts.mp4", "ffconcat version 1.0\nfile '" + target + "'\n");
    }
}

TEST_F(HostileFiles, AManifestOpensNothing) {
    for (std::string const& target : {secret_.string(), url()}) {
        expectRefused(
            "manifest.mp4",
            "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\" "
            "mediaPresentationDuration=\"PT2S\" profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\">"
            "<Period><AdaptationSet mimeType=\"video/mp2t\"><Representation id=\"1\" bandwidth=\"1\">"
            "<BaseURL>" +
                target +
                "</BaseURL><SegmentBase indexRange=\"0-99\"/></Representation></AdaptationSet></Period>"
                "</MPD>\n");
    }
}

TEST_F(HostileFiles, ASessionDescriptionOpensNothing) {
    expectRefused("session.mov", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\n"
                                 "a=control:" +
                                     url() + "\nm=video 5004 RTP/AVP 96\na=rtpmap:96 H264/90000\n");
    expectRefused("redirect.asx", "[Reference]\nRef1=" + url() + "\n");
    expectRefused("address.mov", "RTSPtext\r" + url() + "\n");
}

std::string bigEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i) {
        text += static_cast<char>(value >> (8 * i) & 0xffU);
    }
    return text;
}

std::string box(std::string const& type, std::string const& content) {
    return bigEndian(content.size() + 8, 4) + type + content;
}

TEST_F(HostileFiles, AReferenceMovieOpensNothing) {
    std::string const data = "url " + bigEndian(0, 4) + bigEndian(url().size() + 1, 4) + url() + '\0';
    std::string const reference = box("rdrf", bigEndian(0, 4) + data);
    expectRefused("reference.mov", box("ftyp", "qt  " + bigEndian(0, 4) + "qt  ") +
                                       box("moov", box("rmra", box("rmda", reference))));
}

// The whole box of a type that lies within the bytes, as place and length.
std::pair<std::size_t, std::size_t> findBox(std::string const& bytes, std::string const& type) {
    std::size_t const name = bytes.find(type);
    if (name == std::string::npos || name < 4) {
        return {0, 0};
    }
    std::size_t length = 0;
    for (std::size_t i = name - 4; i < name; ++i) {
        length = length << 8U | static_cast<unsigned char>(bytes[i]);
    }
    return {name - 4, length};
}

TEST_F(HostileFiles, AMovieWhoseMediaLieInAnotherFileDoesNotOpenThatFile) {
    // The same length as before, so that nothing else moves: the entry says only that the media lie
    // elsewhere.
    std::string bytes = bytesOf(test::mediaFootage("jpeg.mov"));
    auto const [place, length] = findBox(bytes, "dref");
    ASSERT_GT(length, 0U);
    std::size_t const flags = place + length - 4;
    ASSERT_EQ(bytes.substr(flags, 4), std::string("\0\0\0\1", 4));
    bytes[flags + 3] = '\0';
    WideString const path = write("elsewhere.mov", bytes);
    OpenWatch const watch(secret_);
    static_cast<void>(engine::inspectMedia(path));
    EXPECT_FALSE(watch.sawOne());
    EXPECT_EQ(server_.connections(), 0);
}

TEST_F(HostileFiles, ASegmentIndexThatPointsAnywhereOpensNothing) {
    std::string const index =
        box("sidx", bigEndian(0, 4) + bigEndian(1, 4) + bigEndian(1000, 4) + bigEndian(0, 4) +
                        bigEndian(0xffffffffU, 4) + bigEndian(0, 2) + bigEndian(1, 2) +
                        bigEndian(0x7fffffffU, 4) + bigEndian(1000, 4) + bigEndian(0x90000000U, 4));
    expectRefused("index.mp4", box("ftyp", "iso5" + bigEndian(0, 4) + "iso5dash") + index);
}

TEST_F(HostileFiles, AnOpenContainerRefusesToOpenAnythingElse) {
    auto const input = engine::MediaInput::open(footage("front.mp4"));
    ASSERT_TRUE(input) << input.error();
    AVFormatContext& container = (*input)->container();
    EXPECT_STREQ(container.protocol_whitelist, "none");
    for (std::string const& target : {secret_.string(), "file:" + secret_.string(), url()}) {
        OpenWatch const watch(secret_);
        AVIOContext* io = nullptr;
        EXPECT_LT(container.io_open(&container, &io, target.c_str(), AVIO_FLAG_READ, nullptr), 0);
        EXPECT_EQ(io, nullptr);
        EXPECT_FALSE(watch.sawOne());
    }
}

TEST_F(HostileFiles, BrokenFilesNeitherCrashNorHang) {
    for (char const* const name :
         {"front.mp4", "fragments.mp4", "coarse_times.mkv", "late_start.ts", "jpeg.avi"}) {
        std::string const whole = bytesOf(test::mediaFootage(name));
        for (unsigned seed = 1; seed <= 12; ++seed) {
            std::string bytes = whole;
            std::uint32_t random = seed * 2654435761U;
            for (int i = 0; i < 60; ++i) {
                random = random * 1664525U + 1013904223U;
                // Most damage goes to the headers, at either end.
                std::size_t const range =
                    i % 3 == 0 ? bytes.size() : std::min<std::size_t>(bytes.size(), 4096);
                std::size_t const from = i % 3 == 2 ? bytes.size() - range : 0;
                bytes[from + random % range] = static_cast<char>(random >> 24U);
            }
            WideString const path = write("broken", bytes);
            static_cast<void>(engine::inspectMedia(path));
            auto opened = engine::MediaReader::open(path);
            if (opened) {
                static_cast<void>((*opened)->seek(1));
                static_cast<void>((*opened)->last());
            }
        }
    }
}

} // namespace
