#include "host/text/Unicode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/host/core/PrintText.h"

namespace {

// A text of the given elements: source literals cannot hold lone surrogates.
WideString units(std::vector<char32_t> const& elements) {
    WideString text;
    for (char32_t const element : elements) {
        text.append(static_cast<wchar_t>(element));
    }
    return text;
}

WideString replacements(std::uint32_t count) {
    return WideString(count, static_cast<wchar_t>(0xfffd));
}

std::string const replacementBytes = "\xef\xbf\xbd";

TEST(Unicode, EveryCharacterOfTheBasicPlaneComesBack) {
    for (char32_t c = 0; c <= 0xffff; ++c) {
        if (c >= 0xd800 && c < 0xe000) {
            continue;
        }
        WideString const text = units({c});
        NarrowString const narrow = toUTF8(text);
        ASSERT_EQ(narrow.length(), c < 0x80 ? 1U : c < 0x800 ? 2U : 3U) << static_cast<unsigned>(c);
        ASSERT_EQ(fromUTF8(narrow), text) << static_cast<unsigned>(c);
    }
}

TEST(Unicode, EveryCharacterBeyondTheBasicPlaneIsASurrogatePair) {
    for (char32_t c = 0x10000; c <= 0x10ffff; ++c) {
        WideString const text = units({0xd800 + ((c - 0x10000) >> 10), 0xdc00 + ((c - 0x10000) & 0x3ff)});
        NarrowString const narrow = toUTF8(text);
        ASSERT_EQ(narrow.length(), 4U) << static_cast<unsigned>(c);
        ASSERT_EQ(fromUTF8(narrow), text) << static_cast<unsigned>(c);
    }
}

TEST(Unicode, KnownCharactersHaveTheirKnownBytes) {
    EXPECT_EQ(toUTF8(units({0x7f, 0x80, 0x7ff, 0x800, 0xffff})),
              "\x7f\xc2\x80\xdf\xbf\xe0\xa0\x80\xef\xbf\xbf");
    EXPECT_EQ(toUTF8(units({0xd800, 0xdc00})), "\xf0\x90\x80\x80");
    EXPECT_EQ(toUTF8(units({0xd83d, 0xde00})), "\xf0\x9f\x98\x80");
    EXPECT_EQ(toUTF8(units({0xdbff, 0xdfff})), "\xf4\x8f\xbf\xbf");
}

TEST(Unicode, EmptyTextStaysEmpty) {
    EXPECT_TRUE(toUTF8(WideString()).isEmpty());
    EXPECT_TRUE(fromUTF8(NarrowString()).isEmpty());
}

TEST(Unicode, AZeroInsideIsACharacter) {
    EXPECT_EQ(toUTF8(std::wstring_view(L"a\0b", 3)), NarrowString(std::string_view("a\0b", 3)));
    EXPECT_EQ(fromUTF8(std::string_view("a\0b", 3)).length(), 3U);
}

TEST(Unicode, ALoneSurrogateBecomesTheReplacementCharacter) {
    for (char32_t const surrogate : {0xd800U, 0xdbffU, 0xdc00U, 0xdfffU}) {
        EXPECT_EQ(toUTF8(units({surrogate})).view(), replacementBytes);
        EXPECT_EQ(toUTF8(units({U'a', surrogate, U'b'})).view(), "a" + replacementBytes + "b");
    }
}

TEST(Unicode, SurrogatesInTheWrongOrderAreTwoReplacements) {
    EXPECT_EQ(toUTF8(units({0xde00, 0xd83d})).view(), replacementBytes + replacementBytes);
}

TEST(Unicode, AHighSurrogateBeforeAPairIsAlone) {
    EXPECT_EQ(toUTF8(units({0xd83d, 0xd83d, 0xde00})).view(), replacementBytes + "\xf0\x9f\x98\x80");
}

TEST(Unicode, AnElementThatIsNoCodeUnitIsOneReplacementAndJoinsNothing) {
    if (sizeof(wchar_t) == 2) {
        GTEST_SKIP() << "every element is a code unit here";
    }
    EXPECT_EQ(toUTF8(units({0x10000})).view(), replacementBytes);
    EXPECT_EQ(toUTF8(units({0x1f600, U'a'})).view(), replacementBytes + "a");
    EXPECT_EQ(toUTF8(units({0x110000, 0xdc00})).view(), replacementBytes + replacementBytes);
    EXPECT_EQ(toUTF8(units({0xd800, 0x110000})).view(), replacementBytes + replacementBytes);
    EXPECT_EQ(toUTF8(units({0xffffffff})).view(), replacementBytes);
}

TEST(Unicode, BytesThatNoSequenceBeginsWithAreOneReplacementEach) {
    for (int byte = 0x80; byte <= 0xff; ++byte) {
        if (byte >= 0xc2 && byte <= 0xf4) {
            continue;
        }
        std::string const text(1, static_cast<char>(byte));
        EXPECT_EQ(fromUTF8(text), replacements(1)) << byte;
        EXPECT_EQ(fromUTF8(text + text + "a"), replacements(2) + L"a") << byte;
    }
}

TEST(Unicode, OverlongFormsAreRefusedByteByByte) {
    EXPECT_EQ(fromUTF8("\xc0\x80"), replacements(2));
    EXPECT_EQ(fromUTF8("\xc1\xbf"), replacements(2));
    EXPECT_EQ(fromUTF8("\xe0\x80\x80"), replacements(3));
    EXPECT_EQ(fromUTF8("\xe0\x9f\xbf"), replacements(3));
    EXPECT_EQ(fromUTF8("\xf0\x80\x80\x80"), replacements(4));
    EXPECT_EQ(fromUTF8("\xf0\x8f\xbf\xbf"), replacements(4));
}

TEST(Unicode, EncodedSurrogatesAreRefusedByteByByte) {
    EXPECT_EQ(fromUTF8("\xed\xa0\x80"), replacements(3));
    EXPECT_EQ(fromUTF8("\xed\xbf\xbf"), replacements(3));
    EXPECT_EQ(fromUTF8("\xed\xa0\xbd\xed\xb8\x80"), replacements(6));
}

TEST(Unicode, CharactersBeyondTheLastAreRefusedByteByByte) {
    EXPECT_EQ(fromUTF8("\xf4\x90\x80\x80"), replacements(4));
    EXPECT_EQ(fromUTF8("\xf5\x80\x80\x80"), replacements(4));
    EXPECT_EQ(fromUTF8("\xff\xfe"), replacements(2));
}

TEST(Unicode, ACutSequenceIsOneReplacementWhateverItsLength) {
    for (std::string_view const begun : {"\xc3", "\xe2", "\xe2\x82", "\xf0", "\xf0\x9f", "\xf0\x9f\x98"}) {
        EXPECT_EQ(fromUTF8(begun), replacements(1));
        EXPECT_EQ(fromUTF8(std::string(begun) + "a"), replacements(1) + L"a");
        EXPECT_EQ(fromUTF8(std::string(begun) + "\xc3\xa9"), replacements(1) + L"\u00e9");
    }
}

// The example of section 3.9 of the Unicode standard.
TEST(Unicode, TheMaximalSubpartsOfTheStandardsExampleAreReplaced) {
    EXPECT_EQ(fromUTF8("\x61\xf1\x80\x80\xe1\x80\xc2\x62\x80\x63\x80\xbf\x64"),
              L"a" + replacements(3) + L"b" + replacements(1) + L"c" + replacements(2) + L"d");
}

TEST(Unicode, LongTextsCrossEveryBlockBoundaryUnharmed) {
    for (std::uint32_t lead = 0; lead < 300; ++lead) {
        WideString text(lead, L'a');
        for (int i = 0; i < 200; ++i) {
            text += units({0xd83d, 0xde00, 0x20ac, 0xe9});
        }
        NarrowString const narrow = toUTF8(text);
        ASSERT_EQ(narrow.length(), lead + 200 * 9);
        ASSERT_EQ(fromUTF8(narrow), text) << lead;
    }
}

} // namespace
