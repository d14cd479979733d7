#include "tests/fake_host/FollowedLog.h"
#include "tests/fake_host/WatchedHost.h"
#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

using Lines = std::vector<std::string>;

// Full media that lies on this machine, or does not: the service has none to give.
class Download : public FrameQuarryTest {
protected:
    void SetUp() override { connect(); }

    static RemoteAsset asset(std::string_view id, std::string_view name = "Sea") {
        RemoteAsset result = assetWith(R"("duration":4)");
        result.id = wide(id);
        result.logAttributes.add(LogAttribute(LogAttribute::eName), NarrowString(name));
        return result;
    }
    // The edit that was made from the asset before anything is fetched.
    Cookie place(RemoteAsset const& asset) {
        EditModifier const edit = resource.openEdit(asset, iMediaFileRepository::eOpenNormally);
        EXPECT_FALSE(edit.isEmpty());
        return edit.isEmpty() ? Cookie() : edit->getCookie();
    }
    void putFile(std::string_view path) { host.files.disk->files[wide(path)] = "whole"; }
    [[nodiscard]] std::string mediaOf(Cookie const& edit) const {
        return utf8(host.edits.stateOf(edit).mediaLocation);
    }
    bool fetch(LightweightVector<RemoteAsset> const& assets) {
        bool const result = resource.fetchFullMedia(assets, 0, LoggerHandle(log));
        EXPECT_EQ(log->indent, 0);
        EXPECT_TRUE(log->progress.empty());
        EXPECT_EQ(host.network.requestCount(), 0U);
        EXPECT_TRUE(host.actions.record.calls().empty());
        EXPECT_TRUE(host.files.disk->folders.empty());
        return result;
    }

    Zq::Ptr<fake::FollowedLog> log = Zq::makeShared<fake::FollowedLog>();
    fake::WatchedHost watched;
};

TEST_F(Download, AnEmptyListIsDoneAtOnceWithoutAWord) {
    EXPECT_TRUE(fetch({}));
    EXPECT_TRUE(log->lines.empty());
    EXPECT_TRUE(host.edits.record.calls().empty());
}

TEST_F(Download, AFileThatIsThereIsUsedInThisOrder) {
    Cookie const edit = place(asset("7"));
    putFile("/media/FrameQuarry/7.mp4");
    Lines steps;
    auto const note = [&steps](std::string const& call) {
        if (call != "open" && call != "opened" && call != "closed") {
            steps.push_back(call);
        }
    };
    host.edits.record.listen(note);
    host.externalIds.record.listen(note);
    watched.files.onCall = [&steps](char const* call, WideString const& path) {
        steps.push_back(std::string(call) + " " + utf8(path));
    };
    log->onLine = [&steps](std::string const& line) { steps.push_back("line: " + line); };
    EXPECT_TRUE(fetch({asset("7")}));
    EXPECT_EQ(steps, (Lines{"findObject FQ 7", "getName", "line: 0 Sea", "getCookie", "find FQ",
                            "fileExists /media/FrameQuarry/7.mp4", "useMedia /media/FrameQuarry/7.mp4"}));
    EXPECT_EQ(mediaOf(edit), "/media/FrameQuarry/7.mp4");
}

TEST_F(Download, WithoutAFileTheEditStaysOnItsPreviewInSilence) {
    Cookie const edit = place(asset("7"));
    Lines changes;
    watched.files.onCall = [&changes](char const* call, WideString const&) { changes.emplace_back(call); };
    EXPECT_TRUE(fetch({asset("7")}));
    EXPECT_EQ(log->lines, Lines{"0 Sea"});
    EXPECT_EQ(changes, Lines{"fileExists"});
    EXPECT_EQ(mediaOf(edit), "");
}

