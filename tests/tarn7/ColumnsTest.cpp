#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class Columns : public Tarn7Test {};

TEST_F(Columns, TheColumnsStandInTheirOrder) {
    std::vector<int> types;
    for (LogAttribute const& column : resource.getLogAttributes()) {
        types.push_back(column.getType());
    }
    EXPECT_EQ(types, (std::vector<int>{1, 45, 18, 59, 1003}));
}

TEST_F(Columns, TheFirstIsNamedByTheHostAsPlainText) {
    UIString const name = resource.getLogAttributes().front().getDisplayName();
    EXPECT_EQ(utf8(name.text), "#10663");
    EXPECT_EQ(name.resource, 999999U);
    EXPECT_EQ(name.extra, 0);
}

TEST_F(Columns, NoneCanBeEditedAndTheOtherFlagsStay) {
    for (LogAttribute const& column : resource.getLogAttributes()) {
        std::uint32_t const before = column.getType() == 1003 ? Tarn7Resource::getDurationAttribute().flags
                                                              : LogAttribute(column.getType()).flags;
        EXPECT_EQ(column.flags, before & ~2U) << column.getType();
        EXPECT_EQ(column.flags & 2U, 0U) << column.getType();
    }
    EXPECT_NE(LogAttribute(LogAttribute::eName).flags & 2U, 0U);
}

TEST_F(Columns, TheOthersKeepTheirOwnNames) {
    auto const columns = resource.getLogAttributes();
    for (std::size_t i = 1; i < 4; ++i) {
        EXPECT_EQ(columns[i].getDisplayName().resource,
                  LogAttribute(columns[i].getType()).getDisplayName().resource);
    }
}

TEST_F(Columns, TheDurationIsAnAttributeOfItsOwn) {
    LogAttribute const duration = Tarn7Resource::getDurationAttribute();
    EXPECT_EQ(utf8(duration.getDisplayName().text), "Duration");
    EXPECT_EQ(duration.getDisplayName().resource, 999999U);
    EXPECT_EQ(duration.getDisplayName().extra, 0);
    EXPECT_EQ(duration.getKey(), "len");
    EXPECT_EQ(static_cast<int>(duration.getFieldType()), 65);
    EXPECT_EQ(duration.flags, 1U);
    EXPECT_EQ(duration.preferredWidth, 1U);
    EXPECT_EQ(static_cast<int>(duration.getType()), 1003);
}

TEST_F(Columns, ACallerGetsACopyOfTheDuration) {
    LogAttribute changed = Tarn7Resource::getDurationAttribute();
    changed.flags = 7;
    changed.setDisplayName(UIString(L"Other"));
    EXPECT_EQ(Tarn7Resource::getDurationAttribute().flags, 1U);
    EXPECT_EQ(utf8(Tarn7Resource::getDurationAttribute().getDisplayName().text), "Duration");
}

} // namespace
} // namespace tarn7_tests
