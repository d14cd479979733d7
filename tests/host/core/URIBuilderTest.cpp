#include "host/web/URIBuilder.h"

#include <gtest/gtest.h>

#include "tests/host/core/PrintText.h"

namespace {

TEST(URIBuilder, JoinsWithOneSlash) {
    EXPECT_EQ(URIBuilder::join(L"https://h/a", L"b.mov"), L"https://h/a/b.mov");
    EXPECT_EQ(URIBuilder::join(L"https://h/a/", L"b.mov"), L"https://h/a/b.mov");
    EXPECT_EQ(URIBuilder::join(L"https://h/a", L"/b.mov"), L"https://h/a/b.mov");
    EXPECT_EQ(URIBuilder::join(L"https://h/a/", L"/b.mov"), L"https://h/a/b.mov");
}

TEST(URIBuilder, AnEmptyPartStillLeavesTheSlash) {
    EXPECT_EQ(URIBuilder::join(L"https://h", L""), L"https://h/");
    EXPECT_EQ(URIBuilder::join(L"https://h/", L""), L"https://h/");
    EXPECT_EQ(URIBuilder::join(L"", L"a"), L"/a");
}

TEST(URIBuilder, LeavesTheArgumentsAlone) {
    WideString const base(L"https://h/");
    WideString const name(L"a");
    (void)URIBuilder::join(base, name);
    EXPECT_EQ(base, L"https://h/");
    EXPECT_EQ(name, L"a");
}

} // namespace
