#include <algorithm>

#include "tests/tarn7/DownloadFixture.h"

namespace tarn7_tests {
namespace {

using Lines = std::vector<std::string>;

class DownloadTransfer : public DownloadTest {
protected:
    // The last line of a fetch of one clip of that name whose transfer ends with status 404.
    std::string failureLine(std::string_view name) {
        offer("123", {"", 404});
        EXPECT_TRUE(fetch({asset("123", name)}));
        return log->lines.back();
    }
};

TEST_F(DownloadTransfer, TheBytesEndUpInTheFileAndTheEditPlaysIt) {
    Cookie const edit = place(asset("123"));
    offer("123", {"the full media", 200});
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(fileAt("/media/Tarn7/123.mov"), "the full media");
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/123.mov", "  3 #13365"}));
    EXPECT_EQ(host.files.disk->files.size(), 1U);
}

TEST_F(DownloadTransfer, ProgressGoesToTheLogAndEndsAtTheWhole) {
    offer("123", {"12345678", 200});
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(log->progress, (std::vector<double>{0.5, 1.0}));
}

TEST_F(DownloadTransfer, TheServerIsANewOneOfWhichOnlyNameAndSchemeAreSaid) {
    signIn();
    host.network.answerWith([&](fake::Request const& request) -> std::optional<fake::Answer> {
        if (request.method == fake::Request::Method::post) {
            return fake::Answer{answerOf({R"({"url":"http://files.test/a/b.mov?q=1#part"})"}), 200};
        }
        return fake::Answer{"x", 200};
    });
    std::size_t const before = host.network.connections().size();
    EXPECT_TRUE(fetch({asset("123")}));
    ASSERT_EQ(host.network.connections().size(), before + 1);
    HTTPConnectionInfo const made = host.network.connections().back();
    EXPECT_EQ(utf8(made.server), "files.test");
    EXPECT_EQ(made.secure, 0);
    EXPECT_EQ(made.port, 0);
    EXPECT_TRUE(made.user.isEmpty());
    EXPECT_TRUE(made.realm.isEmpty());
    EXPECT_TRUE(made.headers.empty());
    EXPECT_TRUE(made.userAgent.isEmpty());
    fake::Request const request = host.network.lastRequest();
    EXPECT_EQ(request.server, "files.test");
    EXPECT_EQ(request.path, "/a/b.mov?q=1");
    EXPECT_EQ(request.body, "");
    EXPECT_FALSE(request.secure);
}

TEST_F(DownloadTransfer, ASecureAddressIsFetchedSecurely) {
    offer("123", {"x", 200});
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_TRUE(host.network.lastRequest().secure);
    EXPECT_EQ(host.network.lastRequest().server, "files.test:8443");
}

TEST_F(DownloadTransfer, AnyStatusButTwoHundredIsAFailure) {
    for (int const status : {204, 206, 301, 304, 403, 404, 416, 500, 503}) {
        SCOPED_TRACE(status);
        log->lines.clear();
        Cookie const edit = place(asset("123"));
        offer("123", {"body", status});
        EXPECT_TRUE(fetch({asset("123")}));
        EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/123.mov", "  3 #13365",
                                     "  4 #13656 (" + std::to_string(status) + ")"}));
        EXPECT_EQ(mediaOf(edit), "");
        EXPECT_EQ(host.files.disk->files.size(), 0U);
    }
}

TEST_F(DownloadTransfer, AServerThatCannotBeReachedIsAFailureWithoutAStatus) {
    Cookie const edit = place(asset("123"));
    offerUnreachable("123");
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(log->lines.back(), "  4 #13656 (0)");
    EXPECT_EQ(mediaOf(edit), "");
    EXPECT_EQ(host.files.disk->files.size(), 0U);
}

TEST_F(DownloadTransfer, AnAddressThatLeadsToNoServerIsAFailureWithoutAStatus) {
    for (char const* const address :
         {"ftp://files.test/a.mov", "file:///etc/passwd", "nonsense", "https://", "https://ada@files.test/a",
          "Virtual:T7", "/a/b.mov", "javascript:alert(1)", "https://files.test\\n/a",
          " https://files.test/a"}) {
        SCOPED_TRACE(address);
        log->lines.clear();
        host.network.forgetRequests();
        reply(std::string(R"({"url":")") + address + R"("})");
        EXPECT_TRUE(fetch({asset("123")}));
        EXPECT_EQ(log->lines.back(), "  4 #13656 (0)");
        EXPECT_TRUE(transfers().empty());
        EXPECT_EQ(host.files.disk->files.size(), 0U);
    }
}

TEST_F(DownloadTransfer, AFileThatCannotBeWrittenIsAFailureWithoutAStatus) {
    Cookie const edit = place(asset("123"));
    host.files.refuseWriting = true;
    offer("123", {"x", 200});
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(log->lines.back(), "  4 #13656 (0)");
    EXPECT_EQ(mediaOf(edit), "");
}

TEST_F(DownloadTransfer, AFailedTransferIsFollowedByTheNextAsset) {
    Cookie const second = place(asset("2", "Shore"));
    offer("1", {"", 500});
    offer("2", {"x", 200});
    EXPECT_TRUE(fetch({asset("1"), asset("2", "Shore")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/1.mov", "  3 #13365", "  4 #13656 (500)", "0 Shore",
                                 "0 /media/Tarn7/2.mov", "  3 #13365"}));
    EXPECT_EQ(mediaOf(second), "/media/Tarn7/2.mov");
}

TEST_F(DownloadTransfer, AFailureNamesTheClip) {
    host.strings.texts[13656] = L"\x201e$CLIP$\x201c failed";
    EXPECT_EQ(failureLine("Sea"), "  4 \xe2\x80\x9eSea\xe2\x80\x9c failed (404)");
}

TEST_F(DownloadTransfer, ANameIsPutInAsItIs) {
    host.strings.texts[13656] = L"[$CLIP$] failed";
    for (char const* const name : {"$CLIP$", "a $CLIP$ b", "100%s%n%d", "%", "\\1 $0 {}", "<b>&amp;", ""}) {
        host.edits.remove(host.edits.cookies().empty() ? Cookie() : host.edits.cookies().back());
        EXPECT_EQ(failureLine(name), "  4 [" + std::string(name) + "] failed (404)");
    }
}

TEST_F(DownloadTransfer, EachPlaceHolderOfTheTextNamesTheClip) {
    host.strings.texts[13656] = L"$CLIP$: $CLIP$";
    EXPECT_EQ(failureLine("$CLIP$"), "  4 $CLIP$: $CLIP$ (404)");
}

TEST_F(DownloadTransfer, ATextWithoutAPlaceHolderStandsAsItIs) {
    host.strings.texts[13656] = L"It failed $clip$ $CLIP";
    EXPECT_EQ(failureLine("Sea"), "  4 It failed $clip$ $CLIP (404)");
    host.strings.texts[13656] = L"";
    EXPECT_EQ(failureLine("Sea"), "  4  (404)");
}

TEST_F(DownloadTransfer, ACancelledTransferIsSilentAndLeavesNoFile) {
    Cookie const edit = place(asset("1"));
    offer("1", {"12345678", 200});
    log->onProgress = [&] { host.tasks.status = iBackgroundTask::eCancelling; };
    EXPECT_TRUE(fetch({asset("1")}));
    EXPECT_EQ(log->progress, std::vector<double>{0.5});
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/1.mov", "  3 #13365"}));
    EXPECT_EQ(fileAt("/media/Tarn7/1.mov"), "(none)");
    EXPECT_EQ(mediaOf(edit), "");
}

TEST_F(DownloadTransfer, AfterACancellationTheNextAssetIsAskedForAndStopsAtItsFirstBlock) {
    offer("1", {"12345678", 200});
    offer("2", {"12345678", 200});
    log->onProgress = [&] { host.tasks.status = iBackgroundTask::eCancelling; };
    EXPECT_TRUE(fetch({asset("1"), asset("2", "Shore")}));
    EXPECT_EQ(commands().size(), 2U);
    EXPECT_EQ(transfers(), (Lines{"/d/1.mov?sig=1", "/d/2.mov?sig=1"}));
    EXPECT_EQ(log->progress, std::vector<double>{0.5});
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/1.mov", "  3 #13365", "0 Shore",
                                 "0 /media/Tarn7/2.mov", "  3 #13365"}));
    EXPECT_TRUE(host.files.disk->files.empty());
}

