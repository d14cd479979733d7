// Each kind of fault as a client meets it.
#include <future>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/tarn7d/FaultDesk.h"
#include "tests/tarn7d/ServerFixture.h"

namespace {

using namespace tarn7d;
using test::Client;
using testing::StartsWith;

class FaultTest : public test::ServerFixture {
protected:
    FaultTest() { start(); }

    void fault(FaultRule rule) { (void)server_->faults().add(std::move(rule)); }
    [[nodiscard]] std::string thumbnail(Client& client) {
        auto const result = client.Get("/icons/000000001_iconm.jpeg");
        return result && result->status == 200 ? result->body : std::string();
    }
    [[nodiscard]] static std::string body(httplib::Result const& result) {
        return result ? result->body : std::string();
    }
    // What arrives of a body before the connection ends, and the length that was announced.
    struct Arrived {
        std::string bytes;
        std::string announced;
        bool whole = false;
    };
    [[nodiscard]] Arrived arrivedOf(std::string const& path) const {
        Client connection = client();
        Arrived arrived;
        auto const result = connection.Get(
            path,
            [&](httplib::Response const& response) {
                arrived.announced = response.get_header_value("Content-Length");
                return true;
            },
            [&](char const* data, std::size_t size) {
                arrived.bytes.append(data, size);
                return true;
            });
        arrived.whole = static_cast<bool>(result);
        return arrived;
    }

    std::string const icon_ = "/icons/000000001_iconm.jpeg";
};

TEST_F(FaultTest, AnErrorStatusComesForAsManyRequestsAsAskedFor) {
    Client connection = client();
    fault({.path = "/icons/", .kind = FaultKind::status, .count = 2, .status = 429, .retryAfter_s = 3});
    for (int i = 0; i < 2; ++i) {
        auto const result = connection.Get(icon_);
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 429);
        EXPECT_EQ(result->get_header_value("Retry-After"), "3");
    }
    EXPECT_NE(thumbnail(connection), "");
}

TEST_F(FaultTest, ACommandThatMeetsAnErrorStatusIsNotCarriedOut) {
    Client connection = client();
    SessionKey const session = signIn(connection);
    fault({.command = "modify_active_cart", .kind = FaultKind::status, .status = 500});
    std::string const add = R"({"command":"modify_active_cart","addid":"1"})";
    EXPECT_EQ(askOne(connection, add, session), nullptr);
    Zq::Ptr<JSON::Element> const cart = askOne(connection, R"({"command":"get_cart_formatted"})", session);
    ASSERT_NE(JSON::orEmpty(cart).getChild("items"), nullptr);
    EXPECT_EQ(cart->getChild("items")->getNumChildren(), 0);
}

TEST_F(FaultTest, ADelayedAnswerComesLaterAndWhole) {
    Client connection = client();
    std::string const whole = thumbnail(connection);
    fault({.path = "/icons/", .kind = FaultKind::delay, .time = std::chrono::milliseconds(120)});
    auto const begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(thumbnail(connection) == whole);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(120));
}

TEST_F(FaultTest, ACutAnswerEndsBehindSoManyBytes) {
    Client connection = client();
    std::string const whole = thumbnail(connection);
    fault({.path = "/icons/", .kind = FaultKind::cut, .count = 2, .bytes = 100});
    Arrived const cut = arrivedOf(icon_);
    EXPECT_FALSE(cut.whole);
    EXPECT_EQ(cut.announced, std::to_string(whole.size()));
    EXPECT_TRUE(cut.bytes == whole.substr(0, 100));
    // In a range, the bytes count from where the range begins.
    auto const range = connection.Get(icon_, {{"Range", "bytes=50-"}});
    EXPECT_FALSE(range);
    EXPECT_TRUE(thumbnail(connection) == whole);
}

