#include "host/text/LightweightString.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/host/core/LimitedMemory.h"
#include "tests/host/core/PrintText.h"

namespace {

TEST(LightweightString, NullAndEmptyAreTheSameText) {
    WideString const none;
    WideString const null(static_cast<wchar_t const*>(nullptr));
    WideString const empty(L"");
    WideString emptied(L"abc");
    emptied.clear();
    for (WideString const* const text : {&none, &null, &empty, &std::as_const(emptied)}) {
        EXPECT_TRUE(text->isEmpty());
        EXPECT_EQ(text->length(), 0U);
        EXPECT_EQ(*text, none);
        EXPECT_EQ(*text, L"");
        EXPECT_EQ(*text, static_cast<wchar_t const*>(nullptr));
        ASSERT_NE(text->c_str(), nullptr);
        EXPECT_EQ(*text->c_str(), L'\0');
    }
}

TEST(LightweightString, RoomAloneMakesNoText) {
    WideString text;
    text.reserve(100);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text, WideString());
    EXPECT_GT(text.capacity(), 100U);
    EXPECT_EQ(*text.c_str(), L'\0');
}

TEST(LightweightString, ANullTextAddsNothing) {
    wchar_t const* const null = nullptr;
    WideString text(L"a");
    text += null;
    EXPECT_EQ(text + null, L"a");
    EXPECT_EQ(null + text, L"a");
    EXPECT_EQ(text.append(null, 0), L"a");
}

TEST(LightweightString, KeepsItsCharactersAndATerminator) {
    WideString const text(L"clip");
    EXPECT_EQ(text.length(), 4U);
    EXPECT_EQ(std::wstring(text.c_str()), L"clip");
    EXPECT_EQ(text[3], L'p');
    EXPECT_EQ(std::wstring(text.begin(), text.end()), L"clip");
}

TEST(LightweightString, ALengthCutsTheTextShort) {
    EXPECT_EQ(WideString(L"clip", 2), L"cl");
    EXPECT_TRUE(WideString(L"clip", 0).isEmpty());
}

TEST(LightweightString, ATextMayHoldATerminatorWithin) {
    WideString const text(std::wstring_view(L"a\0b", 3));
    EXPECT_EQ(text.length(), 3U);
    EXPECT_NE(text, L"a");
    EXPECT_EQ(text[2], L'b');
}

TEST(LightweightString, ARepeatedCharacterFillsTheText) {
    EXPECT_EQ(WideString(3, L'0'), L"000");
    EXPECT_TRUE(WideString(0U, L'0').isEmpty());
}

TEST(LightweightString, ACopySharesTheBuffer) {
    WideString const first(L"text");
    WideString const second(first);
    WideString third;
    third = second;
    EXPECT_TRUE(first.sharesBufferWith(second));
    EXPECT_TRUE(first.sharesBufferWith(third));
    EXPECT_EQ(first.c_str(), third.c_str());
}

TEST(LightweightString, EmptyTextsShareNoBuffer) {
    EXPECT_FALSE(WideString().sharesBufferWith(WideString()));
}

TEST(LightweightString, ChangingACopyLeavesTheOriginalAlone) {
    WideString const first(L"text");
    WideString second(first);
    second += L"s";
    EXPECT_EQ(first, L"text");
    EXPECT_EQ(second, L"texts");
    EXPECT_FALSE(first.sharesBufferWith(second));
}

TEST(LightweightString, AppendsInPlaceForOneOwnerBelowTheCapacity) {
    LimitedMemory memory;
    WideString text(L"ab");
    text.reserve(10);
    ASSERT_EQ(text.capacity(), 11U);
    long const before = memory.allocations();
    wchar_t const* const place = text.c_str();
    text.append(L"cdefghij", 8);
    EXPECT_EQ(text.length(), 10U);
    EXPECT_EQ(text.c_str(), place);
    EXPECT_EQ(memory.allocations(), before);
    EXPECT_EQ(text, L"abcdefghij");
}

TEST(LightweightString, ALengthThatReachesTheCapacityNeedsANewBuffer) {
    LimitedMemory memory;
    WideString text(L"ab");
    text.reserve(10);
    long const before = memory.allocations();
    text.append(L"cdefghijk", 9);
    EXPECT_EQ(text.length(), 11U);
    EXPECT_GT(text.capacity(), 11U);
    EXPECT_EQ(memory.allocations(), before + 1);
    EXPECT_EQ(text, L"abcdefghijk");
}

TEST(LightweightString, ASecondOwnerMakesEvenAFittingAppendMove) {
    WideString text(L"ab");
    text.reserve(10);
    wchar_t const* const place = text.c_str();
    WideString const other = text;
    text += L'c';
    EXPECT_NE(text.c_str(), place);
    EXPECT_EQ(other.c_str(), place);
    EXPECT_EQ(other, L"ab");
}

