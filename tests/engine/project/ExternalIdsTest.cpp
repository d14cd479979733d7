#include "tests/engine/project/ProjectFixture.h"

namespace test {
namespace {

class ExternalIds : public ProjectTest {};

TEST_F(ExternalIds, AnObjectHasOneIdOfAKind) {
    makeKeptClip(1, L"x");
    project().associate(cookieOf(1), L"T7", L"1");
    project().associate(cookieOf(1), L"FQ", L"2");
    project().associate(cookieOf(1), L"T7", L"3");

    EXPECT_EQ(project().find(cookieOf(1), L"T7"), L"3");
    EXPECT_EQ(project().find(cookieOf(1), L"FQ"), L"2");
    EXPECT_TRUE(project().find(cookieOf(1), L"t7").isEmpty());
    EXPECT_TRUE(project().find(cookieOf(2), L"T7").isEmpty());
    EXPECT_TRUE(project().findObject(L"T7", L"1").isNull());
}

TEST_F(ExternalIds, TheObjectThatWasAssociatedLastIsFound) {
    makeKeptClip(1, L"kept");
    makeKeptClip(2, L"kept too");
    makeClip(3, L"temporary");
    makeClip(4, L"temporary too");

    for (std::uint8_t const number :
         {std::uint8_t{1}, std::uint8_t{3}, std::uint8_t{2}, std::uint8_t{4}, std::uint8_t{1}}) {
        project().associate(cookieOf(number), L"T7", L"5");
        EXPECT_EQ(project().findObject(L"T7", L"5"), cookieOf(number));
    }
    EXPECT_TRUE(project().findObject(L"FQ", L"5").isNull());
}

TEST_F(ExternalIds, ThoseOfATemporaryEditEndWithItUnlessItIsKept) {
    makeClip(1, L"passing");
    makeClip(2, L"staying");
    project().associate(cookieOf(1), L"T7", L"1");
    project().associate(cookieOf(2), L"T7", L"2");
    EXPECT_EQ(project().edit(cookieOf(1)).value().externalIds.size(), 1U);
    ASSERT_TRUE(project().place("S", cookieOf(2), {}, {}));
    reopen();

    EXPECT_TRUE(project().findObject(L"T7", L"1").isNull());
    EXPECT_EQ(project().findObject(L"T7", L"2"), cookieOf(2));
    EXPECT_EQ(project().find(cookieOf(2), L"T7"), L"2");
}

TEST_F(ExternalIds, TheOrderOfAssociatingOutlivesTheHost) {
    makeKeptClip(1, L"a");
    makeKeptClip(2, L"b");
    project().associate(cookieOf(2), L"T7", L"5");
    project().associate(cookieOf(1), L"T7", L"5");
    reopen();
    EXPECT_EQ(project().findObject(L"T7", L"5"), cookieOf(1));
    project().associate(cookieOf(2), L"T7", L"5");
    EXPECT_EQ(project().findObject(L"T7", L"5"), cookieOf(2));
}

TEST_F(ExternalIds, AnIdMayComeBeforeItsEdit) {
    project().associate(cookieOf(1), L"T7", L"early");
    EXPECT_EQ(project().find(cookieOf(1), L"T7"), L"early");
    EXPECT_FALSE(project().edit(cookieOf(1)));
    makeKeptClip(1, L"late");
    reopen();
    EXPECT_EQ(project().find(cookieOf(1), L"T7"), L"early");
}

TEST_F(ExternalIds, TheNullCookieIsNoObject) {
    project().associate(Cookie(), L"T7", L"1");
    EXPECT_TRUE(project().find(Cookie(), L"T7").isEmpty());
    EXPECT_TRUE(project().findObject(L"T7", L"1").isNull());
}

TEST_F(ExternalIds, TextsThatLookLikeSqlAreTexts) {
    makeKeptClip(1, L"x'); DROP TABLE edit; --");
    WideString const hostile(L"' OR '1'='1");
    project().associate(cookieOf(1), hostile, hostile);
    reopen();
    EXPECT_EQ(project().find(cookieOf(1), hostile), hostile);
    EXPECT_EQ(project().findObject(hostile, hostile), cookieOf(1));
    EXPECT_TRUE(project().findObject(L"T7", hostile).isNull());
    EXPECT_EQ(project().edits()[0].name(), L"x'); DROP TABLE edit; --");
}

} // namespace
} // namespace test