TEST_F(Download, EachAssetIsOneLineWhetherItsFileIsThereOrNot) {
    Cookie const first = place(asset("7", "Sea"));
    Cookie const second = place(asset("8", "Sky"));
    putFile("/media/FrameQuarry/8.mp4");
    EXPECT_TRUE(fetch({asset("7"), asset("8")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 Sky"}));
    EXPECT_EQ(mediaOf(first), "");
    EXPECT_EQ(mediaOf(second), "/media/FrameQuarry/8.mp4");
}

TEST_F(Download, AnAssetThatWasNeverPlacedBecomesAnEdit) {
    putFile("/media/FrameQuarry/7.mp4");
    EXPECT_TRUE(fetch({asset("7")}));
    ASSERT_EQ(host.edits.cookies().size(), 1U);
    EXPECT_EQ(mediaOf(host.edits.cookies()[0]), "/media/FrameQuarry/7.mp4");
}

TEST_F(Download, WhereNoEditCanBeMadeThereIsNoLine) {
    host.edits.refuseClips();
    putFile("/media/FrameQuarry/7.mp4");
    EXPECT_TRUE(fetch({asset("7"), asset("8")}));
    EXPECT_TRUE(log->lines.empty());
}

TEST_F(Download, AnAssetWithoutAnEditDoesNotKeepTheNextFromItsFile) {
    Cookie const second = place(asset("8", "Sky"));
    putFile("/media/FrameQuarry/8.mp4");
    host.edits.refuseClips();
    EXPECT_TRUE(fetch({asset("7"), asset("8", "Sky")}));
    EXPECT_EQ(log->lines, Lines{"0 Sky"});
    EXPECT_EQ(mediaOf(second), "/media/FrameQuarry/8.mp4");
}

TEST_F(Download, AFileOfAnotherExtensionOrRepositoryIsNotTheClips) {
    Cookie const edit = place(asset("7"));
    putFile("/media/FrameQuarry/7.mov");
    putFile("/media/Tarn7/7.mp4");
    putFile("/media/FrameQuarry/000000007.mp4");
    EXPECT_TRUE(fetch({asset("7")}));
    EXPECT_EQ(mediaOf(edit), "");
}

TEST_F(Download, ASecondFetchUsesTheSameFileAgain) {
    Cookie const edit = place(asset("7"));
    putFile("/media/FrameQuarry/7.mp4");
    EXPECT_TRUE(fetch({asset("7")}));
    EXPECT_TRUE(fetch({asset("7")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 Sea"}));
    EXPECT_EQ(mediaOf(edit), "/media/FrameQuarry/7.mp4");
}

TEST_F(Download, TheThirdValueIsNotRead) {
    putFile("/media/FrameQuarry/7.mp4");
    for (std::int32_t const value : {-1, 7}) {
        EXPECT_TRUE(resource.fetchFullMedia({asset("7")}, value, LoggerHandle(log)));
    }
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 Sea"}));
}

TEST_F(Download, WithoutALogItWorksTheSame) {
    Cookie const edit = place(asset("7"));
    putFile("/media/FrameQuarry/7.mp4");
    EXPECT_TRUE(resource.fetchFullMedia({asset("7")}, 0, LoggerHandle()));
    EXPECT_EQ(mediaOf(edit), "/media/FrameQuarry/7.mp4");
}

TEST_F(Download, TheLogIsReleased) {
    (void)fetch({asset("7")});
    Zq::InternalRefCount& counted = *log;
    EXPECT_EQ(counted.refCount().owners.load(), 1U);
}

TEST_F(Download, ANameNeverBreaksALine) {
    (void)fetch({asset("7", "Sea\n4 failed\r")});
    EXPECT_EQ(log->lines, Lines{"0 Sea 4 failed "});
}

TEST_F(Download, ACancelledTaskChangesNothingOfIt) {
    Cookie const edit = place(asset("7"));
    putFile("/media/FrameQuarry/7.mp4");
    host.tasks.status = iBackgroundTask::eCancelling;
    EXPECT_TRUE(fetch({asset("7")}));
    EXPECT_EQ(log->lines, Lines{"0 Sea"});
    EXPECT_EQ(mediaOf(edit), "/media/FrameQuarry/7.mp4");
}

} // namespace
} // namespace framequarry_tests
