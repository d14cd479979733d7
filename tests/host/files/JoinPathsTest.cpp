#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/files/Paths.h"
#include "host/text/Unicode.h"

namespace {

// The harmless name that stands for any name.
std::wstring nameFor(std::wstring const& name) {
    return std::wstring(joinPaths(WideString(), WideString(name)).view());
}

std::string readable(std::wstring const& text) {
    return std::string(toUTF8(text).view());
}

bool isHigh(wchar_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool isLow(wchar_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

void expectHarmless(std::wstring const& name) {
    SCOPED_TRACE(readable(name));
    ASSERT_FALSE(name.empty());
    EXPECT_NE(name, L".");
    EXPECT_NE(name, L"..");
    EXPECT_NE(name.back(), L'.');
    EXPECT_NE(name.back(), L' ');
    EXPECT_LE(toUTF8(name).length(), 255U);
    for (std::size_t i = 0; i < name.size(); ++i) {
        auto const unit = static_cast<std::uint32_t>(name[i]);
        EXPECT_TRUE(unit >= 0x20 && !(unit >= 0x7f && unit < 0xa0) && unit <= 0xffff);
        EXPECT_EQ(std::wstring_view(L"/\\<>:\"|?*").find(name[i]), std::wstring_view::npos);
        if (isHigh(name[i])) {
            ASSERT_TRUE(i + 1 < name.size() && isLow(name[i + 1]));
            ++i;
        } else {
            EXPECT_FALSE(isLow(name[i]));
        }
    }
}

TEST(JoinPaths, TheFolderMayEndInASeparatorOrNot) {
    EXPECT_TRUE(joinPaths(L"/media/Tarn7", L"123.mov") == L"/media/Tarn7/123.mov");
    EXPECT_TRUE(joinPaths(L"/media/Tarn7/", L"123.mov") == L"/media/Tarn7/123.mov");
    EXPECT_TRUE(joinPaths(L"/", L"123.mov") == L"/123.mov");
    EXPECT_TRUE(joinPaths(L"media", L"123.mov") == L"media/123.mov");
}

TEST(JoinPaths, WithoutAFolderTheBareNameIsGiven) {
    EXPECT_EQ(nameFor(L"123.mov"), L"123.mov");
    expectHarmless(nameFor(L"/etc/passwd"));
}

TEST(JoinPaths, AnOrdinaryNameStaysExactly) {
    for (wchar_t const* name : {L"123.mov", L"000000123_main_xl.mp4", L"a b (2), c's & d.mov", L".hidden",
                                L"a..b", L"-rf", L"console", L"COM", L"COM10.mov", L"nullify.mov",
                                L"\u00e9t\u00e9.mov", L"\xd83d\xde00.mov", L"%2e%2e%2f", L"~"}) {
        EXPECT_EQ(nameFor(name), name) << readable(name);
        expectHarmless(name);
    }
}

TEST(JoinPaths, ANameNeverLeavesTheFolder) {
    for (wchar_t const* name :
         {L"..", L".", L"...", L"../x.mov", L"../../etc/passwd", L"/etc/passwd", L"a/b.mov", L"..\\..\\x",
          L"C:\\x.mov", L"a/..", L"./a", L"a/", L"//", L"\\\\server\\share"}) {
        SCOPED_TRACE(readable(name));
        std::wstring const path(joinPaths(L"/media/Tarn7", WideString(name)).view());
        ASSERT_TRUE(path.starts_with(L"/media/Tarn7/"));
        std::wstring const harmless = path.substr(std::wstring_view(L"/media/Tarn7/").size());
        expectHarmless(harmless);
        EXPECT_EQ(harmless.find(L".."), std::wstring::npos);
        EXPECT_NE(harmless.front(), L'.');
    }
}

TEST(JoinPaths, TheExtensionOfAHostileNameStays) {
    EXPECT_TRUE(nameFor(L"../x.mov").ends_with(L".mov"));
    EXPECT_TRUE(nameFor(L"a:b.tar.gz").ends_with(L".gz"));
    EXPECT_TRUE(nameFor(L"CON.mov").ends_with(L".mov"));
}

TEST(JoinPaths, ControlAndDirectionCharactersAreReplaced) {
    for (wchar_t const unit :
         {L'\x01', L'\n', L'\r', L'\t', L'\x1b', L'\x7f', L'\x85', L'\x9b', L'\x2028', L'\x2029'}) {
        std::wstring const name = nameFor(std::wstring(L"a") + unit + L"b.mov");
        expectHarmless(name);
        EXPECT_EQ(name.find(unit), std::wstring::npos);
    }
    EXPECT_EQ(nameFor(L"a\x202e"
                      L"vom.exe")
                  .find(L'\x202e'),
              std::wstring::npos);
}

TEST(JoinPaths, ATerminatorInsideDoesNotCutTheName) {
    std::wstring const name = nameFor(std::wstring(L"a\0b.mov", 7));
    expectHarmless(name);
    EXPECT_TRUE(name.starts_with(L"a_b"));
    EXPECT_TRUE(name.ends_with(L".mov"));
}

TEST(JoinPaths, ReservedCharactersAreReplaced) {
    for (wchar_t const unit : std::wstring_view(L"<>:\"|?*/\\")) {
        expectHarmless(nameFor(std::wstring(L"a") + unit + L"b.mov"));
    }
}

TEST(JoinPaths, NamesOfDevicesAreReplaced) {
    for (wchar_t const* name :
         {L"CON", L"con", L"Nul.mov", L"AUX", L"PRN.txt", L"COM1", L"com9.mov", L"LPT1.mov", L"COM\u00b2",
          L"NUL .mov", L"con.tar.gz", L"CONIN$", L"CLOCK$"}) {
        std::wstring const harmless = nameFor(name);
        SCOPED_TRACE(readable(harmless));
        EXPECT_NE(harmless, name);
        std::wstring const stem = harmless.substr(0, harmless.find(L'.'));
        std::wstring const device = std::wstring(name).substr(0, std::wstring(name).find_first_of(L". "));
        EXPECT_NE(stem, device);
        EXPECT_EQ(nameFor(harmless), harmless);
    }
}

TEST(JoinPaths, DotsAndBlanksAtTheEndAreReplaced) {
    for (wchar_t const* name : {L"a.", L"a ", L"a. .", L"a.mov ", L" ", L"...."}) {
        std::wstring const harmless = nameFor(name);
        expectHarmless(harmless);
        EXPECT_NE(harmless, name);
    }
    EXPECT_TRUE(nameFor(L"a.mov ").ends_with(L".mov"));
}

TEST(JoinPaths, AnEmptyNameBecomesAName) {
    expectHarmless(nameFor(L""));
    EXPECT_NE(std::wstring(joinPaths(L"/media", WideString()).view()), L"/media/");
}

TEST(JoinPaths, AnOverLongNameIsCutAndKeepsItsExtension) {
    for (std::wstring const& stem :
         {std::wstring(300, L'a'), std::wstring(100000, L'\u20ac'), std::wstring(255, L' ')}) {
        std::wstring const name = nameFor(stem + L".mov");
        expectHarmless(name);
        EXPECT_TRUE(name.ends_with(L".mov"));
    }
    EXPECT_EQ(nameFor(std::wstring(255, L'a')), std::wstring(255, L'a'));
    EXPECT_LE(nameFor(std::wstring(256, L'a')).size(), 255U);
    EXPECT_LE(nameFor(L"a." + std::wstring(300, L'b')).size(), 255U);
    EXPECT_EQ(nameFor(std::wstring(85, L'\u20ac')), std::wstring(85, L'\u20ac'));
    EXPECT_NE(nameFor(std::wstring(86, L'\u20ac')), std::wstring(86, L'\u20ac'));
}

TEST(JoinPaths, ACutNeverSplitsASurrogatePair) {
    for (std::size_t lead = 0; lead < 4; ++lead) {
        std::wstring name(lead, L'a');
        for (int i = 0; i < 100; ++i) {
            name += L"\xd83d\xde00";
        }
        expectHarmless(nameFor(name + L".mov"));
    }
}

TEST(JoinPaths, UnpairedSurrogatesAreReplaced) {
    expectHarmless(nameFor(L"a\xd83d.mov"));
    expectHarmless(nameFor(L"a\xde00\xd83d.mov"));
    expectHarmless(nameFor(L"\xd83d"));
    EXPECT_NE(nameFor(L"a\xd83d.mov"), nameFor(L"a\xd83e.mov"));
}

TEST(JoinPaths, DifferentHostileNamesStayDifferent) {
    std::vector<std::wstring> const names = {L"a/b.mov",
                                             L"a\\b.mov",
                                             L"a:b.mov",
                                             L"a_b.mov",
                                             L"a|b.mov",
                                             L"",
                                             L".",
                                             L"..",
                                             L"...",
                                             L"a.mov.",
                                             L"a.mov ",
                                             L"a.mov",
                                             L"CON",
                                             L"con",
                                             L"_CON.mov",
                                             L"CON.mov",
                                             L"/",
                                             L"//",
                                             L"\\",
                                             std::wstring(1, L'\0'),
                                             std::wstring(300, L'a'),
                                             std::wstring(301, L'a')};
    std::set<std::wstring> harmless;
    for (std::wstring const& name : names) {
        harmless.insert(nameFor(name));
    }
    EXPECT_EQ(harmless.size(), names.size());
}

TEST(JoinPaths, AnyNameBecomesAHarmlessOneThatStaysAsItIs) {
    std::mt19937 random(20240607); // NOLINT: the same names each time
    std::vector<wchar_t> const units = {L'a',
                                        L'.',
                                        L' ',
                                        L'/',
                                        L'\\',
                                        L'\0',
                                        L'\n',
                                        L':',
                                        L'C',
                                        L'O',
                                        L'N',
                                        L'1',
                                        L'\u20ac',
                                        static_cast<wchar_t>(0xd83d),
                                        static_cast<wchar_t>(0xde00),
                                        L'\x202e'};
    for (int i = 0; i < 5000; ++i) {
        std::wstring name(random() % (i % 10 == 0 ? 400 : 8), L'a');
        for (wchar_t& unit : name) {
            unit = units[random() % units.size()];
        }
        std::wstring const harmless = nameFor(name);
        expectHarmless(harmless);
        ASSERT_EQ(nameFor(harmless), harmless);
    }
}

#if !defined(_WIN32)
TEST(JoinPaths, AnElementThatIsNoCodeUnitIsReplaced) {
    expectHarmless(nameFor(std::wstring(1, static_cast<wchar_t>(0x1f600))));
    expectHarmless(nameFor(std::wstring(1, static_cast<wchar_t>(-1))));
}
#endif

} // namespace
