// TLS, and the ways by which a named server is reached.

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <thread>

#include "apps/tarn7d/CertificateAuthority.h"
#include "tests/engine/network/NetworkFixture.h"
#include "tests/support/RawServer.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WebServer.h"

namespace {

using test::bodyOf;
using test::RawConnection;
using test::RawServer;

constexpr char serverName[] = "www.tarn7.example";

class SecureServer : public test::NetworkFixture {
protected:
    SecureServer() : files(certificatesIn("tls")), web(files.certificate, files.key) {
        web.routes().Get("/", [](httplib::Request const& request, httplib::Response& response) {
            response.set_content("hello " + request.get_header_value("Host"), "text/plain");
        });
        web.routes().Post("/", [](httplib::Request const& request, httplib::Response& response) {
            response.set_content(request.body, "text/plain");
        });
        web.routes().Get("/plain", [this](httplib::Request const&, httplib::Response& response) {
            response.set_redirect("http://" + plainName + "/");
        });
        web.routes().set_payload_max_length(1u << 20);
        web.start();
        settings.caFile = files.ca;
        settings.connect[std::string(serverName) + ":443"] = web.name();
    }

    ~SecureServer() override { forgetNetwork(); }

    tarn7d::CertificateFiles certificatesIn(char const* name) {
        std::filesystem::create_directories(folder.path() / name);
        return tarn7d::ensureCertificates(folder.path() / name, {serverName});
    }

    test::TemporaryFolder folder;
    tarn7d::CertificateFiles const files;
    test::WebServer web;
    std::string plainName;
};

TEST_F(SecureServer, IsReachedByItsNameThroughTheConnectSetting) {
    auto const one = server(serverName, true);
    EXPECT_EQ(bodyOf(one->get(L"/")), std::string("hello ") + serverName);
    EXPECT_EQ(bodyOf(one->postForm(L"api={}", L"?page=api")), "api={}");
    EXPECT_TRUE(network().problems().empty());
    EXPECT_EQ(network().statistics()[0].server, std::string("https://") + serverName);
    EXPECT_EQ(lastError(), "");
}

// Waits until the server has ended a connection that this process has not: the system's table then says
// CLOSE_WAIT, 8, with the server's port on the far side.
void waitUntilServerHasClosed(std::uint16_t port) {
    std::array<char, 16> end{};
    std::snprintf(end.data(), end.size(), ":%04X 08", static_cast<unsigned>(port));
    std::string table;
    do {
        std::this_thread::yield();
        std::ifstream stream("/proc/net/tcp");
        table.assign(std::istreambuf_iterator<char>(stream), {});
    } while (table.find(end.data()) == std::string::npos);
}

TEST_F(SecureServer, TakesAFormAlsoWhenItHasEndedTheKeptConnectionInBetween) {
    web.routes().set_keep_alive_timeout(0);
    auto const one = server(serverName, true);
    ASSERT_EQ(bodyOf(one->postForm(L"n=1", L"/")), "n=1");
    waitUntilServerHasClosed(web.port());
    EXPECT_EQ(bodyOf(one->postForm(L"n=2", L"/")), "n=2");
    EXPECT_EQ(lastError(), "");
}

TEST_F(SecureServer, GivesFilesToAReceiver) {
    test::RecordingReceiver receiver;
    EXPECT_EQ(server(serverName, true)->httpGetToReceiver(L"/", receiver), 200);
    EXPECT_EQ(receiver.data, std::string("hello ") + serverName);
}

TEST_F(SecureServer, IsNotTrustedWithoutItsAuthority) {
    settings.caFile.clear();
    EXPECT_FALSE(server(serverName, true)->get(L"/"));
    EXPECT_NE(lastError().find("certificate of www.tarn7.example:443 is not accepted"), std::string::npos)
        << lastError();
    EXPECT_NE(lastError().find("[network] ca_file in host.toml"), std::string::npos) << lastError();
}

TEST_F(SecureServer, IsNotTrustedByAnotherAuthority) {
    settings.caFile = certificatesIn("other").ca;
    EXPECT_FALSE(server(serverName, true)->get(L"/"));
    EXPECT_FALSE(server(serverName, true)->postForm(L"secret=1", L"/"));
    EXPECT_NE(lastError().find("ca_file"), std::string::npos) << lastError();
}

TEST_F(SecureServer, IsNotTrustedUnderAnotherName) {
    settings.connect["other.example:443"] = web.name();
    EXPECT_FALSE(server("other.example", true)->get(L"/"));
    EXPECT_NE(lastError().find("is not accepted"), std::string::npos) << lastError();
    EXPECT_FALSE(server(web.name(), true)->get(L"/"));
}

TEST_F(SecureServer, ThatSpeaksNoTlsIsNoAnswer) {
    RawServer const raw([](RawConnection& connection) {
        (void)connection.receive(100);
        connection.send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
    });
    EXPECT_FALSE(server(raw.name(), true)->get(L"/"));
}

TEST_F(SecureServer, ThatClosesOnALargeFormEndsNothingButTheCall) {
    auto const one = server(serverName, true);
    auto const reply = one->postForm(WideString(16u << 20, L'x'), L"/");
    EXPECT_TRUE(!reply || reply->getStatus() == 413);
    EXPECT_EQ(bodyOf(one->get(L"/")), std::string("hello ") + serverName);
}

TEST_F(SecureServer, DoesNotRedirectToPlainHttp) {
    RawServer const plain([](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(200, "plain");
        }
    });
    plainName = plain.name();
    EXPECT_FALSE(server(serverName, true)->get(L"/plain"));
    EXPECT_NE(lastError().find("from https to http"), std::string::npos) << lastError();
    test::RecordingReceiver receiver;
    EXPECT_EQ(server(serverName, true)->httpGetToReceiver(L"/plain", receiver), 0);
    EXPECT_EQ(plain.connections(), 0);
}

