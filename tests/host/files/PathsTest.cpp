#include "host/files/Paths.h"

#include <string>

#include <gtest/gtest.h>

namespace {

std::wstring folderOf(wchar_t const* path) {
    return std::wstring(getPath(path).view());
}
std::wstring baseNameOf(wchar_t const* path) {
    return std::wstring(stripPathAndExt(path).view());
}
std::wstring fixed(wchar_t const* name) {
    return std::wstring(fixForeignOSFileName(name).view());
}
std::wstring fixedBaseName(wchar_t const* name) {
    return std::wstring(stripPathAndExt(fixForeignOSFileName(name)).view());
}

TEST(GetPath, GivesTheFolderWithoutTheSeparatorAtItsEnd) {
    EXPECT_EQ(folderOf(L"/media/Tarn7/123.mov"), L"/media/Tarn7");
    EXPECT_EQ(folderOf(L"a/123.mov"), L"a");
    EXPECT_EQ(folderOf(L"/media/Tarn7/"), L"/media/Tarn7");
    EXPECT_EQ(folderOf(L"/media//123.mov"), L"/media");
}

TEST(GetPath, ABareNameHasNoFolder) {
    EXPECT_EQ(folderOf(L"123.mov"), L"");
    EXPECT_EQ(folderOf(L""), L"");
    EXPECT_EQ(folderOf(L".."), L"");
}

#if !defined(_WIN32)
TEST(GetPath, AFileInTheRootLiesInTheRoot) {
    EXPECT_EQ(folderOf(L"/123.mov"), L"/");
    EXPECT_EQ(folderOf(L"/"), L"/");
    EXPECT_EQ(folderOf(L"//123.mov"), L"/");
}
#endif

TEST(GetPath, GivesBackTheFolderThatANameWasJoinedTo) {
    EXPECT_TRUE(getPath(joinPaths(L"/media/Tarn7", L"123.mov")) == L"/media/Tarn7");
    EXPECT_TRUE(getPath(joinPaths(L"/media/Tarn7/", L"123.mov")) == L"/media/Tarn7");
}

TEST(StripPathAndExt, GivesTheNameAlone) {
    EXPECT_EQ(baseNameOf(L"a/b/000000123.mov"), L"000000123");
    EXPECT_EQ(baseNameOf(L"000000123.mov"), L"000000123");
    EXPECT_EQ(baseNameOf(L"a.b/000000123"), L"000000123");
    EXPECT_EQ(baseNameOf(L"/000000123"), L"000000123");
}

TEST(StripPathAndExt, TakesOnlyTheLastExtensionAway) {
    EXPECT_EQ(baseNameOf(L"a/clip.v2.final.mov"), L"clip.v2.final");
    EXPECT_EQ(baseNameOf(L"clip."), L"clip");
}

TEST(StripPathAndExt, ADotAtTheStartBeginsNoExtension) {
    EXPECT_EQ(baseNameOf(L"/home/.profile"), L".profile");
    EXPECT_EQ(baseNameOf(L".profile.bak"), L".profile");
    EXPECT_EQ(baseNameOf(L"."), L".");
    EXPECT_EQ(baseNameOf(L"a/.."), L"..");
}

TEST(StripPathAndExt, AFolderHasNoName) {
    EXPECT_EQ(baseNameOf(L"a/b.c/"), L"");
    EXPECT_EQ(baseNameOf(L""), L"");
}

TEST(FixForeignOSFileName, AnOrdinaryPathStaysAsItIs) {
    EXPECT_EQ(fixed(L"/media/T7/000000123.mov"), L"/media/T7/000000123.mov");
    EXPECT_EQ(fixed(L"000000123.mov"), L"000000123.mov");
    EXPECT_EQ(fixed(L"/media//a%20b/\u00e9\xd83d\xde00.mov"), L"/media//a%20b/\u00e9\xd83d\xde00.mov");
    EXPECT_EQ(fixed(L"/media/"), L"/media/");
    EXPECT_EQ(fixed(L""), L"");
}

TEST(FixForeignOSFileName, ForeignSeparatorsBecomeThoseOfThisSystem) {
#if defined(_WIN32)
    EXPECT_EQ(fixed(L"media/T7/1.mov"), L"media\\T7\\1.mov");
#else
    EXPECT_EQ(fixed(L"media\\T7\\1.mov"), L"media/T7/1.mov");
#endif
    EXPECT_EQ(fixedBaseName(L"C:\\media\\000000123.mov"), L"000000123");
    EXPECT_EQ(fixedBaseName(L"a/b\\000000123.mov"), L"000000123");
}

TEST(FixForeignOSFileName, AQueryOrFragmentBehindTheNameIsNoPartOfIt) {
    EXPECT_EQ(fixedBaseName(L"/media/000000123.mov?x=1/2"), L"000000123");
    EXPECT_EQ(fixedBaseName(L"/media/000000123.mov?e=.mp4&u=http://h/b.c"), L"000000123");
    EXPECT_EQ(fixedBaseName(L"/media/000000123.mov#t=1/2"), L"000000123");
    EXPECT_EQ(fixedBaseName(L"/media/000000123.mov#a?b"), L"000000123");
    EXPECT_EQ(fixed(L"?page=api"), L"");
}

TEST(FixForeignOSFileName, ReservedCharactersAreReplacedWithinTheirPartOnly) {
    EXPECT_EQ(fixedBaseName(L"/me:dia/000000123.mov"), L"000000123");
    std::wstring const base = fixedBaseName(L"/media/a:b|c.mov");
    EXPECT_TRUE(base.starts_with(L"a_b_c")) << std::string(base.begin(), base.end());
    EXPECT_EQ(fixed(L"/a\nb").find(L'\n'), std::wstring::npos);
}

TEST(FixForeignOSFileName, NoPartLeadsToAFolderAbove) {
    for (wchar_t const* path : {L"../x", L"/a/../../x", L"/..", L"..\\..\\x", L"/a/..", L"./.."}) {
        std::wstring const result = L"/" + fixed(path) + L"/";
        EXPECT_EQ(result.find(L"/../"), std::wstring::npos);
        EXPECT_EQ(result.find(L"/./"), std::wstring::npos);
    }
}

TEST(FixForeignOSFileName, AnOverLongNameIsCutSoThatASuffixStillFits) {
    std::wstring const base = fixedBaseName((L"/" + std::wstring(5000, L'\u20ac') + L".mov").c_str());
    EXPECT_GT(base.size(), 10U);
    std::wstring const cacheName = base + L".partial";
    EXPECT_TRUE(joinPaths(L"/cache", WideString(cacheName)) == WideString(L"/cache/" + cacheName));
}

} // namespace