TEST(LightweightString, TheLastOwnerAppendsInPlaceAgain) {
    WideString text(L"ab");
    text.reserve(10);
    wchar_t const* const place = text.c_str();
    { WideString const other = text; }
    text += L'c';
    EXPECT_EQ(text.c_str(), place);
}

TEST(LightweightString, AppendingNothingKeepsTheSharedBuffer) {
    WideString const first(L"text");
    WideString second(first);
    second.append(L"", 0);
    second += L"";
    second += WideString();
    EXPECT_TRUE(first.sharesBufferWith(second));
}

TEST(LightweightString, RepeatedCopyingAndChangingKeepsTheBufferSmall) {
    WideString text(L"start");
    std::vector<WideString> snapshots;
    for (int i = 0; i < 60; ++i) {
        snapshots.push_back(text);
        text += L'x';
    }
    EXPECT_EQ(text.length(), 65U);
    EXPECT_LE(text.capacity(), 2 * text.length());
    EXPECT_EQ(snapshots[59], text.substr(0, 64));
}

TEST(LightweightString, ReservingLessKeepsTheText) {
    WideString text(L"a long enough text");
    WideString const other = text;
    text.reserve(2);
    EXPECT_EQ(text, L"a long enough text");
    EXPECT_EQ(other, text);
    EXPECT_FALSE(other.sharesBufferWith(text)) << "room was asked for, so the buffer is private";
}

TEST(LightweightString, MoreRoomThanAnyTextNeedsIsNotAsked) {
    LimitedMemory memory;
    memory.allow(0);
    WideString text;
    text.reserve(0xffffffff);
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(text.capacity(), 0U);
}

TEST(LightweightString, AppendsItselfAndPartsOfItself) {
    WideString text(L"abc");
    text += text;
    EXPECT_EQ(text, L"abcabc");
    text.append(text.c_str() + 4, 2);
    EXPECT_EQ(text, L"abcabcbc");
    text.reserve(100);
    text.append(text.view());
    EXPECT_EQ(text, L"abcabcbcabcabcbc");
    text += text.c_str();
    EXPECT_EQ(text.length(), 32U);
    text.append(text[0]);
    EXPECT_EQ(text[32], L'a');
}

TEST(LightweightString, AssigningItselfChangesNothing) {
    WideString text(L"abc");
    WideString const& same = text;
    text = same;
    EXPECT_EQ(text, L"abc");
    WideString& alias = text;
    text = std::move(alias);
    EXPECT_EQ(text, L"abc");
}

TEST(LightweightString, AMovedFromTextIsEmptyAndUsable) {
    WideString first(L"abc");
    wchar_t const* const place = first.c_str();
    WideString second(std::move(first));
    EXPECT_EQ(second.c_str(), place);
    EXPECT_TRUE(first.isEmpty()); // NOLINT(bugprone-use-after-move): that state is what is tested
    EXPECT_EQ(first.capacity(), 0U);
    first += L"new";
    EXPECT_EQ(first, L"new");
    second = std::move(first);
    EXPECT_EQ(second, L"new");
}

TEST(LightweightString, JoinsTextsLiteralsAndCharacters) {
    WideString const a(L"a");
    WideString const b(L"b");
    EXPECT_EQ(a + b, L"ab");
    EXPECT_EQ(a + L"-", L"a-");
    EXPECT_EQ(L"-" + a, L"-a");
    EXPECT_EQ(a + L'!', L"a!");
    EXPECT_EQ(L"<" + a + L'/' + b + L">", L"<a/b>");
    EXPECT_EQ(a, L"a");
    EXPECT_EQ(a + a, L"aa");
    EXPECT_EQ(WideString() + WideString(), WideString());
    EXPECT_EQ(NarrowString("n") + "m", "nm");
}

TEST(LightweightString, JoiningAnEmptyTextSharesTheOther) {
    WideString const a(L"a");
    EXPECT_TRUE((a + WideString()).sharesBufferWith(a));
}

struct Replacement {
    wchar_t const* text;
    wchar_t const* find;
    wchar_t const* replacement;
    wchar_t const* result;
};

TEST(LightweightString, ReplacesFromTheLeftAndGoesOnBehindTheReplacement) {
    Replacement const cases[] = {
        {L"go to $WEBSITE$ now", L"$WEBSITE$", L"tarn7", L"go to tarn7 now"},
        {L"$C$$C$", L"$C$", L"x", L"xx"},
        {L"aaa", L"aa", L"b", L"ba"},
        {L"aa", L"a", L"aa", L"aaaa"},
        {L"abab", L"ab", L"", L""},
        {L"xabx", L"ab", L"", L"xx"},
        {L"abc", L"d", L"e", L"abc"},
        {L"abc", L"", L"e", L"abc"},
        {L"", L"a", L"b", L""},
        {L"ab", L"abc", L"x", L"ab"},
        {L"a.b.c", L".", L"::", L"a::b::c"},
    };
    for (Replacement const& c : cases) {
        WideString text(c.text);
        text.replaceAll(c.find, c.replacement);
        EXPECT_EQ(text, c.result) << toUTF8(WideString(c.text)).c_str();
    }
}

