// Who is let in: the checks of a request and their order.

#include "tests/zq/panel/TransportFixture.h"

namespace {

using panel_tests::Answer;
using panel_tests::metaIn;
using panel_tests::RawClient;
using testing::Each;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

class AccessTest : public panel_tests::TransportFixture {};

TEST_F(AccessTest, TheTokenBecomesACookieThatNoScriptAndNoOtherSiteGets) {
    EXPECT_EQ(entered_.status, 200);
    EXPECT_EQ(metaIn(entered_.body, "zq-panel-address"), "/");
    EXPECT_EQ(entered_.header("cache-control"), "no-store");
    EXPECT_THAT(entered_.header("set-cookie"),
                MatchesRegex("zq-panel-" + std::to_string(server_->port()) +
                             "=[0-9a-f]{64}; HttpOnly; SameSite=Strict; Path=/"));
    EXPECT_EQ(get("/api/state").body, "state");
}

TEST_F(AccessTest, TheTokenHas256BitsAndIsNotTheCookie) {
    EXPECT_THAT(server_->address(), MatchesRegex("http://127\\.0\\.0\\.1:[0-9]+/enter\\?token=[0-9a-f]{64}"));
    EXPECT_THAT(cookie_, Not(HasSubstr(token_)));
}

TEST_F(AccessTest, TheTokenCanBeUsedAgain) {
    std::string const first = cookie_;
    enter();
    EXPECT_EQ(entered_.status, 200);
    EXPECT_EQ(cookie_, first);
}

TEST_F(AccessTest, ThePageThatEntersGetsAKeyThatNobodyElseIsGiven) {
    EXPECT_THAT(key_, MatchesRegex("[0-9a-f]{64}"));
    EXPECT_THAT(entered_.head + server_->address() + cookie_, Not(HasSubstr(key_)));
    EXPECT_THAT(entered_.body, Not(HasSubstr(token_)));
    for (char const* const target : {"/", "/enter", "/enter?token=0", "/api/state", "/assets/main-1234.js"}) {
        Answer const answer = get(target);
        EXPECT_THAT(answer.head + answer.body, Not(HasSubstr(key_)))
            << target << ", to whoever has the cookie";
    }
    std::string const first = key_;
    enter();
    EXPECT_EQ(key_, first) << "pages of one run know each other";
}

TEST_F(AccessTest, TheCookieAloneChangesNothing) {
    std::string const head = "DELETE /api/echo HTTP/1.1\r\n" + hostLine() + cookieLine() + originLine();
    EXPECT_EQ(ask(head + keyLine() + "\r\n").body, "deleted");
    std::string const name = "X-Zq-Panel-Key: ";
    std::string almost = key_;
    almost.back() = almost.back() == '0' ? '1' : '0';
    for (std::string const& lines :
         {std::string(), name + "\r\n", name + almost + "\r\n", name + key_ + "0\r\n",
          name + key_.substr(1) + "\r\n", name + token_ + "\r\n", keyLine() + keyLine(),
          name + cookie_.substr(cookie_.find('=') + 1) + "\r\n", "Cookie: key=" + key_ + "\r\n"}) {
        for (std::string const& more : {std::string(), std::string("Sec-Fetch-Site: same-origin\r\n")}) {
            Answer const answer = ask(head + lines + more + "\r\n");
            EXPECT_EQ(answer.status, 403) << lines;
            EXPECT_EQ(answer.error(), "foreign_origin") << lines;
        }
    }
    EXPECT_EQ(get("/api/bytes", "Range: bytes=0-1\r\n").status, 206) << "pictures and films show no key";
}

TEST_F(AccessTest, EachServerHasSecretsOfItsOwn) {
    zq::panel::PanelServer const other({}, zq::panel::WebFiles({}), 0);
    EXPECT_THAT(other.address(), Not(HasSubstr(token_)));
    std::string const asked = "GET / HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(other.port()) + "\r\n";
    std::string const value = cookie_.substr(cookie_.find('='));
    Answer const refused =
        RawClient(other.port())
            .ask(asked + "Cookie: zq-panel-" + std::to_string(other.port()) + value + "\r\n\r\n");
    EXPECT_EQ(refused.error(), "not_entered");
}

TEST_F(AccessTest, AWrongTokenIsRefused) {
    std::string almost = token_;
    almost.back() = almost.back() == '0' ? '1' : '0';
    for (std::string const& query :
         {std::string(), std::string("?token="), "?token=" + almost, "?token=" + token_ + "0",
          "?token=" + token_.substr(1), "?Token=" + token_, "?x=1&token=%00" + token_}) {
        Answer const answer = ask("GET /enter" + query + " HTTP/1.1\r\n" + hostLine() + "\r\n");
        EXPECT_GE(answer.status, 400) << query;
        EXPECT_EQ(answer.header("set-cookie"), "") << query;
    }
}

TEST_F(AccessTest, NothingIsAnsweredWithoutTheCookie) {
    std::string const name = cookie_.substr(0, cookie_.find('='));
    std::string const value = cookie_.substr(cookie_.find('=') + 1);
    for (char const* const target : {"/", "/api/state", "/assets/main-1234.js", "/nowhere", "/enter/",
                                     "//enter", "/%65nter", "/enter%3Ftoken", "/ENTER"}) {
        for (std::string const& cookie : {std::string(), name + "=", name + "=" + value + "0",
                                          "zq-panel-1=" + value, name + "x=" + value, value}) {
            std::string const line = cookie.empty() ? "" : "Cookie: " + cookie + "\r\n";
            Answer const answer =
                ask("GET " + std::string(target) + " HTTP/1.1\r\n" + hostLine() + line + "\r\n");
            EXPECT_EQ(answer.status, 401) << target << " with " << cookie;
            EXPECT_EQ(answer.error(), "not_entered") << target << " with " << cookie;
        }
    }
}

TEST_F(AccessTest, TheRightCookieIsFoundAmongOthers) {
    std::string const name = cookie_.substr(0, cookie_.find('='));
    Answer const answer = ask("GET /api/state HTTP/1.1\r\n" + hostLine() + "Cookie: a=b; " + name +
                              "=planted; " + cookie_ + "; c\r\n\r\n");
    EXPECT_EQ(answer.body, "state");
}

TEST_F(AccessTest, AnotherHostIsRefusedWhateverElseIsRight) {
    std::string const port = std::to_string(server_->port());
    for (std::string const& host :
         {std::string("evil.example:") + port, std::string("evil.example"), std::string("127.0.0.1"),
          std::string("127.0.0.1:1"), "127.0.0.1:" + port + "0", "127.0.0.1.evil.example:" + port,
          "evil.example@127.0.0.1:" + port, "[::1]:" + port, "0.0.0.0:" + port, "127.1:" + port,
          "localhost.:" + port, "127.0.0.1:" + port + ",evil.example", std::string()}) {
        Answer const answer =
            ask("GET /api/state HTTP/1.1\r\nHost: " + host + "\r\n" + cookieLine() + "\r\n");
        EXPECT_EQ(answer.status, 421) << host;
        EXPECT_EQ(answer.error(), "wrong_host") << host;
    }
    std::string const enter = server_->address().substr(server_->address().find("/enter"));
    EXPECT_EQ(ask("GET " + enter + " HTTP/1.1\r\nHost: evil.example:" + port + "\r\n\r\n").error(),
              "wrong_host");
}

TEST_F(AccessTest, AHostThatIsMissingOrStandsThereTwiceIsRefused) {
    EXPECT_EQ(ask("GET /api/state HTTP/1.1\r\n" + cookieLine() + "\r\n").error(), "wrong_host");
    EXPECT_EQ(ask("GET /api/state HTTP/1.0\r\n" + cookieLine() + "\r\n").error(), "wrong_host");
    EXPECT_EQ(ask(request("GET /api/state", "Host: evil.example\r\n")).error(), "wrong_host");
}

TEST_F(AccessTest, AHostIsComparedAsItWasSent) {
    std::string const port = std::to_string(server_->port());
    for (std::string const& lines :
         {"Host: 127.0.0.1%3A" + port, "Host: %31%32%37.0.0.1:" + port, "Host: 127.0.0.1:" + port + "%00",
          "Host: 127.0.0.1:" + port + std::string(1, '\0'), "Host : 127.0.0.1:" + port,
          "X-Folded: a\r\n Host: 127.0.0.1:" + port, "Host: 127.0.0.1:" + port + "\r\nHost:",
          "Host: 127.0.0.1:" + port + "\r\nhost: 127.0.0.1:" + port}) {
        RawClient client(server_->port());
        Answer const answer =
            client.ask("GET /api/state HTTP/1.1\r\n" + lines + "\r\n" + cookieLine() + "\r\n");
        EXPECT_EQ(answer.error(), "wrong_host") << lines;
    }
    EXPECT_EQ(ask("GET /api/state HTTP/1.1\r\nhOST: \t" + host() + " \r\n" + cookieLine() + "\r\n").body,
              "state");
}

TEST_F(AccessTest, LocalhostIsTheSamePanel) {
    std::string const host = "localhost:" + std::to_string(server_->port());
    std::string const head = " /api/echo HTTP/1.1\r\nHost: " + host + "\r\n" + cookieLine();
    EXPECT_EQ(ask("DELETE" + head + keyLine() + "Origin: http://" + host + "\r\n\r\n").body, "deleted");
    // Another name is another origin.
    EXPECT_EQ(ask("DELETE" + head + keyLine() + originLine() + "\r\n").error(), "foreign_origin");
}

TEST_F(AccessTest, AChangeComesFromThePanelsOwnPage) {
    std::string const head = "DELETE /api/echo HTTP/1.1\r\n" + hostLine() + cookieLine() + keyLine();
    EXPECT_EQ(ask(head + originLine() + "\r\n").body, "deleted");
    EXPECT_EQ(ask(head + originLine() + "Sec-Fetch-Site: same-origin\r\n\r\n").body, "deleted");
    for (std::string const& lines :
         {std::string(), std::string("Origin: null\r\n"), std::string("Origin: http://evil.example\r\n"),
          "Origin: https://" + host() + "\r\n", "Origin: http://" + host() + "0\r\n",
          "Origin: http://" + host() + "/\r\n", originLine() + "Origin: http://evil.example\r\n",
          originLine() + "Sec-Fetch-Site: cross-site\r\n", originLine() + "Sec-Fetch-Site: same-site\r\n",
          originLine() + "Sec-Fetch-Site: none\r\n", originLine() + "Sec-Fetch-Site:\r\n",
          originLine() + "Sec-Fetch-Site: same-origin\r\nSec-Fetch-Site: cross-site\r\n",
          "Origin: http%3A//" + host() + "\r\n", "Origin: http://" + host() + "%00.evil.example\r\n"}) {
        Answer const answer = ask(head + lines + "\r\n");
        EXPECT_EQ(answer.status, 403) << lines;
        EXPECT_EQ(answer.error(), "foreign_origin") << lines;
    }
}

TEST_F(AccessTest, AnotherPageReadsNothing) {
    EXPECT_EQ(get("/api/state", "Sec-Fetch-Site: same-origin\r\n").body, "state");
    EXPECT_EQ(get("/api/state", "Sec-Fetch-Site: none\r\nSec-Fetch-Mode: navigate\r\n").body, "state");
    // Another port of this machine is the same site: its requests have the cookie.
    for (char const* const site : {"same-site", "cross-site", "", "Same-Origin", "same-origin, cross-site",
                                   "same-origin\r\nSec-Fetch-Site: cross-site"}) {
        for (char const* const target :
             {"/api/state", "/api/bytes", "/api/file", "/assets/main-1234.js", "/nowhere"}) {
            for (char const* const mode : {"navigate", "no-cors", "cors"}) {
                Answer const answer = get(target, "Sec-Fetch-Site: " + std::string(site) +
                                                      "\r\nSec-Fetch-Mode: " + mode + "\r\n");
                EXPECT_EQ(answer.status, 403) << site << " " << target << " " << mode;
                EXPECT_EQ(answer.error(), "foreign_origin") << site << " " << target << " " << mode;
            }
        }
    }
}

TEST_F(AccessTest, AnotherPageMayLeadToThePanel) {
    std::string const lines =
        "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: navigate\r\nSec-Fetch-Dest: document\r\n";
    EXPECT_EQ(get("/", lines).status, 200);
    EXPECT_EQ(metaIn(get("/enter?token=" + token_, lines).body, "zq-panel-address"), "/");
    EXPECT_EQ(get("/", "Sec-Fetch-Site: cross-site\r\nSec-Fetch-Mode: no-cors\r\n").error(),
              "foreign_origin");
}

TEST_F(AccessTest, APageThatDoesNotKnowTheTokenGetsNoPanelIntoItsFrame) {
    for (char const* const frame :
         {"iframe", "frame", "embed", "object", "fencedframe", "iframe\r\nSec-Fetch-Dest: document"}) {
        for (char const* const site : {"same-site", "cross-site"}) {
            std::string const lines = "Sec-Fetch-Site: " + std::string(site) +
                                      "\r\nSec-Fetch-Mode: navigate\r\nSec-Fetch-Dest: " + frame + "\r\n";
            SCOPED_TRACE(lines);
            for (std::string const& target :
                 {std::string("/"), std::string("/?frame="), std::string("/?frame=0"), "/?frame=" + token_,
                  "/?frame=" + cookie_.substr(cookie_.find('=') + 1)}) {
                EXPECT_EQ(get(target, lines).error(), "foreign_origin") << target;
            }
            Answer const entered = get("/enter?token=" + token_, lines);
            EXPECT_EQ(entered.status, 200);
            std::string const address = metaIn(entered.body, "zq-panel-address");
            EXPECT_THAT(address, MatchesRegex("/\\?frame=[0-9a-f]{64}"));
            EXPECT_EQ(get(address, lines).status, 200);
            EXPECT_EQ(metaIn(get("/enter?token=0", lines).body, "zq-panel-address"), "");
        }
    }
    // A frame of its own is the page's affair.
    EXPECT_EQ(
        get("/", "Sec-Fetch-Site: same-origin\r\nSec-Fetch-Mode: navigate\r\nSec-Fetch-Dest: iframe\r\n")
            .status,
        200);
}

TEST_F(AccessTest, EveryMethodThatIsNoReadingOneIsAChange) {
    for (char const* const method : {"POST", "PUT", "PATCH", "DELETE", "OPTIONS", "TRACE"}) {
        Answer const answer =
            ask(std::string(method) + " /api/state HTTP/1.1\r\n" + hostLine() + cookieLine() + "\r\n");
        EXPECT_EQ(answer.error(), "foreign_origin") << method;
    }
}

TEST_F(AccessTest, TheChecksHaveTheirOrder) {
    std::string const badHost = "Host: evil.example\r\n";
    std::string const badOrigin = "Origin: http://evil.example\r\n";
    std::string const badType = "Content-Type: text/plain\r\n";
    std::string const badLength = "Content-Length: 65537\r\n";
    std::string const goodLength = "Content-Length: 2\r\n";
    std::string const line = "POST /nowhere HTTP/1.1\r\n";
    EXPECT_EQ(ask(line + badHost + badOrigin + badType + badLength + "\r\n").status, 421);
    EXPECT_EQ(ask(line + hostLine() + badOrigin + badType + badLength + "\r\n").status, 401);
    EXPECT_EQ(ask(line + hostLine() + cookieLine() + badOrigin + badType + badLength + "\r\n").status, 403);
    EXPECT_EQ(ask(line + hostLine() + cookieLine() + originLine() + badType + badLength + "\r\n").status,
              403);
    std::string const ownPage = line + hostLine() + cookieLine() + originLine() + keyLine();
    EXPECT_EQ(ask(ownPage + badType + badLength + "\r\n").status, 415);
    EXPECT_EQ(ask(ownPage + "Content-Type: application/json\r\n" + badLength + "\r\n").status, 413);
    EXPECT_EQ(ask(ownPage + "Content-Type: application/json\r\n" + goodLength + "\r\n[]").status, 400);
    EXPECT_EQ(ask(ownPage + "Content-Type: application/json\r\n" + goodLength + "\r\n{}").status, 404);
}

TEST_F(AccessTest, EveryAnswerCarriesTheSecurityHeaders) {
    std::string const broken = "BREW / HTTP/1.1\r\n\r\n";
    for (std::string const& asked :
         {request("GET /"), request("GET /api/state"), request("GET /api/bytes"), request("HEAD /api/bytes"),
          request("GET /api/broken"), request("GET /nowhere"), request("PATCH /api/echo"),
          std::string("GET / HTTP/1.1\r\n\r\n"), request("GET /api/bytes", "Range: bytes=999999-\r\n"),
          request("GET /assets/main-1234.js"), broken}) {
        Answer const answer = ask(asked);
        SCOPED_TRACE(asked);
        EXPECT_EQ(
            answer.header("content-security-policy"),
            "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; media-src 'self'; "
            "connect-src 'self'; font-src 'self'; form-action 'none'; base-uri 'none'; frame-ancestors *");
        EXPECT_EQ(answer.header("x-content-type-options"), "nosniff");
        EXPECT_EQ(answer.header("referrer-policy"), "no-referrer");
        EXPECT_EQ(answer.header("cross-origin-resource-policy"), "same-origin");
        EXPECT_EQ(answer.header("access-control-allow-origin"), "");
    }
}

TEST_F(AccessTest, TheTokenIsInNoLogAndNoAnswer) {
    std::string all = entered_.head + entered_.body;
    for (char const* const target : {"/", "/api/broken", "/api/odd", "/enter", "/nowhere"}) {
        Answer const answer = get(std::string(target) + "?token=" + token_);
        all += target == std::string("/enter") ? answer.body : answer.head + answer.body;
    }
    EXPECT_THAT(all, Not(HasSubstr(token_)));
    EXPECT_FALSE(host_.log.lines().empty());
    EXPECT_THAT(host_.log.lines(), Each(Not(HasSubstr(token_))));
}

} // namespace
