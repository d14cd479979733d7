#include "host/json/Builder.h"

#include <gtest/gtest.h>

#include <limits>

#include "host/text/Unicode.h"
#include "tests/host/core/PrintText.h"
#include "tests/host/core/Record.h"

namespace {

using JSON::Builder;

// The text of an object with one quoted member "k".
WideString quoted(WideString const& value) {
    Builder builder;
    builder.startChild(nullptr);
    builder.add("k", value, true);
    builder.endChild();
    return builder.getOutput();
}

TEST(Builder, BeginsWithoutOutput) {
    EXPECT_TRUE(Builder().getOutput().isEmpty());
}

TEST(Builder, WritesEmptyObjectsAndArrays) {
    Builder object;
    object.startChild(nullptr);
    object.endChild();
    EXPECT_EQ(object.getOutput(), L"{}");
    Builder array;
    array.startArray(nullptr);
    array.endArray();
    EXPECT_EQ(array.getOutput(), L"[]");
}

TEST(Builder, WritesEveryKindOfMember) {
    Builder builder;
    builder.startChild(nullptr);
    builder.add("text", WideString(L"a b"), true);
    builder.add("literal", L"c", true);
    builder.add("number", 42);
    builder.add("negative", std::numeric_limits<std::int32_t>::min());
    builder.add("yes", true);
    builder.add("no", false);
    builder.add("bare", L"true", false);
    builder.endChild();
    EXPECT_EQ(builder.getOutput(),
              L"{\"text\":\"a b\",\"literal\":\"c\",\"number\":42,\"negative\":-2147483648,"
              L"\"yes\":true,\"no\":false,\"bare\":true}");
}

TEST(Builder, NestsObjectsAndArrays) {
    Builder builder;
    builder.startChild(nullptr);
    builder.startArray("list");
    builder.startChild(nullptr);
    builder.add("id", 1);
    builder.endChild();
    builder.startChild(nullptr);
    builder.endChild();
    builder.startArray(nullptr);
    builder.endArray();
    builder.endArray();
    builder.startChild("child");
    builder.startChild("deep");
    builder.add("on", true);
    builder.endChild();
    builder.endChild();
    builder.add("last", 2);
    builder.endChild();
    EXPECT_EQ(builder.getOutput(),
              L"{\"list\":[{\"id\":1},{},[]],\"child\":{\"deep\":{\"on\":true}},\"last\":2}");
}

TEST(Builder, ANullKeyAndAnEmptyKeyWriteTheEmptyKey) {
    Builder builder;
    builder.startChild(nullptr);
    builder.add(nullptr, L"a", true);
    builder.add("", 1);
    builder.startChild("");
    builder.endChild();
    builder.endChild();
    EXPECT_EQ(builder.getOutput(), L"{\"\":\"a\",\"\":1,\"\":{}}");
}

TEST(Builder, KeysAreDecodedAndEscaped) {
    Builder builder;
    builder.startChild(nullptr);
    builder.add("\xc3\xa9\"\n", 1);
    builder.endChild();
    EXPECT_EQ(builder.getOutput(), L"{\"\u00e9\\\"\\n\":1}");
}

TEST(Builder, EscapesQuotesBackslashesAndControlCharacters) {
    EXPECT_EQ(quoted(L"\"\\/"), L"{\"k\":\"\\\"\\\\/\"}");
    EXPECT_EQ(quoted(L"\b\f\n\r\t"), L"{\"k\":\"\\b\\f\\n\\r\\t\"}");
    EXPECT_EQ(quoted(L"\x01\x1f"), L"{\"k\":\"\\u0001\\u001f\"}");
    EXPECT_EQ(quoted(L"\x7f"), L"{\"k\":\"\x7f\"}");
    for (wchar_t code = 1; code < 0x20; ++code) {
        WideString const text = quoted(WideString(1, code));
        EXPECT_FALSE(text.contains(std::wstring_view(&code, 1))) << static_cast<int>(code);
        EXPECT_EQ(text[6], L'\\') << static_cast<int>(code);
    }
}

TEST(Builder, AZeroInsideATextIsEscapedAndEndsNothing) {
    EXPECT_EQ(quoted(WideString(std::wstring_view(L"a\0b", 3))), L"{\"k\":\"a\\u0000b\"}");
}

TEST(Builder, RunsBetweenEscapesStayWhole) {
    EXPECT_EQ(quoted(L"one \"two\" three\n"), L"{\"k\":\"one \\\"two\\\" three\\n\"}");
    EXPECT_EQ(quoted(WideString()), L"{\"k\":\"\"}");
    EXPECT_EQ(quoted(static_cast<wchar_t const*>(nullptr)), L"{\"k\":\"\"}");
}

TEST(Builder, CharactersBeyondTheBasicPlaneStayPairs) {
    WideString const pair = fromUTF8("\xf0\x9f\x98\x80");
    EXPECT_EQ(quoted(pair), L"{\"k\":\"" + pair + L"\"}");
    EXPECT_EQ(toUTF8(quoted(pair)), "{\"k\":\"\xf0\x9f\x98\x80\"}");
}

TEST(Builder, MalformedTextIsStillNoBrokenJSON) {
    WideString text;
    text += static_cast<wchar_t>(0xd800);
    text += L'"';
    EXPECT_EQ(toUTF8(quoted(text)), "{\"k\":\"\xef\xbf\xbd\\\"\"}");
}

TEST(Builder, ATextOfJSONBecomesOneString) {
    EXPECT_EQ(quoted(L"[{\"command\":\"search\"}]"), L"{\"k\":\"[{\\\"command\\\":\\\"search\\\"}]\"}");
}

TEST(Builder, AnElementIsWrittenMemberByMember) {
    Record record;
    record.appendString("query", "caf\xc3\xa9 & \"bar\"");
    record.appendNumber("p", 1.9);
    record.appendString("sb", "");
    record.appendFlag("on", false);
    Builder builder;
    builder.startArray(nullptr);
    builder.startChild(nullptr);
    builder.add("command", L"search", true);
    for (JSON::StringMember const& member : record.strings()) {
        builder.add(NarrowString(member.key).c_str(), fromUTF8(member.value), true);
    }
    for (JSON::NumberMember const& member : record.numbers()) {
        builder.add(NarrowString(member.key).c_str(), static_cast<std::int32_t>(member.value));
    }
    for (JSON::FlagMember const& member : record.flags()) {
        builder.add(NarrowString(member.key).c_str(), member.value);
    }
    builder.endChild();
    builder.endArray();
    EXPECT_EQ(builder.getOutput(), L"[{\"command\":\"search\",\"query\":\"caf\u00e9 & \\\"bar\\\"\","
                                   L"\"sb\":\"\",\"p\":1,\"on\":false}]");
}

TEST(Builder, ACopyOfTheOutputIsAPictureOfThatMoment) {
    Builder builder;
    builder.startArray(nullptr);
    WideString const before = builder.getOutput();
    builder.endArray();
    EXPECT_EQ(before, L"[");
    EXPECT_EQ(builder.getOutput(), L"[]");
}

} // namespace
