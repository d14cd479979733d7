#include <stdexcept>
#include <typeinfo>

#include "tests/fake_host/WatchedHost.h"
#include "tests/tarn7/Tarn7Fixture.h"

namespace tarn7_tests {
namespace {

class Lifecycle : public testing::Test {
protected:
    fake::Host host;
    fake::WatchedHost watched;
};

// The part of the repository that a provider belongs to, while the client is being built.
MediaFileRepositoryBase& baseOf(iFileProvider& provider) {
    return dynamic_cast<MediaFileRepositoryBase&>(provider);
}

TEST_F(Lifecycle, AClientIsBuiltInItsOrder) {
    std::vector<std::string> steps;
    MediaFileRepositoryBase* base = nullptr;
    watched.security.onGetHash = [&] { steps.emplace_back("hash object"); };
    watched.files.onRegister = [&](iFileProvider& provider) {
        base = &baseOf(provider);
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
    EXPECT_EQ(steps, (std::vector<std::string>{"hash object", "provider registered", "thumbnails prepared",
                                               "T7 HQ Proxies"}));
}

TEST_F(Lifecycle, ANewClientIsSignedOutAndKnowsNothing) {
    TestResource const resource;
    EXPECT_TRUE(resource.signedInUser.isEmpty());
    EXPECT_EQ(resource.sessionContext, -1);
    EXPECT_EQ(resource.sessionMarker, -1);
    EXPECT_TRUE(resource.iconBase.isEmpty());
    EXPECT_TRUE(resource.previewBase.isEmpty());
    EXPECT_TRUE(resource.clipCache.empty());
    EXPECT_TRUE(resource.purchasedIds.empty());
    EXPECT_TRUE(resource.hqProxies);
    EXPECT_NE(resource.digestService, nullptr);
    EXPECT_FALSE(resource.isConnected());
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.network.connections().empty());
    EXPECT_TRUE(host.preferences.writes().empty());
}

TEST_F(Lifecycle, TheStoredPreviewQualityIsTakenOver) {
    host.preferences.write("T7 HQ Proxies", false);
    EXPECT_FALSE(TestResource().hqProxies);
}

TEST_F(Lifecycle, TheNameOfTheLastUserIsNotReadYet) {
    std::vector<std::string> read;
    watched.preferences.onRead = [&](char const* key) { read.emplace_back(key); };
    TestResource const resource;
    EXPECT_EQ(read, std::vector<std::string>{"T7 HQ Proxies"});
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
    EXPECT_EQ(resource.getResourceName(), "Tarn7");
    EXPECT_EQ(static_cast<int>(resource.getResourceType()), 26);
    EXPECT_EQ(resource.getResourceTag(), 'T' | 'R' << 8 | 'N' << 16 | '7' << 24);
}

TEST_F(Lifecycle, AClientThatCannotBeBuiltToTheEndLeavesNoProviderBehind) {
    watched.preferences.onRead = [](char const*) { throw std::runtime_error("no preferences"); };
    EXPECT_THROW(TestResource(), std::runtime_error);
    EXPECT_TRUE(host.files.providers.empty());
}

TEST_F(Lifecycle, AClientEndsWithoutAWordToTheServiceAndIsForgottenByTheFileLayer) {
    {
        TestResource resource;
        ASSERT_EQ(resource.connect(resource.getDescription().connection, LoggerHandle()), 0);
        host.network.answerWith(answerOf({R"({"cx":12,"cm":34})"}));
        ASSERT_EQ(resource.login(typedForm("ada", "secret")), 0);
        host.network.forgetRequests();
    }
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_TRUE(host.files.providers.empty());
}

} // namespace
} // namespace tarn7_tests
