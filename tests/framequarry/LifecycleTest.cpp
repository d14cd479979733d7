#include <stdexcept>

#include "tests/fake_host/WatchedHost.h"
#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

class Lifecycle : public testing::Test {
protected:
    fake::Host host;
    fake::WatchedHost watched;
};

TEST_F(Lifecycle, AClientIsBuiltInItsOrderAndReadsNoPreference) {
    std::vector<std::string> steps;
    MediaFileRepositoryBase* base = nullptr;
    watched.security.onGetHash = [&] { steps.emplace_back("hash object"); };
    watched.files.onRegister = [&](iFileProvider& provider) {
        base = &dynamic_cast<MediaFileRepositoryBase&>(provider);
        steps.emplace_back(base->*(&TestResource::providerPointer) == nullptr ? "provider registered"
                                                                              : "pointer set too early");
    };
    watched.cache.onPartialFolder = [&] {
        bool const pointsAtItself =
            base != nullptr && base->*(&TestResource::providerPointer) == dynamic_cast<iFileProvider*>(base);
        steps.emplace_back(pointsAtItself ? "thumbnails prepared" : "thumbnails prepared too early");
    };
    watched.preferences.onRead = [&](char const* key) { steps.emplace_back(key); };
    TestResource const resource;
    EXPECT_EQ(steps, (std::vector<std::string>{"hash object", "provider registered", "thumbnails prepared"}));
}

TEST_F(Lifecycle, ANewClientIsSignedOutAndKnowsNothing) {
    TestResource const resource;
    EXPECT_TRUE(resource.signedInUser.isEmpty());
    EXPECT_TRUE(resource.purchasedIds.empty());
    EXPECT_TRUE(resource.searchResultCache.empty());
    EXPECT_NE(resource.digestService, nullptr);
    EXPECT_EQ(resource.partialFolder, L"/cache/partial");
    EXPECT_FALSE(resource.isConnected());
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.network.connections().empty());
    EXPECT_TRUE(host.preferences.writes().empty());
    EXPECT_TRUE(host.configuration.asked.empty());
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Lifecycle, TheRegisteredProviderIsTheClientsOwn) {
    TestResource resource;
    ASSERT_EQ(host.files.providers.size(), 1U);
    EXPECT_EQ(host.files.providers.front(), static_cast<iFileProvider*>(&resource));
    EXPECT_EQ(resource.providerPointer, static_cast<iFileProvider*>(&resource));
    EXPECT_EQ(host.files.findProvider(resource.makeVirtualPath(L"x")), host.files.providers.front());
}

TEST_F(Lifecycle, TheComponentHasItsNameTypeAndTag) {
    TestResource const resource;
    EXPECT_EQ(resource.getResourceName(), "FrameQuarry");
    EXPECT_EQ(static_cast<int>(resource.getResourceType()), 26);
    EXPECT_EQ(resource.getResourceTag(), 'F' | 'R' << 8 | 'Q' << 16 | 'Y' << 24);
}

TEST_F(Lifecycle, AClientThatCannotBeBuiltToTheEndLeavesNoProviderBehind) {
    watched.cache.onPartialFolder = [] { throw std::runtime_error("no cache"); };
    EXPECT_THROW(TestResource(), std::runtime_error);
    EXPECT_TRUE(host.files.providers.empty());
}

TEST_F(Lifecycle, AClientEndsWithoutAWordToTheServiceAndIsForgottenByTheFileLayer) {
    {
        TestResource resource;
        ASSERT_EQ(resource.connect(resource.getDescription().connection, LoggerHandle()), 0);
    }
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.files.providers.empty());
    EXPECT_TRUE(host.log.lines().empty());
}

} // namespace
} // namespace framequarry_tests