TEST_F(SecureServer, MayBeRedirectedToButNotBack) {
    std::string const secure = std::string("https://") + serverName;
    RawServer const plain([&secure](RawConnection& connection) {
        while (auto const request = connection.readRequest()) {
            bool const back = request->line.starts_with("GET /back ");
            connection.answer(301, "", "Location: " + secure + (back ? "/plain" : "/") + "\r\n");
        }
    });
    plainName = plain.name();
    EXPECT_EQ(bodyOf(server(plain.name())->get(L"/")), std::string("hello ") + serverName);
    EXPECT_FALSE(server(plain.name())->get(L"/back"));
    EXPECT_EQ(plain.requests().size(), 2u);
}

TEST_F(SecureServer, SettingsThatCannotBeUsedAreNamed) {
    settings.caFile = folder.path() / "missing.pem";
    settings.connect["no-port.example"] = "127.0.0.1:1";
    settings.connect["a.example:443"] = "nowhere";
    settings.connect["b.example:443"] = "x y:80";
    ASSERT_EQ(network().problems().size(), 4u);
    EXPECT_NE(network().problems()[0].find("missing.pem"), std::string::npos);
    EXPECT_FALSE(server(serverName, true)->get(L"/"));
}

TEST_F(SecureServer, AFileThatIsNoCertificateIsNamed) {
    settings.caFile = folder.path() / "text.pem";
    std::ofstream(settings.caFile) << "this is no certificate\n";
    EXPECT_EQ(network().problems().size(), 1u);
}

// An HTTP proxy that answers itself; what it was asked stands in its requests.
void answeringProxy(RawConnection& connection) {
    while (connection.readRequest()) {
        connection.answer(200, "by proxy");
    }
}

TEST_F(SecureServer, AProxyIsAskedWhereOneIsSet) {
    RawServer const proxy(answeringProxy);
    settings.proxy = "http://" + proxy.name();
    EXPECT_EQ(bodyOf(server("plain.example")->get(L"/a")), "by proxy");
    ASSERT_EQ(proxy.requests().size(), 1u);
    EXPECT_EQ(proxy.requests()[0].line, "GET http://plain.example/a HTTP/1.1");
}

TEST_F(SecureServer, AProxyOfTheEnvironmentIsAskedByDefault) {
    RawServer const proxy(answeringProxy);
    setenv("http_proxy", ("http://" + proxy.name()).c_str(), 1);
    EXPECT_EQ(bodyOf(server("plain.example")->get(L"/a")), "by proxy");
    unsetenv("http_proxy");
    EXPECT_EQ(proxy.requests().size(), 1u);
}

TEST_F(SecureServer, AServerThatIsReachedElsewhereNeedsNoProxyOfTheEnvironment) {
    RawServer const proxy(answeringProxy);
    setenv("https_proxy", ("http://" + proxy.name()).c_str(), 1);
    EXPECT_EQ(bodyOf(server(serverName, true)->get(L"/")), std::string("hello ") + serverName);
    unsetenv("https_proxy");
    EXPECT_EQ(proxy.connections(), 0);
}

TEST_F(SecureServer, AProxyThatIsNotThereIsNamedAsWhatToCheck) {
    {
        RawServer const gone(answeringProxy);
        settings.proxy = "http://" + gone.name();
    }
    EXPECT_FALSE(server("plain.example")->get(L"/"));
    EXPECT_NE(lastError().find("check [network] proxy"), std::string::npos) << lastError();
}

TEST_F(SecureServer, AProxyThatRefusesIsNamed) {
    RawServer const proxy([](RawConnection& connection) {
        while (connection.readRequest()) {
            connection.answer(403, "no");
        }
    });
    settings.proxy = "http://" + proxy.name();
    EXPECT_FALSE(server("secure.example", true)->get(L"/"));
    ASSERT_EQ(proxy.requests().size(), 1u);
    EXPECT_EQ(proxy.requests()[0].line, "CONNECT secure.example:443 HTTP/1.1");
    EXPECT_NE(lastError(), "");
}

} // namespace
