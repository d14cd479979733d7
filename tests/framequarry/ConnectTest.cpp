#include "tests/framequarry/FrameQuarryFixture.h"

namespace framequarry_tests {
namespace {

class Connect : public FrameQuarryTest {
protected:
    static HTTPConnectionInfo serverNamed(wchar_t const* name) {
        HTTPConnectionInfo info;
        info.server = name;
        return info;
    }
    std::int32_t connectTo(wchar_t const* name) {
        return resource.connect(serverNamed(name), LoggerHandle(log));
    }
    // The server that a search reaches.
    std::string askedServer() {
        host.network.forgetRequests();
        (void)resource.searchInternal({});
        return host.network.lastRequest().server;
    }

    Zq::Ptr<fake::ImportLog> log = Zq::makeShared<fake::ImportLog>();
};

TEST_F(Connect, TheDescribedServerIsConnectedWithoutARequest) {
    EXPECT_EQ(resource.connect(resource.getDescription().connection, LoggerHandle(log)), 0);
    EXPECT_TRUE(resource.isConnected());
    EXPECT_EQ(host.network.requestCount(), 0U);
    EXPECT_EQ(askedServer(), "api.framequarry.example");
    EXPECT_TRUE(host.network.lastRequest().secure);
}

TEST_F(Connect, ARecordThatNoServerCanBeMadeFromIsNoConnection) {
    EXPECT_EQ(connectTo(L""), 11);
    EXPECT_FALSE(resource.isConnected());
    EXPECT_EQ(askedServer(), "");
}

TEST_F(Connect, AnOlderConnectionStaysAndCounts) {
    ASSERT_EQ(connectTo(L"one.test"), 0);
    EXPECT_EQ(connectTo(L""), 0);
    EXPECT_EQ(askedServer(), "one.test");
}

TEST_F(Connect, ANewerConnectionReplacesTheOlderOne) {
    ASSERT_EQ(connectTo(L"one.test"), 0);
    EXPECT_EQ(connectTo(L"two.test"), 0);
    EXPECT_EQ(askedServer(), "two.test");
}

TEST_F(Connect, TheRecordGoesToTheHostAsItIs) {
    HTTPConnectionInfo info = serverNamed(L"one.test:81");
    info.port = 8443;
    info.user = L"ada";
    info.headers = {L"X: y"};
    info.userAgent = L"agent";
    info.secure = 1;
    ASSERT_EQ(resource.connect(info, LoggerHandle()), 0);
    ASSERT_EQ(host.network.connections().size(), 1U);
    HTTPConnectionInfo const made = host.network.connections().front();
    EXPECT_EQ(made.server, info.server);
    EXPECT_EQ(made.port, 8443);
    EXPECT_EQ(made.user, L"ada");
    EXPECT_EQ(made.headers, info.headers);
    EXPECT_EQ(made.userAgent, L"agent");
    EXPECT_EQ(made.secure, 1);
}

TEST_F(Connect, TheLogGetsNoLineAndIsReleased) {
    ASSERT_EQ(connectTo(L""), 11);
    ASSERT_EQ(connectTo(L"one.test"), 0);
    ASSERT_EQ(connectTo(L""), 0);
    EXPECT_TRUE(log->lines.empty());
    EXPECT_TRUE(host.log.lines().empty());
    Zq::InternalRefCount& counted = *log;
    EXPECT_EQ(counted.refCount().owners.load(), 1U);
}

TEST_F(Connect, AfterTheConnectionEndedNothingIsAsked) {
    connect();
    resource.disconnect();
    EXPECT_FALSE(resource.isConnected());
    EXPECT_EQ(connectTo(L""), 11);
    EXPECT_EQ(askedServer(), "");
}

} // namespace
} // namespace framequarry_tests
