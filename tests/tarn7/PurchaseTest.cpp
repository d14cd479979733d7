#include "tests/tarn7/ScriptedService.h"

namespace tarn7_tests {
namespace {

constexpr char readCart[] = R"([{"command":"get_cart_formatted"}])";
constexpr char cash[] = R"([{"command":"purchase_using_cash"}])";
constexpr char credits[] = R"([{"command":"purchase_using_credits"}])";
constexpr char linePrefix[] = "Tarn7Resource::requestExternalPurchase() : Error ";

// The cart holds clip 5 and takes every change.
class Purchase : public ScriptedServiceTest {
protected:
    void SetUp() override {
        ScriptedServiceTest::SetUp();
        reply("get_cart_formatted", R"({"items":[{"id":5}]})");
        reply("modify_active_cart", "{}");
    }

    int payOnPage(std::vector<std::string> const& ids = {"5"}) {
        return resource.requestExternalPurchase(assetsOf(ids));
    }
    int payWithCredits(std::vector<std::string> const& ids = {"5"}) {
        return resource.requestCreditPurchase(assetsOf(ids));
    }
    // The result of paying on the page when its reply fails with these members.
    int payOnPageFailing(std::string const& members) {
        reply("purchase_using_cash", R"({"e":true)" + members + "}");
        return payOnPage();
    }
    int payWithCreditsFailing(std::string const& members) {
        reply("purchase_using_credits", R"({"e":true)" + members + "}");
        return payWithCredits();
    }
    [[nodiscard]] std::vector<std::string> opened() const {
        std::vector<std::string> urls;
        for (WideString const& url : host.shell.opened) {
            urls.push_back(utf8(url));
        }
        return urls;
    }
    [[nodiscard]] std::string onlyLine() const {
        EXPECT_EQ(host.log.lines().size(), 1U);
        return host.log.lines().empty() ? std::string() : host.log.lines().front();
    }
};

TEST_F(Purchase, ThePaymentPageIsOpenedOnceTheCartIsRight) {
    reply("purchase_using_cash", R"({"e":false,"url":"https://pay.test/cart?a=1&b=2"})");
    EXPECT_EQ(payOnPage(), 2);
    EXPECT_EQ(sent(), (std::vector<std::string>{readCart, cash}));
    EXPECT_EQ(opened(), std::vector<std::string>{"https://pay.test/cart?a=1&b=2"});
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Purchase, APageThatNoBrowserShowsIsHandedOverAllTheSame) {
    class NoBrowser final : public iShell {
    public:
        bool openInBrowser(WideString const&) override {
            ++asked;
            return false;
        }
        WideString getStandardFolder(int) override { return {}; }
        int asked = 0;
    } shell;
    HostServices services = installedHost();
    services.shell = &shell;
    HostServices const before = installHost(services);
    reply("purchase_using_cash", R"({"url":"https://pay.test/"})");
    EXPECT_EQ(payOnPage(), 2);
    installHost(before);
    EXPECT_EQ(shell.asked, 1);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Purchase, CreditsBuyOnceTheCartIsRight) {
    reply("purchase_using_credits", R"({"e":false})");
    EXPECT_EQ(payWithCredits(), 2);
    EXPECT_EQ(sent(), (std::vector<std::string>{readCart, credits}));
    EXPECT_TRUE(opened().empty());
}

TEST_F(Purchase, ACartThatDiffersIsChangedInBetween) {
    std::string const change = R"([{"command":"modify_active_cart","rmid":"5","addid":"6"}])";
    reply("purchase_using_cash", R"({"url":"https://pay.test/"})");
    EXPECT_EQ(payOnPage({"6"}), 2);
    EXPECT_EQ(sent(), (std::vector<std::string>{readCart, change, cash}));
    host.network.forgetRequests();
    reply("purchase_using_credits", "{}");
    EXPECT_EQ(payWithCredits({"6"}), 2);
    EXPECT_EQ(sent(), (std::vector<std::string>{readCart, change, credits}));
}

TEST_F(Purchase, ACartThatCannotBeChangedBuysNothing) {
    answer("modify_active_cart", R"({"commands":[{"s":"no"}]})");
    reply("purchase_using_cash", R"({"url":"https://pay.test/"})");
    reply("purchase_using_credits", "{}");
    EXPECT_EQ(payOnPage({"6"}), 0);
    EXPECT_EQ(host.network.requestCount(), 2U);
    EXPECT_EQ(payWithCredits({"6"}), 0);
    EXPECT_EQ(host.network.requestCount(), 4U);
    for (std::string const& list : sent()) {
        EXPECT_EQ(list.find("purchase"), std::string::npos) << list;
    }
    EXPECT_TRUE(opened().empty());
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Purchase, AnEmptyListEmptiesTheCartAndGoesOn) {
    std::string const change = R"([{"command":"modify_active_cart","rmid":"5"}])";
    reply("purchase_using_cash", R"({"url":"https://pay.test/"})");
    EXPECT_EQ(payOnPage({}), 2);
    EXPECT_EQ(sent(), (std::vector<std::string>{readCart, change, cash}));
    host.network.forgetRequests();
    reply("purchase_using_credits", "{}");
    EXPECT_EQ(payWithCredits({}), 2);
    EXPECT_EQ(sent(), (std::vector<std::string>{readCart, change, credits}));
}

TEST_F(Purchase, SuccessWithoutAPageOpensNoBrowser) {
    for (std::string const members :
         {"{}", R"({"url":""})", R"({"url":null})", R"({"url":5})", R"({"url":["https://pay.test/"]})"}) {
        reply("purchase_using_cash", members);
        EXPECT_EQ(payOnPage(), 0) << members;
    }
    EXPECT_TRUE(opened().empty());
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Purchase, TheTextOfAReplyDoesNotMakeItFail) {
    reply("purchase_using_credits", R"({"e":false,"s":"thank you","c":106})");
    EXPECT_EQ(payWithCredits(), 2);
    reply("purchase_using_cash", R"({"e":false,"s":"thank you","c":106,"url":"https://pay.test/"})");
    EXPECT_EQ(payOnPage(), 2);
}

TEST_F(Purchase, TheFlagAtTheTopDoesNotMakeThePurchaseFail) {
    std::string const body = R"({"e":true,"s":"no","commands":[{"url":"https://pay.test/"}]})";
    answer("purchase_using_credits", body);
    EXPECT_EQ(payWithCredits(), 2);
    answer("purchase_using_cash", body);
    EXPECT_EQ(payOnPage(), 2);
}

TEST_F(Purchase, RepliesInsideTheReplyAreLookedAtForAText) {
    std::string const nested = R"({"url":"https://pay.test/","c":106,"commands":[{"s":"no"}]})";
    reply("purchase_using_credits", nested);
    EXPECT_EQ(payWithCredits(), 3);
    reply("purchase_using_cash", nested);
    EXPECT_EQ(payOnPage(), 3);
    EXPECT_TRUE(opened().empty());
}

TEST_F(Purchase, AFailedPageIsToldApartByItsCode) {
    EXPECT_EQ(payOnPageFailing(R"(,"c":101,"s":"x")"), 0);
    EXPECT_EQ(payOnPageFailing(R"(,"c":103,"s":"x")"), 0);
    EXPECT_EQ(payOnPageFailing(R"(,"c":106,"s":"x")"), 3);
    EXPECT_TRUE(host.log.lines().empty());
    EXPECT_EQ(payOnPageFailing(R"(,"c":102,"s":"x")"), 0);
    EXPECT_EQ(onlyLine(), linePrefix + std::string("102 (x)"));
    EXPECT_TRUE(opened().empty());
}

TEST_F(Purchase, FailedCreditsAreToldApartByTheirCodeAndNeverLogged) {
    for (std::string const code : {"101", "103", "102", "0", "1", "2", "-1", "107"}) {
        EXPECT_EQ(payWithCreditsFailing(R"(,"s":"x","c":)" + code), 0) << code;
    }
    EXPECT_EQ(payWithCreditsFailing(""), 0);
    EXPECT_EQ(payWithCreditsFailing(R"(,"c":106)"), 3);
    EXPECT_TRUE(host.log.lines().empty());
}

TEST_F(Purchase, AFailedPageWithItsAddressOpensNothing) {
    EXPECT_EQ(payOnPageFailing(R"(,"c":101,"url":"https://pay.test/")"), 0);
    EXPECT_TRUE(opened().empty());
}

TEST_F(Purchase, ACodeThatIsMissingIsMinusOne) {
    EXPECT_EQ(payOnPageFailing(R"(,"s":"no money")"), 0);
    EXPECT_EQ(onlyLine(), linePrefix + std::string("-1 (no money)"));
}

TEST_F(Purchase, ACodeOfAnotherTypeIsMissing) {
    for (std::string const code : {R"("106")", "null", "true", "[106]", R"({"c":106})"}) {
        EXPECT_EQ(payOnPageFailing(R"(,"c":)" + code), 0) << code;
        EXPECT_EQ(host.log.lines().back(), linePrefix + std::string("-1 ()")) << code;
        EXPECT_EQ(payWithCreditsFailing(R"(,"c":)" + code), 0) << code;
    }
}

TEST_F(Purchase, ACodeIsReadAsAnIntegerOf32Bits) {
    EXPECT_EQ(payOnPageFailing(R"(,"c":106.9)"), 3);
    EXPECT_EQ(payOnPageFailing(R"(,"c":4294967402)"), 3);
    EXPECT_EQ(payWithCreditsFailing(R"(,"c":106.9)"), 3);
    EXPECT_TRUE(host.log.lines().empty());
    EXPECT_EQ(payOnPageFailing(R"(,"c":-7.5)"), 0);
    EXPECT_EQ(onlyLine(), linePrefix + std::string("-7 ()"));
}

TEST_F(Purchase, ATextOfAnotherTypeIsEmptyInTheLine) {
    for (std::string const text : {"5", "null", "true", R"(["no"])", R"({"s":"no"})"}) {
        EXPECT_EQ(payOnPageFailing(R"(,"c":7,"s":)" + text), 0);
        EXPECT_EQ(host.log.lines().back(), linePrefix + std::string("7 ()")) << text;
    }
}

TEST_F(Purchase, AnAnswerWithoutAReplyBuysNothing) {
    for (std::string const& senseless : senselessAnswers()) {
        std::size_t const lines = host.log.lines().size();
        answer("purchase_using_cash", senseless);
        EXPECT_EQ(payOnPage(), 0) << senseless;
        ASSERT_EQ(host.log.lines().size(), lines + 1) << senseless;
        EXPECT_EQ(host.log.lines().back(), linePrefix + std::string("-1 ()")) << senseless;
        answer("purchase_using_credits", senseless);
        EXPECT_EQ(payWithCredits(), 0) << senseless;
        EXPECT_EQ(host.log.lines().size(), lines + 1) << senseless;
    }
    EXPECT_TRUE(opened().empty());
}

TEST_F(Purchase, AServiceThatFallsSilentAtThePurchaseBuysNothing) {
    EXPECT_EQ(payOnPage(), 0);
    EXPECT_EQ(onlyLine(), linePrefix + std::string("-1 ()"));
    EXPECT_EQ(payWithCredits(), 0);
    EXPECT_EQ(host.log.lines().size(), 1U);
}

TEST_F(Purchase, WithoutAServerNothingIsSentAndNothingBought) {
    resource.disconnect();
    EXPECT_EQ(payOnPage(), 0);
    EXPECT_EQ(payWithCredits(), 0);
    EXPECT_EQ(host.network.requestCount(), 0U);
}

TEST_F(Purchase, PercentSignsOfTheServiceAreNoFormat) {
    EXPECT_EQ(payOnPageFailing(R"(,"c":7,"s":"%s%n%d%100000000d%")"), 0);
    EXPECT_EQ(onlyLine(), linePrefix + std::string("7 (%s%n%d%100000000d%)"));
}

TEST_F(Purchase, LineBreaksOfTheServiceStartNoLine) {
    EXPECT_EQ(payOnPageFailing(R"(,"c":7,"s":"a\r\nTarn7Resource: all is well\u2028b\u001b[0m\n")"), 0);
    EXPECT_EQ(onlyLine(),
              linePrefix + std::string("7 (a\\x0d\\x0aTarn7Resource: all is well\\u2028b\\x1b[0m\\x0a)"));
}

TEST_F(Purchase, AZeroEndsTheTextInTheLine) {
    EXPECT_EQ(payOnPageFailing(R"(,"c":7,"s":"a\u0000b")"), 0);
    EXPECT_EQ(onlyLine(), linePrefix + std::string("7 (a)"));
}

TEST_F(Purchase, ATextOfAMegabyteIsCutToALine) {
    std::string const text(1 << 20, 'x');
    EXPECT_EQ(payOnPageFailing(R"(,"c":7,"s":")" + text + '"'), 0);
    std::string const line = onlyLine();
    EXPECT_EQ(line.size(), 4096U);
    EXPECT_TRUE(line.starts_with(linePrefix + std::string("7 (xxx")));
}

TEST_F(Purchase, APurchaseDoesNotChangeWhatIsKnownToBeOwned) {
    resource.purchasedIds = {L"1"};
    reply("purchase_using_credits", "{}");
    EXPECT_EQ(payWithCredits(), 2);
    reply("purchase_using_cash", R"({"url":"https://pay.test/"})");
    EXPECT_EQ(payOnPage(), 2);
    EXPECT_EQ(payOnPageFailing(R"(,"c":106)"), 3);
    EXPECT_EQ(resource.purchasedIds, std::set<WideString>{L"1"});
}

} // namespace
} // namespace tarn7_tests
