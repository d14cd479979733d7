// The class leaves three operations open on purpose: nobody takes it into use without deciding them.

#include <algorithm>
#include <functional>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

template <class Resource>
constexpr bool canBeMade = !std::is_abstract_v<Resource>;

using WithoutCopying = MappingForReading<MappingForWriting<FrameQuarryResource>>;
using WithoutReading = Copying<MappingForWriting<FrameQuarryResource>>;
using WithoutWriting = Copying<MappingForReading<FrameQuarryResource>>;

TEST(Dormant, NobodyCanMakeTheClassAsItIs) {
    EXPECT_FALSE(canBeMade<FrameQuarryResource>);
}

TEST(Dormant, TwoOfTheThreeOperationsAreNotEnough) {
    EXPECT_FALSE(canBeMade<WithoutCopying>);
    EXPECT_FALSE(canBeMade<WithoutReading>);
    EXPECT_FALSE(canBeMade<WithoutWriting>);
}

TEST(Dormant, WithAllThreeItIsWhole) {
    EXPECT_TRUE(canBeMade<Copying<WithoutCopying>>);
    EXPECT_TRUE(canBeMade<MappingForReading<WithoutReading>>);
    EXPECT_TRUE(canBeMade<MappingForWriting<WithoutWriting>>);
}

TEST(Dormant, ItsBasesAreThoseOfEveryRepository) {
    EXPECT_TRUE((std::is_base_of_v<MediaFileRepositoryBase, FrameQuarryResource>));
    EXPECT_TRUE((std::is_base_of_v<ProjectListener, FrameQuarryResource>));
    EXPECT_TRUE((std::is_base_of_v<ZqResourceTypeBase, FrameQuarryResource>));
    EXPECT_TRUE((std::is_base_of_v<iFileProvider, FrameQuarryResource>));
}

TEST(Dormant, ItsBasesAndMembersLieInTheirOrder) {
    fake::Host const host;
    TestResource const resource;
    std::vector<void const*> const parts{static_cast<MediaFileRepositoryBase const*>(&resource),
                                         static_cast<ZqResourceTypeBase const*>(&resource),
                                         static_cast<iFileProvider const*>(&resource),
                                         &resource.digestService, &resource.lock};
    EXPECT_TRUE(std::ranges::is_sorted(parts, std::less<>()));
}

} // namespace
} // namespace framequarry_tests