TEST(LightweightString, ReplacingWithoutAHitKeepsTheBuffer) {
    WideString const first(L"abc");
    WideString second(first);
    second.replaceAll(L"x", L"y");
    EXPECT_TRUE(first.sharesBufferWith(second));
}

TEST(LightweightString, ReplacingInACopyLeavesTheOriginalAlone) {
    WideString const first(L"abc");
    WideString second(first);
    second.replaceAll(L"b", L"-");
    EXPECT_EQ(first, L"abc");
    EXPECT_EQ(second, L"a-c");
}

TEST(LightweightString, PartsOfTheTextMayBeFoundAndPutInIt) {
    WideString text(L"ab-ab");
    text.replaceAll(text.view().substr(0, 1), text.view());
    EXPECT_EQ(text, L"ab-abb-ab-abb");
}

TEST(LightweightString, OrdersByCodeUnit) {
    EXPECT_LT(WideString(L"a"), WideString(L"b"));
    EXPECT_LT(WideString(L"B"), WideString(L"a"));
    EXPECT_LT(WideString(L"a"), WideString(L"aa"));
    EXPECT_LT(WideString(), WideString(L"a"));
    EXPECT_LT(WideString(L"ab"), WideString(L"b"));
    // U+1F600 is the pair d83d de00 and so stands before U+FF01, which a person would count lower.
    wchar_t const pair[] = {static_cast<wchar_t>(0xd83d), static_cast<wchar_t>(0xde00), 0};
    wchar_t const single[] = {static_cast<wchar_t>(0xff01), 0};
    EXPECT_LT(WideString(pair), WideString(single));
    EXPECT_LT(NarrowString("z"), NarrowString("\xc3\xa9")) << "bytes are unsigned";
}

TEST(LightweightString, FindsItsBeginningItsEndAndItsParts) {
    WideString const text(L"000123.mov");
    EXPECT_TRUE(text.startsWith(L"000"));
    EXPECT_FALSE(text.startsWith(L"mov"));
    EXPECT_TRUE(text.endsWith(L".mov"));
    EXPECT_FALSE(text.endsWith(L"x000123.mov"));
    EXPECT_TRUE(text.contains(L"123"));
    EXPECT_FALSE(text.contains(L"321"));
    EXPECT_EQ(text.substr(3, 3), L"123");
    EXPECT_EQ(text.substr(6), L".mov");
    EXPECT_TRUE(text.substr(10).isEmpty());
    EXPECT_TRUE(text.substr(99).isEmpty());
}

TEST(LightweightString, ReturnsEveryBufferToTheHost) {
    LimitedMemory memory;
    {
        WideString first(L"abc");
        WideString second = first;
        second += L"d";
        first.replaceAll(L"b", L"long replacement");
        first = second;
        NarrowString const narrow = toUTF8(first);
        EXPECT_GT(memory.live(), 0);
    }
    EXPECT_EQ(memory.live(), 0);
}

TEST(LightweightString, WithoutMemoryATextStaysAsItIs) {
    LimitedMemory memory;
    WideString text(L"abc");
    WideString const shared = text;
    memory.allow(0);
    text += L"def";
    EXPECT_EQ(text, L"abc");
    EXPECT_TRUE(text.sharesBufferWith(shared));
    text += text;
    EXPECT_EQ(text, L"abc");
    text.replaceAll(L"b", L"a much longer replacement");
    EXPECT_EQ(text, L"abc");
    text.reserve(1000);
    EXPECT_EQ(text, L"abc");
    EXPECT_EQ(text + L"d", L"abc");
    EXPECT_EQ(shared, L"abc");
}

TEST(LightweightString, WithoutMemoryANewTextIsEmpty) {
    LimitedMemory memory;
    memory.allow(0);
    EXPECT_TRUE(WideString(L"abc").isEmpty());
    EXPECT_TRUE(WideString(5, L'x').isEmpty());
    EXPECT_TRUE(WideString(0xffffffffU, L'x').isEmpty());
    EXPECT_TRUE(toUTF8(std::wstring_view(L"abc")).isEmpty());
    EXPECT_TRUE(fromUTF8("abc").isEmpty());
    WideString empty;
    empty += L'x';
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(*empty.c_str(), L'\0');
}

TEST(LightweightString, RemovingTextNeedsNoMemory) {
    LimitedMemory memory;
    WideString text(L"aaa");
    memory.allow(0);
    text.replaceAll(L"a", L"");
    EXPECT_TRUE(text.isEmpty());
    EXPECT_EQ(memory.live(), 0);
}

} // namespace