TEST_F(FaultTest, AStalledAnswerStopsUntilTheDeskIsCleared) {
    Client connection = client();
    std::string const whole = thumbnail(connection);
    fault({.path = "/icons/", .kind = FaultKind::stall, .bytes = 100, .time = std::chrono::minutes(5)});
    std::promise<void> begun;
    std::string arrived;
    auto request = std::async(std::launch::async, [&] {
        Client stalled = client();
        return static_cast<bool>(stalled.Get(icon_, [&](char const* data, std::size_t size) {
            arrived.append(data, size);
            if (arrived.size() == 100) {
                begun.set_value();
            }
            return true;
        }));
    });
    begun.get_future().wait();
    EXPECT_EQ(request.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    while (request.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
        server_->faults().clear();
    }
    EXPECT_FALSE(request.get());
    EXPECT_TRUE(arrived == whole.substr(0, 100));
}

TEST_F(FaultTest, AStalledAnswerDoesNotHoldUpTheEndOfTheService) {
    fault({.path = "/icons/", .kind = FaultKind::stall, .bytes = 1, .time = std::chrono::minutes(5)});
    std::promise<void> begun;
    auto request = std::async(std::launch::async, [&] {
        Client stalled = client();
        return static_cast<bool>(stalled.Get(icon_, [&](char const*, std::size_t) {
            begun.set_value();
            return true;
        }));
    });
    begun.get_future().wait();
    auto const begin = std::chrono::steady_clock::now();
    server_->stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
    EXPECT_FALSE(request.get());
}

TEST_F(FaultTest, AWrongLengthIsTooLargeOrTooSmall) {
    Client connection = client();
    std::string const whole = thumbnail(connection);
    fault({.path = "/icons/", .kind = FaultKind::wrongLength, .bytes = 10});
    Arrived const large = arrivedOf(icon_);
    EXPECT_FALSE(large.whole);
    EXPECT_EQ(large.announced, std::to_string(whole.size() + 10));
    EXPECT_TRUE(large.bytes == whole);
    fault({.path = "/icons/", .kind = FaultKind::wrongLength, .bytes = -10});
    Arrived const small = arrivedOf(icon_);
    EXPECT_TRUE(small.whole);
    EXPECT_TRUE(small.bytes == whole.substr(0, whole.size() - 10));
}

TEST_F(FaultTest, WithoutRangesTheWholeFileComes) {
    Client connection = client();
    std::string const whole = thumbnail(connection);
    fault({.path = "/icons/", .kind = FaultKind::noRanges});
    auto const result = connection.Get(icon_, {{"Range", "bytes=5-9"}});
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    EXPECT_TRUE(result->body == whole);
    EXPECT_EQ(result->get_header_value("Accept-Ranges"), "none");
    EXPECT_EQ(connection.Get(icon_, {{"Range", "bytes=5-9"}})->status, 206);
}

TEST_F(FaultTest, AChangedValidatorMakesARangeOfTheOldFileAWholeNewOne) {
    Client connection = client();
    std::string const etag = connection.Head(icon_)->get_header_value("ETag");
    fault({.path = "/icons/", .kind = FaultKind::changedValidator, .count = 3});
    auto const conditional = connection.Get(icon_, {{"Range", "bytes=5-9"}, {"If-Range", etag}});
    auto const plain = connection.Get(icon_, {{"Range", "bytes=5-9"}});
    auto const known = connection.Get(icon_, {{"If-None-Match", etag}});
    ASSERT_TRUE(conditional && plain && known);
    EXPECT_EQ(conditional->status, 200);
    EXPECT_EQ(plain->status, 206);
    EXPECT_EQ(known->status, 200);
    std::set<std::string> const etags{etag, conditional->get_header_value("ETag"),
                                      plain->get_header_value("ETag"), known->get_header_value("ETag")};
    EXPECT_EQ(etags.size(), 4U);
    EXPECT_EQ(connection.Head(icon_)->get_header_value("ETag"), etag);
}

TEST_F(FaultTest, APageOfHtmlComesInPlaceOfJson) {
    Client connection = client();
    SessionKey const session = signIn(connection);
    fault({.command = "modify_active_cart", .kind = FaultKind::notJson});
    auto const result = connection.Post(
        "/?page=api", test::requestBody(R"([{"command":"modify_active_cart","addid":"1"}])", session),
        test::formType);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 200);
    EXPECT_THAT(result->body, StartsWith("<!doctype html>"));
    EXPECT_EQ(test::parseJson(result->body), nullptr);
    // It was carried out all the same.
    Zq::Ptr<JSON::Element> const cart = askOne(connection, R"({"command":"get_cart_formatted"})", session);
    EXPECT_EQ(JSON::orEmpty(JSON::orEmpty(cart).getChild("items")).getNumChildren(), 1);
}

TEST_F(FaultTest, AnAddressExpiresBeforeItIsUsed) {
    Client connection = client();
    SessionKey const session = signIn(connection);
    std::string const good = boughtFile(connection, session, 1);
    fault({.command = "download", .kind = FaultKind::expiredAddress});
    std::string const expired = boughtFile(connection, session, 1);
    EXPECT_EQ(connection.Get(expired)->status, 403);
    fault({.path = "/full/", .kind = FaultKind::expiredAddress});
    EXPECT_EQ(connection.Get(good)->status, 403);
    EXPECT_EQ(connection.Get(good)->status, 200);
    std::string const picture = "/icons/000000001_iconm.jpeg";
    fault({.path = "/icons/", .kind = FaultKind::expiredAddress});
    EXPECT_EQ(connection.Get(picture)->status, 403);
    EXPECT_EQ(connection.Get(picture)->status, 200);
}

TEST_F(FaultTest, APurchaseWhoseAnswerIsLostIsNotChargedAgainWhenRepeated) {
    Client connection = client();
    connection.set_keep_alive(false);
    SessionKey const session = signIn(connection, "editor", 100);
    std::string const fill = R"({"command":"modify_active_cart","addid":"1"})";
    std::string const buy = R"({"command":"purchase_using_credits"})";
    (void)askOne(connection, fill, session);
    fault({.command = "purchase_using_credits", .kind = FaultKind::lostAnswer});
    auto const lost =
        connection.Post("/?page=api", test::requestBody("[" + buy + "]", session), test::formType);
    EXPECT_FALSE(lost);
    EXPECT_EQ(JSON::orEmpty(askOne(connection, buy, session)).getInt("c", 0), 103);
    (void)askOne(connection, fill, session);
    Zq::Ptr<JSON::Element> const again = askOne(connection, buy, session);
    ASSERT_NE(again, nullptr);
    EXPECT_FALSE(again->getBool("e", true));
    EXPECT_EQ(again->getInt("charged", -1), 0);
    EXPECT_EQ(again->getInt("credits", -1), 91);
}

TEST_F(FaultTest, ALostAnswerEndsNoConnectionButItsOwn) {
    Client other = client();
    ASSERT_EQ(total(other), 2);
    Client connection = client();
    fault({.command = "*", .kind = FaultKind::lostAnswer});
    EXPECT_EQ(total(connection), -1);
    auto const result = other.Post("/?page=api", test::requestBody("[]"), test::formType);
    EXPECT_TRUE(result);
}

TEST_F(FaultTest, ThePortIsNotThereUnlessAskedFor) {
    EXPECT_FALSE(server_->faultDesk());
}

} // namespace
