#include "repository/ResultList.h"

#include <gtest/gtest.h>

#include "tests/fake_host/FakeHost.h"
#include "tests/fake_host/Texts.h"

namespace repository_tests {
namespace {

TEST(PageCount, IsRoundedUpExactlyForEveryCount) {
    for (std::uint32_t const pageSize : {1U, 2U, 3U, 7U, 10U, 25U, 50U, 239U, 32768U, 65534U, 65535U}) {
        for (std::uint32_t count = 0; count <= 65535; ++count) {
            ASSERT_EQ(countPages(static_cast<std::uint16_t>(count), static_cast<std::uint16_t>(pageSize)),
                      (count + pageSize - 1) / pageSize)
                << count << " in pages of " << pageSize;
        }
    }
}

TEST(PageCount, OfPagesOfSizeZeroIsZero) {
    EXPECT_EQ(countPages(0, 0), 0);
    EXPECT_EQ(countPages(95, 0), 0);
    EXPECT_EQ(countPages(65535, 0), 0);
}

TEST(ResultColumns, TheFirstIsRenamedAndNoneCanBeEdited) {
    fake::Host const host;
    LogAttribute wide(LogAttribute::ePrice);
    wide.flags = 0xffffffff;
    wide.preferredWidth = 7;
    auto const columns = resultColumns({LogAttribute(LogAttribute::eFormat), wide});
    ASSERT_EQ(columns.size(), 2U);
    EXPECT_EQ(columns[0].getType(), LogAttribute::eFormat);
    EXPECT_EQ(fake::utf8(columns[0].getDisplayName().text), "#10663");
    EXPECT_EQ(columns[0].flags, LogAttribute(LogAttribute::eFormat).flags & ~2U);
    EXPECT_EQ(columns[1].flags, 0xfffffffdU);
    EXPECT_EQ(columns[1].preferredWidth, 7U);
    EXPECT_EQ(columns[1].getDisplayName().resource, wide.getDisplayName().resource);
}

TEST(ClipAttributes, AreNameClipIdAndSourceInThisOrder) {
    ClipAttributes const attributes(L"XY", "Source");
    RemoteAsset first;
    RemoteAsset second;
    attributes.addTo(first, "One", 1);
    attributes.addTo(second, "", -1);
    auto const texts = [](RemoteAsset const& asset) {
        std::vector<std::string> all;
        for (auto const& entry : asset.logAttributes.entries()) {
            all.push_back(std::to_string(entry.type) + " " + std::string(entry.value.view()));
        }
        return all;
    };
    EXPECT_EQ(texts(first), (std::vector<std::string>{"1 One", "23 XY1", "6 Source"}));
    EXPECT_EQ(texts(second), (std::vector<std::string>{"1 ", "23 XY-1", "6 Source"}));
    EXPECT_TRUE(first.displayAttributes.isEmpty());
}

} // namespace
} // namespace repository_tests
