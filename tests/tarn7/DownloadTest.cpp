#include "tests/tarn7/DownloadFixture.h"

namespace tarn7_tests {
namespace {

using Lines = std::vector<std::string>;

class Download : public DownloadTest {};

TEST_F(Download, AnEmptyListIsDoneAtOnceWithoutAWord) {
    EXPECT_TRUE(fetch({}));
    EXPECT_TRUE(log->lines.empty());
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.edits.record.calls().empty());
}

TEST_F(Download, AFileIsFetchedInThisOrder) {
    place(asset("123"));
    offer("123", {"full media", 200});
    std::vector<std::string> const& steps = watchSteps();
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(steps, (std::vector<std::string>{
                         "findObject T7 123",
                         "getName",
                         "line: 0 Sea",
                         "getCookie",
                         "find T7",
                         "fileExists /media/Tarn7/123.mov",
                         "command",
                         "createDirectory /media/Tarn7",
                         "action 34",
                         "line: 0 /media/Tarn7/123.mov",
                         "line:   3 #13365",
                         "transfer files.test:8443/d/123.mov?sig=1",
                         "openForWrite /media/Tarn7/123.mov",
                         "useMedia /media/Tarn7/123.mov",
                     }));
}

TEST_F(Download, AFailedTransferEndsInThisOrder) {
    place(asset("123"));
    offer("123", {"gone", 410});
    std::vector<std::string> const& steps = watchSteps();
    EXPECT_TRUE(fetch({asset("123")}));
    ASSERT_GE(steps.size(), 3U);
    EXPECT_EQ((std::vector<std::string>{steps.end() - 3, steps.end()}),
              (std::vector<std::string>{"transfer files.test:8443/d/123.mov?sig=1", "line:   4 #13656 (410)",
                                        "deleteFile /media/Tarn7/123.mov"}));
}

TEST_F(Download, TheRequestNamesTheClipAndItsVersion) {
    offer("123", {"x", 200});
    (void)fetch({asset("123")});
    EXPECT_EQ(commands(), Lines{R"([{"command":"download","bid":"123","tr":"T123","v":"2"}])"});
}

TEST_F(Download, WhatTheItemDoesNotSayGoesOutEmpty) {
    RemoteAsset bare = asset("123");
    bare.payload = parsed(R"({"tr":7,"dur":"1000"})");
    offer("123", {"x", 200});
    (void)fetch({bare});
    EXPECT_EQ(commands(), Lines{R"([{"command":"download","bid":"123","tr":"","v":""}])"});
}

TEST_F(Download, AnAssetWithoutAnItemIsAskedForWithEmptyFields) {
    place(asset("123"));
    RemoteAsset found;
    found.id = L"123";
    found.mediaExtension = L"mov";
    offer("123", {"x", 200});
    EXPECT_TRUE(fetch({found}));
    EXPECT_EQ(commands(), Lines{R"([{"command":"download","bid":"123","tr":"","v":""}])"});
    EXPECT_EQ(fileAt("/media/Tarn7/123.mov"), "x");
}

TEST_F(Download, TheThirdValueIsNotRead) {
    for (std::int32_t const value : {-1, 0, 7}) {
        EXPECT_TRUE(resource.fetchFullMedia({}, value, LoggerHandle(log)));
    }
    offer("1", {"x", 200});
    EXPECT_TRUE(resource.fetchFullMedia({asset("1")}, 99, LoggerHandle(log)));
    EXPECT_EQ(fileAt("/media/Tarn7/1.mov"), "x");
}

TEST_F(Download, WithoutALogItWorksTheSame) {
    offer("123", {"x", 200});
    EXPECT_TRUE(resource.fetchFullMedia({asset("123")}, 0, LoggerHandle()));
    EXPECT_EQ(fileAt("/media/Tarn7/123.mov"), "x");
}

TEST_F(Download, TheLogIsReleased) {
    offer("123", {"x", 200});
    (void)fetch({asset("123")});
    Zq::InternalRefCount& counted = *log;
    EXPECT_EQ(counted.refCount().owners.load(), 1U);
}

TEST_F(Download, AnAssetThatBecomesNoEditIsPassedOverInSilence) {
    RemoteAsset broken;
    broken.id = L"9";
    broken.mediaExtension = L"mov";
    host.files.disk->files[L"/media/Tarn7/9.mov"] = "here already";
    offer("123", {"x", 200});
    Cookie const good = place(asset("123"));
    EXPECT_TRUE(fetch({broken, asset("123")}));
    EXPECT_EQ(log->lines.front(), "0 Sea");
    EXPECT_EQ(commands().size(), 1U);
    EXPECT_EQ(mediaOf(good), "/media/Tarn7/123.mov");
}

TEST_F(Download, AHostWithoutEditsFetchesNothingAndSaysNothing) {
    host.edits.refuseClips();
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_TRUE(log->lines.empty());
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Download, AFileThatIsThereIsUsedWithoutARequest) {
    host.files.disk->files[L"/media/Tarn7/123.mov"] = "whole";
    Cookie const edit = place(asset("123"));
    std::vector<std::string> const& steps = watchSteps();
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(steps,
              (std::vector<std::string>{"findObject T7 123", "getName", "line: 0 Sea", "getCookie", "find T7",
                                        "fileExists /media/Tarn7/123.mov", "useMedia /media/Tarn7/123.mov"}));
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
    EXPECT_EQ(fileAt("/media/Tarn7/123.mov"), "whole");
}

TEST_F(Download, AFileThatIsThereIsUsedWhetherTheAccountOwnsItOrNot) {
    resource.purchasedIds.clear();
    resource.disconnect();
    host.files.disk->files[L"/media/Tarn7/123.mov"] = "whole";
    Cookie const edit = place(asset("123"));
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Download, AFileThatIsThereCountsAsWholeHoweverShort) {
    host.files.disk->files[L"/media/Tarn7/123.mov"] = "";
    Cookie const edit = place(asset("123"));
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Download, ASecondFetchFindsTheFileOfTheFirst) {
    offer("123", {"x", 200});
    Cookie const edit = place(asset("123"));
    EXPECT_TRUE(fetch({asset("123")}));
    host.network.forgetRequests();
    log->lines.clear();
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_EQ(log->lines, Lines{"0 Sea"});
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
}

TEST_F(Download, ARefusalIsALineWithTheServicesWords) {
    Cookie const edit = place(asset("123"));
    reply(R"({"e":true,"s":"not yours","url":"https://files.test:8443/d/123.mov?sig=1"})");
    EXPECT_FALSE(fetch({asset("123")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 #13771 : not yours"}));
    EXPECT_EQ(mediaOf(edit), "");
    EXPECT_TRUE(transfers().empty());
    EXPECT_TRUE(host.actions.record.calls().empty());
    EXPECT_TRUE(host.files.disk->folders.empty());
}

TEST_F(Download, ARefusalWithoutWordsKeepsItsHead) {
    reply(R"({"e":true})");
    EXPECT_FALSE(fetch({asset("123")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 #13771 : "}));
}

TEST_F(Download, NoAnswerIsARefusal) {
    EXPECT_FALSE(fetch({asset("123")}));
    resource.disconnect();
    EXPECT_FALSE(fetch({asset("123")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 #13771 : ", "0 Sea", "0 #13771 : "}));
}

TEST_F(Download, AnAnswerWithoutAReplyIsARefusal) {
    for (char const* const body : {"", "nonsense", "[]", "{}", R"({"commands":[]})", R"({"commands":null})",
                                   R"({"e":true})", R"({"commands":["x",5]})"}) {
        replyWhole(body);
        EXPECT_FALSE(fetch({asset("123")})) << body;
        EXPECT_EQ(log->lines.back(), "0 #13771 : ") << body;
    }
}

TEST_F(Download, OnlyTheFlagOfTheReplyDecides) {
    Cookie const edit = place(asset("123"));
    served["/d/123.mov?sig=1"] = fake::Answer{"x", 200};
    replyWhole(R"({"e":true,"commands":[{"e":false,"s":"look out","url":")" + addressOf("123") + R"("}]})");
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
}

TEST_F(Download, AnErrorTextAloneIsNoRefusal) {
    served["/d/123.mov?sig=1"] = fake::Answer{"x", 200};
    reply(R"({"e":false,"s":"careful","url":")" + addressOf("123") + R"("})");
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 /media/Tarn7/123.mov", "  3 #13365"}));
    reply(R"({"e":false,"s":"careful"})");
    EXPECT_FALSE(fetch({asset("5")}));
    EXPECT_EQ(log->lines.back(), "0 #13771 : #13772");
}

TEST_F(Download, RepliesInsideTheReplyAreLookedAtForAText) {
    reply(R"({"url":")" + addressOf("123") + R"(","s":"outside","commands":[{"s":"inside"}]})");
    EXPECT_FALSE(fetch({asset("123")}));
    EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 #13771 : outside"}));
    EXPECT_TRUE(transfers().empty());
}

TEST_F(Download, AReplyWithoutAnAddressIsARefusal) {
    for (char const* const body : {R"({"e":false})", R"({"url":""})", R"({"url":5})", R"({"url":null})",
                                   R"({"url":["https://files.test/x"]})"}) {
        log->lines.clear();
        reply(body);
        EXPECT_FALSE(fetch({asset("123")})) << body;
        EXPECT_EQ(log->lines, (Lines{"0 Sea", "0 #13771 : #13772"})) << body;
        EXPECT_TRUE(transfers().empty());
        EXPECT_TRUE(host.files.disk->folders.empty());
        EXPECT_TRUE(host.actions.record.calls().empty());
    }
}

TEST_F(Download, ARefusedAssetEndsNothing) {
    Cookie const second = place(asset("2"));
    reply(R"({"e":true,"s":"no"})");
    offer("2", {"x", 200});
    EXPECT_FALSE(fetch({asset("1"), asset("2")}));
    EXPECT_EQ(mediaOf(second), "/media/Tarn7/2.mov");
}

TEST_F(Download, OnceFalseTheResultStaysFalse) {
    offer("1", {"x", 200});
    reply(R"({"e":true,"s":"no"})");
    offer("3", {"x", 200});
    EXPECT_FALSE(fetch({asset("1"), asset("2"), asset("3")}));
    EXPECT_EQ(fileAt("/media/Tarn7/3.mov"), "x");
}

TEST_F(Download, EachAssetIsAnActionOfItsOwn) {
    offer("1", {"x", 200});
    offer("2", {"", 404});
    EXPECT_TRUE(fetch({asset("1"), asset("2")}));
    EXPECT_EQ(host.actions.record.calls(), (Lines{"action 34", "action 34"}));
}

TEST_F(Download, TheEditThatWasPlacedIsTheOneThatIsRelinked) {
    Cookie const edit = place(asset("123"));
    offer("123", {"x", 200});
    EXPECT_TRUE(fetch({asset("123", "Another name by now")}));
    EXPECT_EQ(host.edits.cookies(), std::vector<Cookie>{edit});
    EXPECT_EQ(log->lines.front(), "0 Sea");
    EXPECT_EQ(mediaOf(edit), "/media/Tarn7/123.mov");
}

TEST_F(Download, NothingButTheMediaOfTheEditChanges) {
    place(asset("123"));
    offer("123", {"x", 200});
    host.edits.record.forget();
    EXPECT_TRUE(fetch({asset("123")}));
    for (std::string const& call : host.edits.record.calls()) {
        EXPECT_FALSE(call.starts_with("set") || call.starts_with("add") || call.starts_with("make")) << call;
    }
}

TEST_F(Download, TheEditIsNotHeldOpenWhileItsFileArrives) {
    Cookie const edit = place(asset("123"));
    offer("123", {"x", 200});
    int openings = -1;
    onTransfer = [&] { openings = host.edits.stateOf(edit).openings; };
    EXPECT_TRUE(fetch({asset("123")}));
    EXPECT_EQ(openings, 0);
    EXPECT_EQ(host.edits.stateOf(edit).openings, 0);
}

TEST_F(Download, ARefusalInTheServicesWordsNeverBreaksALine) {
    reply(R"({"e":true,"s":"no\n3 Downloading\r\u001b[2J\u2028x"})");
    EXPECT_FALSE(fetch({asset("123", "Sea\n4 failed")}));
    ASSERT_EQ(log->lines.size(), 2U);
    EXPECT_EQ(log->lines[0], "0 Sea 4 failed");
    EXPECT_EQ(log->lines[1], "0 #13771 : no 3 Downloading  [2J x");
}

} // namespace
} // namespace tarn7_tests
