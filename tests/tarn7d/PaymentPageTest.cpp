#include "apps/tarn7d/PaymentPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/tarn7d/ServerFixture.h"

namespace {

using namespace tarn7d;
using test::Client;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

TEST(PaymentPage, NothingOfATitleOrANameOrAnInputBecomesMarkup) {
    std::string const hostile = "<script>alert('1')</script>\"&amp; onload=\"x";
    Payments::View view;
    view.state = Payments::State::open;
    view.accountName = hostile;
    Clip clip;
    clip.description.title = hostile;
    clip.description.price_cents = 100;
    view.cart.lines.push_back({clip, false});
    view.receipt.lines.push_back({1, hostile, 100});
    PaymentAttempt attempt;
    attempt.expiry = hostile;
    attempt.problems = checkCard({hostile, hostile, hostile}, 1'784'000'000);
    for (std::string const& html : {paymentFormPage(view, "/pay/" + hostile, attempt), receiptPage(view),
                                    paymentStatePage(Payments::State::paid, "/pay/" + hostile)}) {
        EXPECT_THAT(html, Not(HasSubstr("<script")));
        EXPECT_THAT(html, Not(HasSubstr("\" onload")));
        EXPECT_THAT(html, HasSubstr("&lt;script&gt;"));
    }
}

class PaymentPageTest : public test::ServerFixture {
protected:
    // Path of a new payment page for the clips.
    std::string pageFor(Client& client, SessionKey session, std::string const& ids) {
        Zq::Ptr<JSON::Element> const answer = ask(client,
                                                  R"([{"command":"modify_active_cart","addid":")" + ids +
                                                      R"("},{"command":"purchase_using_cash"}])",
                                                  session);
        return pathOf(std::string(JSON::orEmpty(test::reply(answer, 1)).getStringView("url")));
    }
    static httplib::Params card(std::string const& number = "4242 4242 4242 4242") {
        return {{"number", number}, {"expiry", "12/99"}, {"code", "123"}};
    }
};

TEST_F(PaymentPageTest, AGoodCardPaysAndLeadsToTheReceipt) {
    start();
    Client connection = client();
    SessionKey const session = signIn(connection);
    std::string const path = pageFor(connection, session, "1,2");
    auto const form = connection.Get(path);
    ASSERT_TRUE(form);
    EXPECT_EQ(form->status, 200);
    EXPECT_EQ(form->get_header_value("Content-Type"), "text/html; charset=utf-8");
    EXPECT_THAT(form->body, HasSubstr("$58.00")); // 9 and 49
    EXPECT_THAT(form->body, HasSubstr("This is a demonstration."));
    EXPECT_THAT(form->body, HasSubstr("action=\"" + path + "\""));
    auto const paid = connection.Post(path, card());
    ASSERT_TRUE(paid);
    EXPECT_EQ(paid->status, 303);
    EXPECT_EQ(paid->get_header_value("Location"), path + "/receipt");
    auto const receipt = connection.Get(path + "/receipt");
    ASSERT_TRUE(receipt);
    EXPECT_EQ(receipt->status, 200);
    EXPECT_THAT(receipt->body, HasSubstr("$58.00"));
    Zq::Ptr<JSON::Element> const owned =
        askOne(connection, R"({"command":"get_downloads_formatted"})", session);
    EXPECT_EQ(JSON::orEmpty(JSON::orEmpty(owned).getChild("items")).getNumChildren(), 2);
}

TEST_F(PaymentPageTest, AllPagesAreGuardedAndHoldNoScript) {
    start();
    Client connection = client();
    std::string const path = pageFor(connection, signIn(connection), "1");
    std::vector<httplib::Result> results;
    results.push_back(connection.Get(path));
    results.push_back(connection.Get("/pay/unknown"));
    results.push_back(connection.Post(path, card("1")));
    results.push_back(connection.Post(path, card()));
    results.push_back(connection.Get(path + "/receipt"));
    for (auto const& result : results) {
        ASSERT_TRUE(result);
        EXPECT_THAT(result->get_header_value("Content-Security-Policy"),
                    StartsWith("default-src 'none'; style-src 'sha256-"));
        EXPECT_EQ(result->get_header_value("Cache-Control"), "no-store");
        EXPECT_EQ(result->get_header_value("Referrer-Policy"), "no-referrer");
        EXPECT_EQ(result->get_header_value("X-Content-Type-Options"), "nosniff");
        EXPECT_EQ(result->get_header_value("X-Frame-Options"), "DENY");
        EXPECT_THAT(result->body, Not(HasSubstr("<script")));
        EXPECT_THAT(result->body, Not(HasSubstr("style=")));
    }
}

