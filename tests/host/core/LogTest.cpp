#include "host/log/Log.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/host/core/InstalledHost.h"

namespace {

class Lines final : public iLogSink {
public:
    Lines() : installed_(services(*this)) {}
    void write(std::string_view line) override { lines.emplace_back(line); }
    std::vector<std::string> lines;

private:
    static HostServices services(iLogSink& sink) {
        HostServices services;
        services.log = &sink;
        return services;
    }
    InstalledHost installed_;
};

std::string logged(std::string const& value) {
    Lines log;
    Log("%s", value.c_str());
    return log.lines.empty() ? "nothing" : log.lines.front();
}

TEST(Log, WritesTheValuesIntoTheFormat) {
    Lines log;
    Log("%s: %d of %u, %.2f%%", "clip", -3, 7U, 12.345);
    EXPECT_EQ(log.lines, std::vector<std::string>{"clip: -3 of 7, 12.35%"});
}

TEST(Log, DropsOneTrailingLineBreak) {
    Lines log;
    Log("first\n");
    Log("second");
    Log("\n");
    EXPECT_EQ(log.lines, (std::vector<std::string>{"first", "second", ""}));
}

TEST(Log, AValueStartsNoLineOfItsOwn) {
    EXPECT_EQ(logged("a\nb\r\nc"), "a\\x0ab\\x0d\\x0ac");
    EXPECT_EQ(logged("\n\n"), "\\x0a");
    EXPECT_EQ(logged("\x1b[31mred\x07\t\x7f"), "\\x1b[31mred\\x07\\x09\\x7f");
    EXPECT_EQ(logged("\xc2\x85next"), "\\x85next") << "the second block of control characters";
    EXPECT_EQ(logged("\xe2\x80\xa8line\xe2\x80\xa9paragraph"), "\\u2028line\\u2029paragraph");
}

TEST(Log, AZeroFromAFormatDoesNotHideTheRest) {
    Lines log;
    Log("a%cb", 0);
    EXPECT_EQ(log.lines, std::vector<std::string>{"a\\x00b"});
}

TEST(Log, PercentSignsOfAValueAreNoFormat) {
    EXPECT_EQ(logged("%s%n%d"), "%s%n%d");
}

TEST(Log, TextBeyondASCIIStays) {
    EXPECT_EQ(logged("caf\xc3\xa9 \xf0\x9f\x98\x80"), "caf\xc3\xa9 \xf0\x9f\x98\x80");
}

TEST(Log, MalformedBytesBecomeTheReplacementCharacter) {
    EXPECT_EQ(logged("a\xff\x62"), "a\xef\xbf\xbd\x62");
}

TEST(Log, ALongLineIsCut) {
    EXPECT_EQ(logged(std::string(4096, 'a')), std::string(4096, 'a'));
    EXPECT_EQ(logged(std::string(4097, 'a')), std::string(4096, 'a'));
    EXPECT_EQ(logged(std::string(100000, 'a')), std::string(4096, 'a'));
    EXPECT_EQ(logged(std::string(4096, 'a') + "\n"), std::string(4096, 'a'));
}

TEST(Log, TheCutGoesThroughNoCharacter) {
    EXPECT_EQ(logged(std::string(4095, 'a') + "\xc3\xa9"), std::string(4095, 'a'));
    EXPECT_EQ(logged(std::string(4094, 'a') + "\xc3\xa9"), std::string(4094, 'a') + "\xc3\xa9");
    EXPECT_EQ(logged(std::string(4093, 'a') + "\xf0\x9f\x98\x80z"), std::string(4093, 'a'));
}

TEST(Log, EscapesCountForTheLength) {
    std::string const line = logged(std::string(4096, '\x01'));
    EXPECT_EQ(line.size(), 4096U);
    EXPECT_EQ(line.substr(0, 8), "\\x01\\x01");
}

TEST(Log, WithoutASinkNothingHappens) {
    InstalledHost const none{HostServices()};
    Log("%s", "unheard");
}

} // namespace
