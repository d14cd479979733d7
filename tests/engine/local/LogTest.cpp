#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/engine/log/SpdlogSink.h"
#include "host/engine/log/maskSecrets.h"
#include "tests/engine/local/Bytes.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using engine::maskSecrets;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST(SpdlogSink, ALineIsInTheFileWhenWriteReturns) {
    test::TemporaryFolder const folder;
    engine::SpdlogSink sink(folder.path() / "logs");
    sink.write("first");
    EXPECT_THAT(test::readBytes(folder.path() / "logs/host.log"), EndsWith(" first\n"));
    sink.write("second");
    EXPECT_THAT(test::readBytes(folder.path() / "logs/host.log"), EndsWith(" second\n"));
}

TEST(SpdlogSink, ALineIsNoFormatString) {
    test::TemporaryFolder const folder;
    engine::SpdlogSink sink(folder.path());
    sink.write("{} {0} %v %s %n");
    EXPECT_THAT(test::readBytes(folder.path() / "host.log"), EndsWith(" {} {0} %v %s %n\n"));
}

TEST(SpdlogSink, ASecondRunAddsToTheFile) {
    test::TemporaryFolder const folder;
    engine::SpdlogSink(folder.path()).write("first run");
    engine::SpdlogSink(folder.path()).write("second run");
    EXPECT_THAT(test::readBytes(folder.path() / "host.log"), HasSubstr("first run"));
}

TEST(SpdlogSink, KeepsThreeFilesWithinTheirSize) {
    test::TemporaryFolder const folder;
    std::size_t const size = 4096;
    engine::SpdlogSink sink(folder.path(), size);
    for (int i = 0; i < 1000; ++i) {
        sink.write("line " + std::to_string(i));
    }
    std::size_t files = 0;
    for (auto const& entry : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_LE(entry.file_size(), size) << entry.path();
        ++files;
    }
    EXPECT_EQ(files, 3U);
    EXPECT_THAT(test::readBytes(folder.path() / "host.log"), EndsWith("line 999\n"));
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "host.2.log"));
}

TEST(SpdlogSink, WithoutAFolderToWriteToLinesGoToStandardError) {
    test::TemporaryFolder const folder;
    test::writeBytes(folder.path() / "logs", "in the way");
    testing::internal::CaptureStderr();
    engine::SpdlogSink(folder.path() / "logs").write("still here");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("still here"));
}

TEST(SpdlogSink, SecretsDoNotReachTheFile) {
    test::TemporaryFolder const folder;
    engine::SpdlogSink(folder.path()).write("POST password=hunter2&apicx=77");
    EXPECT_THAT(test::readBytes(folder.path() / "host.log"), Not(HasSubstr("hunter2")));
}

TEST(MaskSecrets, AFormFieldLosesItsValueAndKeepsTheRest) {
    EXPECT_EQ(maskSecrets("POST api=x&apicx=12345&apicm=-1&page=2"), "POST api=x&apicx=***&apicm=***&page=2");
}

TEST(MaskSecrets, AJsonMemberLosesItsValue) {
    EXPECT_EQ(maskSecrets(R"({"api_key":"463100_1","ver":1})"), R"({"api_key":"***","ver":1})");
    EXPECT_EQ(maskSecrets(R"({"apicx":12345,"x":1})"), R"({"apicx":***,"x":1})");
}

TEST(MaskSecrets, AQuoteInsideAJsonValueDoesNotEndIt) {
    EXPECT_EQ(maskSecrets(R"({"password":"a\"b\\","x":1})"), R"({"password":"***","x":1})");
    EXPECT_EQ(maskSecrets(R"({"password":"it's","x":1})"), R"({"password":"***","x":1})");
}

TEST(MaskSecrets, AMemberOfJsonInsideJsonLosesItsValue) {
    EXPECT_EQ(maskSecrets(R"({"commands_json":"[{\"password\":\"pa\\\"ss\",\"x\":1}]"})"),
              R"({"commands_json":"[{\"password\":\"***\",\"x\":1}]"})");
}

TEST(MaskSecrets, APercentEncodedMemberLosesItsValue) {
    EXPECT_EQ(maskSecrets("api=%7B%22password%22%3A%22hunter2%22%2C%22x%22%3A1"),
              "api=%7B%22password%22%3A%22***%22%2C%22x%22%3A1");
    EXPECT_EQ(maskSecrets("%5C%22password%5C%22%3A%5C%22hunter2%5C%22%2C"),
              "%5C%22password%5C%22%3A%5C%22***%5C%22%2C");
}

TEST(MaskSecrets, AnEmptyValueStaysEmpty) {
    EXPECT_EQ(maskSecrets(R"({"password":"","x":1})"), R"({"password":"","x":1})");
    EXPECT_EQ(maskSecrets("password=&x=1"), "password=&x=1");
}

TEST(MaskSecrets, AHeaderLosesAllWordsOfItsValue) {
    EXPECT_EQ(maskSecrets("Authorization: Bearer abc def"), "Authorization: ***");
}

TEST(MaskSecrets, LetterCaseAndLongerNamesMakeNoDifference) {
    EXPECT_EQ(maskSecrets("PassWord=x"), "PassWord=***");
    EXPECT_EQ(maskSecrets("client_secret=x y"), "client_secret=*** y");
}

TEST(MaskSecrets, WordsWithoutAValueStayAsTheyAre) {
    for (char const* const line : {"", "Wrong password", "password", "the password is wrong: try again",
                                   "secrets of editing", "a \"password\", quoted"}) {
        EXPECT_EQ(maskSecrets(line), line);
    }
}

TEST(MaskSecrets, NoCutOfALineShowsASecret) {
    std::string const line = R"(x {"a":"[{\"password\":\"hunter2hunter2\",\"b\":1}]"} api_key=hunter2 y)";
    for (std::size_t length = 0; length <= line.size(); ++length) {
        EXPECT_THAT(maskSecrets(line.substr(0, length)), Not(HasSubstr("h"))) << length;
    }
}

} // namespace
