#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"

namespace {

using test::bodyOf;
using test::RawConnection;
using test::RawServer;

class Redirect : public test::NetworkFixture {};

// "/n" redirects to "/n-1" and so on; "/0" is there.
void countDown(RawConnection& connection) {
    while (auto const request = connection.readRequest()) {
        int const left = std::stoi(request->line.substr(request->line.find('/') + 1));
        if (left == 0) {
            connection.answer(200, "arrived");
        } else {
            connection.answer(302, "dropped", "Location: /" + std::to_string(left - 1) + "\r\n");
        }
    }
}

RawServer::Script redirectTo(std::string location, int status = 302) {
    return [=](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(status, "dropped", "Location: " + location + "\r\n");
        }
    };
}

TEST_F(Redirect, FiveAreFollowedAndSixAreNot) {
    RawServer const raw(countDown);
    auto const one = server(raw.name());
    EXPECT_EQ(bodyOf(one->get(L"/5")), "arrived");
    EXPECT_EQ(raw.requests().size(), 6u);
    EXPECT_FALSE(one->get(L"/6"));
    EXPECT_EQ(raw.requests().size(), 12u);
    EXPECT_NE(lastError().find("more than 5"), std::string::npos) << lastError();
    EXPECT_EQ(raw.connections(), 1);
}

TEST_F(Redirect, AReceiverGetsTheFileAtItsEnd) {
    RawServer const raw(countDown);
    auto const one = server(raw.name());
    test::RecordingReceiver receiver;
    EXPECT_EQ(one->httpGetToReceiver(L"/5", receiver), 200);
    EXPECT_EQ(receiver.data, "arrived");
    test::RecordingReceiver untouched;
    EXPECT_EQ(one->httpGetToReceiver(L"/6", untouched), 0);
    EXPECT_EQ(untouched.begins + untouched.ends, 0);
}

TEST_F(Redirect, EveryKindOfRedirectIsFollowed) {
    RawServer const target([](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(200, "arrived");
        }
    });
    for (int const status : {301, 302, 303, 307, 308}) {
        RawServer const raw(redirectTo("http://" + target.name() + "/x", status));
        EXPECT_EQ(bodyOf(server(raw.name())->get(L"/")), "arrived") << status;
    }
}

TEST_F(Redirect, AThreeHundredWithoutAnAddressIsAReply) {
    RawServer const raw([](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(302, "no address");
        }
    });
    auto const reply = server(raw.name())->get(L"/");
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getStatus(), 302);
    EXPECT_EQ(bodyOf(reply), "no address");
}

TEST_F(Redirect, HeadersOfTheRecordStayWithItsServer) {
    RawServer const target([](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(200, "arrived");
        }
    });
    RawServer const raw(redirectTo("http://" + target.name() + "/x"));
    HTTPConnectionInfo info = test::serverRecord(raw.name());
    info.headers = {L"Authorization: secret"};
    EXPECT_EQ(bodyOf(network().createHTTPServer(info)->get(L"/")), "arrived");
    EXPECT_EQ(raw.requests()[0].header("Authorization"), "secret");
    ASSERT_EQ(target.requests().size(), 1u);
    EXPECT_EQ(target.requests()[0].header("Authorization"), "");
}

TEST_F(Redirect, OtherSchemesAndUserInfoAreRefused) {
    RawServer const target([](RawConnection& connection) { (void)connection.readRequest(); });
    for (std::string const& location :
         {std::string("file:///etc/hostname"), std::string("ftp://127.0.0.1/x"),
          std::string("gopher://127.0.0.1/"), "http://user:word@" + target.name() + "/",
          std::string("http://127.0.0.1:0/"), std::string("http://")}) {
        RawServer const raw(redirectTo(location));
        EXPECT_FALSE(server(raw.name())->get(L"/")) << location;
        test::RecordingReceiver receiver;
        EXPECT_EQ(server(raw.name())->httpGetToReceiver(L"/", receiver), 0) << location;
        EXPECT_EQ(receiver.begins + receiver.ends, 0) << location;
    }
    EXPECT_EQ(target.connections(), 0);
}

} // namespace