TEST_F(PaymentPageTest, AWrongOrDeclinedCardShowsTheFormAgainAndChargesNothing) {
    start();
    Client connection = client();
    SessionKey const session = signIn(connection);
    std::string const path = pageFor(connection, session, "1");
    auto const mistyped = connection.Post(path, card("4242 4242 4242 4241"));
    ASSERT_TRUE(mistyped);
    EXPECT_EQ(mistyped->status, 422);
    EXPECT_THAT(mistyped->body, HasSubstr("aria-invalid"));
    EXPECT_THAT(mistyped->body, HasSubstr("check digit"));
    EXPECT_THAT(mistyped->body, HasSubstr("value=\"12/99\""));
    EXPECT_THAT(mistyped->body, Not(HasSubstr("4242 4242 4242 4241")));
    auto const empty = connection.Post(path, "", test::formType);
    ASSERT_TRUE(empty);
    EXPECT_EQ(empty->status, 422);
    auto const declined = connection.Post(path, card("4000 0000 0000 0002"));
    ASSERT_TRUE(declined);
    EXPECT_EQ(declined->status, 402);
    EXPECT_THAT(declined->body, HasSubstr("The card was declined."));
    auto const receipt = connection.Get(path + "/receipt");
    ASSERT_TRUE(receipt);
    EXPECT_THAT(receipt->body, HasSubstr("<form"));
    EXPECT_EQ(connection.Post(path, card())->status, 303);
}

TEST_F(PaymentPageTest, APageThatCannotBePaidSaysWhy) {
    start();
    Client connection = client();
    SessionKey const session = signIn(connection);
    std::string const changed = pageFor(connection, session, "1");
    std::string const path = pageFor(connection, session, "2");
    auto const afterChange = connection.Post(changed, card());
    ASSERT_TRUE(afterChange);
    EXPECT_EQ(afterChange->status, 409);
    EXPECT_THAT(afterChange->body, HasSubstr("Your cart has changed"));
    ASSERT_EQ(connection.Post(path, card())->status, 303);
    auto const again = connection.Post(path, card());
    ASSERT_TRUE(again);
    EXPECT_EQ(again->status, 409);
    EXPECT_THAT(again->body, HasSubstr("already paid"));
    EXPECT_THAT(again->body, HasSubstr(path + "/receipt"));
    EXPECT_EQ(connection.Get(path)->status, 200);
    auto const unknown = connection.Get("/pay/0123456789abcdef");
    ASSERT_TRUE(unknown);
    EXPECT_EQ(unknown->status, 404);
    EXPECT_THAT(unknown->body, HasSubstr("does not exist"));
    EXPECT_EQ(connection.Post("/pay/0123456789abcdef", card())->status, 404);
}

TEST_F(PaymentPageTest, AnExpiredPageSaysSo) {
    ServerOptions expired = options();
    expired.paymentLifetime = std::chrono::seconds(0);
    start(expired);
    Client connection = client();
    std::string const path = pageFor(connection, signIn(connection), "1");
    auto const result = connection.Post(path, card());
    ASSERT_TRUE(result);
    EXPECT_EQ(result->status, 410);
    EXPECT_THAT(result->body, HasSubstr("has expired"));
}

TEST_F(PaymentPageTest, WhatIsOwnedAlreadyIsTakenOverWithoutACard) {
    start();
    Client connection = client();
    SessionKey const session = signIn(connection);
    (void)boughtFile(connection, session, 1);
    std::string const path = pageFor(connection, session, "1");
    auto const form = connection.Get(path);
    ASSERT_TRUE(form);
    EXPECT_THAT(form->body, HasSubstr("already yours"));
    EXPECT_THAT(form->body, Not(HasSubstr("<input")));
    EXPECT_EQ(connection.Post(path, "", test::formType)->status, 303);
    EXPECT_THAT(connection.Get(path + "/receipt")->body, HasSubstr("nothing was charged"));
}

TEST_F(PaymentPageTest, LocalPagesAreOnThisComputersPort) {
    ServerOptions local = options();
    local.paymentPages = PaymentPages::local;
    start(local);
    Client connection = client();
    SessionKey const session = signIn(connection);
    (void)askOne(connection, R"({"command":"modify_active_cart","addid":"1"})", session);
    Zq::Ptr<JSON::Element> const reply = askOne(connection, R"({"command":"purchase_using_cash"})", session);
    EXPECT_THAT(std::string(JSON::orEmpty(reply).getStringView("url")),
                StartsWith("https://localhost:" + std::to_string(port_) + "/pay/"));
}

} // namespace