TEST_F(DownloadTransfer, InACancelledTaskAFileThatIsThereIsStillUsed) {
    host.tasks.status = iBackgroundTask::eCancelling;
    host.files.disk->files[L"/media/Tarn7/1.mov"] = "whole";
    Cookie const edit = place(asset("1"));
    EXPECT_TRUE(fetch({asset("1")}));
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/1.mov");
    EXPECT_EQ(fileAt("/media/Tarn7/1.mov"), "whole");
}

TEST_F(DownloadTransfer, InACancelledTaskAnyFailedStatusIsSilent) {
    host.tasks.status = iBackgroundTask::eCancelling;
    offer("1", {"", 404});
    EXPECT_TRUE(fetch({asset("1")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/1.mov", "  3 #13365"}));
}

TEST_F(DownloadTransfer, InACancelledTaskARefusalIsStillTold) {
    host.tasks.status = iBackgroundTask::eCancelling;
    reply(R"({"e":true,"s":"no"})");
    EXPECT_FALSE(fetch({asset("1")}));
    EXPECT_EQ(log->lines.back(), "0 #13771 : no");
}

TEST_F(DownloadTransfer, AnyOtherStatusOfTheTaskIsNoCancellation) {
    for (auto const status :
         {iBackgroundTask::eWaiting, iBackgroundTask::eRunning, iBackgroundTask::eFinished}) {
        host.tasks.status = status;
        offer("1", {"", 404});
        EXPECT_TRUE(fetch({asset("1")}));
        EXPECT_EQ(log->lines.back(), "  4 #13656 (404)");
    }
}

TEST_F(DownloadTransfer, AFileThatIsGoneAgainAfterAWholeTransferLeavesThePreview) {
    Cookie const edit = place(asset("123"));
    offer("123", {"1234", 200});
    log->onProgress = [&] { (void)host.files.deleteFile(L"/media/Tarn7/123.mov"); };
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(mediaOf(edit), "");
    EXPECT_EQ(utf8(host.edits.stateOf(edit).previewLocation), "Virtual:T7 https://cdn.test/p/preview.mov");
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/123.mov", "  3 #13365"}));
}

TEST_F(DownloadTransfer, AnEmptyFileWithStatusTwoHundredIsAFile) {
    Cookie const edit = place(asset("123"));
    offer("123", {"", 200});
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(fileAt("/media/Tarn7/123.mov"), "");
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
    EXPECT_TRUE(log->progress.empty());
}

TEST_F(DownloadTransfer, NamesFromTheServiceNeverLeaveTheMediaFolder) {
    std::vector<std::pair<std::string, std::string>> const names = {
        {"../../etc/passwd", "mov"},
        {"..", ""},
        {"", ""},
        {"/etc/passwd", "x"},
        {"1", "../../../x"},
        {"..\\..\\x", "mov"},
        {"a/b", "c/d"},
        {std::string("1\0/x", 4), "mov"},
        {"1\n2", "m\rov"},
        {"CON", "mov"},
        {"nul", "mov"},
        {"C:x", "mov"},
        {"1", "mov:stream"},
        {"~", "mov"},
        {"$HOME", "mov"},
        {"-rf", "mov"},
        {std::string(5000, 'x'), std::string(5000, 'y')}};
    for (auto const& [id, extension] : names) {
        SCOPED_TRACE(id);
        RemoteAsset hostile = asset("1");
        hostile.id = wide(id);
        hostile.mediaExtension = wide(extension);
        log->lines.clear();
        host.files.disk->files.clear();
        host.files.disk->folders.clear();
        offer("1", {"x", 200});
        EXPECT_TRUE(fetch({hostile}));
        ASSERT_EQ(host.files.disk->files.size(), 1U);
        std::string const path = utf8(host.files.disk->files.begin()->first);
        std::string const folder = "/media/Tarn7/";
        ASSERT_TRUE(path.starts_with(folder)) << path;
        std::string const name = path.substr(folder.size());
        EXPECT_FALSE(name.empty());
        EXPECT_LE(name.size(), 255U);
        EXPECT_EQ(name.find_first_of(std::string_view("/\\:\0\r\n", 6)), std::string::npos) << path;
        EXPECT_EQ(name.find(".."), std::string::npos) << path;
        EXPECT_EQ(host.files.disk->folders, std::vector<WideString>{L"/media/Tarn7"});
        EXPECT_EQ(log->lines.size(), 3U);
    }
}

TEST_F(DownloadTransfer, TheAddressNamesNoFileOfThisMachine) {
    served["/../../etc/passwd"] = fake::Answer{"x", 200};
    reply(R"({"url":"https://files.test/../../etc/passwd"})");
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(host.files.disk->files.size(), 1U);
    EXPECT_EQ(fileAt("/media/Tarn7/123.mov"), "x");
}

} // namespace
} // namespace tarn7_tests
