#include "host/log/LoggerHandle.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/host/core/PrintText.h"

namespace {

class RecordingLog final : public LoggerBase {
public:
    void write(WideString const& text, eOutputType type) override { written.push_back({text, type, depth}); }
    void incIndent() override { ++depth; }
    void decIndent() override { --depth; }
    void reportProgress(double fraction, WideString const& text) override {
        progress = fraction;
        progressText = text;
    }

    struct Line {
        WideString text;
        eOutputType type;
        int depth;
    };
    std::vector<Line> written;
    int depth = 0;
    double progress = -1;
    WideString progressText;
};

TEST(LoggerHandle, CopiesLeadToTheSameLog) {
    Zq::Ptr<RecordingLog> const log = Zq::makeShared<RecordingLog>();
    LoggerHandle const first{Zq::Ptr<LoggerBase>(log)};
    LoggerHandle const second(first);
    LoggerHandle third;
    third = second;
    first.write(L"starts", LoggerBase::eTransferStarts);
    second.incIndent();
    third.write(L"plain", LoggerBase::ePlain);
    first.decIndent();
    second.write(L"failed", LoggerBase::eTransferFailed);
    third.reportProgress(0.5, L"half");
    ASSERT_EQ(log->written.size(), 3U);
    EXPECT_EQ(log->written[0].text, L"starts");
    EXPECT_EQ(log->written[0].type, 3);
    EXPECT_EQ(log->written[1].type, 0);
    EXPECT_EQ(log->written[1].depth, 1);
    EXPECT_EQ(log->written[2].type, 4);
    EXPECT_EQ(log->written[2].depth, 0);
    EXPECT_EQ(log->progress, 0.5);
    EXPECT_EQ(log->progressText, L"half");
}

TEST(LoggerHandle, ALineStaysOneLine) {
    Zq::Ptr<RecordingLog> const log = Zq::makeShared<RecordingLog>();
    LoggerHandle const handle{Zq::Ptr<LoggerBase>(log)};
    handle.write(L"a\nb\rc\td\x1b[2J\x7f\x85\x9b\x2028\x2029z", LoggerBase::ePlain);
    handle.write(WideString(L"a\0b", 3), LoggerBase::ePlain);
    handle.write(L"Mer \u00e9t\u00e9 \xd83d\xde00\u00a0%s", LoggerBase::ePlain);
    handle.write(L"", LoggerBase::ePlain);
    ASSERT_EQ(log->written.size(), 4U);
    EXPECT_EQ(log->written[0].text, L"a b c d [2J     z");
    EXPECT_EQ(log->written[1].text, L"a b");
    EXPECT_EQ(log->written[2].text, L"Mer \u00e9t\u00e9 \xd83d\xde00\u00a0%s");
    EXPECT_TRUE(log->written[3].text.isEmpty());
}

TEST(LoggerHandle, AHandleWithoutALogSwallowsWhatItIsTold) {
    LoggerHandle const handle;
    handle.write(L"unheard", LoggerBase::ePlain);
    handle.incIndent();
    handle.decIndent();
    handle.reportProgress(1, L"unheard");
}

TEST(LoggerHandle, AHandleTakenByValueIsReleased) {
    Zq::Ptr<RecordingLog> const log = Zq::makeShared<RecordingLog>();
    auto const take = [](LoggerHandle handle) { handle.write(L"taken", LoggerBase::ePlain); };
    take(LoggerHandle(Zq::Ptr<LoggerBase>(log)));
    EXPECT_EQ(log->written.size(), 1U);
    EXPECT_EQ(log->refCount().owners.load(), 1U);
}

} // namespace
