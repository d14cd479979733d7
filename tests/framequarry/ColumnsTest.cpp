#include "tarn7/Tarn7Resource.h"
#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

class Columns : public FrameQuarryTest {};

TEST_F(Columns, TheColumnsStandInTheirOrder) {
    std::vector<int> types;
    for (LogAttribute const& column : resource.getLogAttributes()) {
        types.push_back(column.getType());
    }
    EXPECT_EQ(types, (std::vector<int>{1, 45, 18, 59}));
}

TEST_F(Columns, TheFirstIsNamedByTheHostAsPlainText) {
    UIString const name = resource.getLogAttributes().front().getDisplayName();
    EXPECT_EQ(utf8(name.text), "#10663");
    EXPECT_EQ(name.resource, 999999U);
    EXPECT_EQ(name.extra, 0);
}

TEST_F(Columns, TheOthersKeepTheirOwnNames) {
    auto const columns = resource.getLogAttributes();
    for (std::size_t i = 1; i < columns.size(); ++i) {
        LogAttribute const plain(columns[i].getType());
        EXPECT_EQ(columns[i].getDisplayName().resource, plain.getDisplayName().resource);
        EXPECT_EQ(columns[i].getDisplayName().text, plain.getDisplayName().text);
    }
}

TEST_F(Columns, NoneCanBeEditedAndTheOtherFlagsStay) {
    for (LogAttribute const& column : resource.getLogAttributes()) {
        std::uint32_t const before = LogAttribute(column.getType()).flags;
        EXPECT_NE(before & 2U, 0U) << column.getType();
        EXPECT_EQ(column.flags, before & ~2U) << column.getType();
    }
}

TEST_F(Columns, EachIs104WideAndThoseOfTheOtherRepositoryAreNot) {
    for (LogAttribute const& column : resource.getLogAttributes()) {
        EXPECT_EQ(column.preferredWidth, 104U) << column.getType();
    }
    Tarn7Resource const other;
    for (LogAttribute const& column : other.getLogAttributes()) {
        EXPECT_NE(column.preferredWidth, 104U) << column.getType();
    }
}

} // namespace
} // namespace framequarry_tests
