// A form that a server may already have acted on is never sent again.

#include <algorithm>
#include <future>

#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"

namespace {

using test::bodyOf;
using test::RawConnection;
using test::RawServer;

class PostOnce : public test::NetworkFixture {};

// Answers the first request of each connection and keeps the connection; reads a second one whole and closes.
void answerOneReadTwo(RawConnection& connection) {
    if (connection.readRequest()) {
        connection.answer(200, "first");
        (void)connection.readRequest();
    }
}

std::ptrdiff_t count(RawServer const& server, std::string_view body) {
    auto const requests = server.requests();
    return std::ranges::count(requests, body, &test::RawRequest::body);
}

TEST_F(PostOnce, WhenAKeptConnectionDiesAfterTheRequest) {
    RawServer const raw(answerOneReadTwo);
    auto const one = server(raw.name());
    ASSERT_EQ(bodyOf(one->postForm(L"n=1", L"/")), "first");
    EXPECT_FALSE(one->postForm(L"n=2", L"/"));
    EXPECT_EQ(count(raw, "n=1"), 1);
    EXPECT_EQ(count(raw, "n=2"), 1);
    EXPECT_EQ(raw.connections(), 1);
    EXPECT_NE(lastError().find("not sent twice"), std::string::npos) << lastError();
    EXPECT_EQ(bodyOf(one->postForm(L"n=3", L"/")), "first") << "the next one gets a new connection";
}

TEST_F(PostOnce, AlsoWhenTheFormIsEmpty) {
    RawServer const raw(answerOneReadTwo);
    auto const one = server(raw.name());
    ASSERT_EQ(bodyOf(one->get(L"/")), "first");
    EXPECT_FALSE(one->postForm(L"", L"/empty"));
    EXPECT_EQ(raw.requests().size(), 2u);
}

TEST_F(PostOnce, AlsoWhenTheFormIsLarge) {
    RawServer const raw(answerOneReadTwo);
    auto const one = server(raw.name());
    ASSERT_EQ(bodyOf(one->get(L"/")), "first");
    EXPECT_FALSE(one->postForm(WideString(2u << 20, L'x'), L"/large"));
    EXPECT_EQ(raw.requests().size(), 2u);
    EXPECT_EQ(raw.connections(), 1);
}

TEST_F(PostOnce, AlsoWhenTheConnectionDiesWhileTheFormIsSent) {
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.answer(200, "first");
            (void)connection.receive(1); // the next request has begun
        }
    });
    auto const one = server(raw.name());
    ASSERT_EQ(bodyOf(one->get(L"/")), "first");
    EXPECT_FALSE(one->postForm(WideString(2u << 20, L'x'), L"/large"));
    EXPECT_EQ(raw.connections(), 1);
}

TEST_F(PostOnce, AlsoWhenAFreshConnectionDies) {
    RawServer const raw([](RawConnection& connection) { (void)connection.readRequest(); });
    EXPECT_FALSE(server(raw.name())->postForm(L"n=1", L"/"));
    EXPECT_EQ(raw.requests().size(), 1u);
    EXPECT_EQ(raw.connections(), 1);
}

TEST_F(PostOnce, ButAConnectionThatEndedBeforeIsReplaced) {
    std::promise<void> closed;
    RawServer const raw([&closed](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.answer(200, "answer");
            if (connection.number() == 0) {
                connection.close();
                closed.set_value();
            } else {
                connection.waitForEnd();
            }
        }
    });
    auto const one = server(raw.name());
    ASSERT_EQ(bodyOf(one->postForm(L"n=1", L"/")), "answer");
    closed.get_future().wait();
    EXPECT_EQ(bodyOf(one->postForm(L"n=2", L"/")), "answer");
    EXPECT_EQ(count(raw, "n=2"), 1);
    EXPECT_EQ(raw.connections(), 2);
}

TEST_F(PostOnce, WhileAGetIsRepeatedOnANewConnection) {
    RawServer const raw([](RawConnection& connection) {
        if (connection.readRequest()) {
            connection.answer(200, "first");
            if (connection.number() != 0) {
                connection.waitForEnd();
            }
            (void)connection.readRequest();
        }
    });
    auto const one = server(raw.name());
    ASSERT_EQ(bodyOf(one->get(L"/1")), "first");
    EXPECT_EQ(bodyOf(one->get(L"/2")), "first");
    EXPECT_EQ(raw.connections(), 2);
}

TEST_F(PostOnce, ARedirectIsItsReply) {
    for (int const status : {301, 302, 303, 307, 308}) {
        RawServer const raw([status](RawConnection& connection) {
            while (connection.readRequest()) {
                connection.answer(status, "elsewhere", "Location: /other\r\n");
            }
        });
        auto const reply = server(raw.name())->postForm(L"n=1", L"/");
        ASSERT_TRUE(reply) << status;
        EXPECT_EQ(reply->getStatus(), status);
        EXPECT_EQ(bodyOf(reply), "elsewhere");
        EXPECT_EQ(raw.requests().size(), 1u);
    }
}

} // namespace
