// The built program, the built module and a service: the embedded one, and such as do not do what they
// should.

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <semaphore>
#include <utility>

#include "tests/support/RawServer.h"
#include "tests/support/WebServer.h"
#include "tests/zq/EmbeddedService.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using zq_tests::Finished;
using zq_tests::RunningProgram;

using zq_tests::EmbeddedService;
using zq_tests::errorOf;
using zq_tests::keysOf;
using zq_tests::parsed;
using zq_tests::Service;

TEST_F(EmbeddedService, IsSearched) {
    Zq::Ptr<JSON::Element> const answer = parsed(answers({"search car --page-size 10"})[0]);
    EXPECT_EQ(keysOf(JSON::orEmpty(answer)),
              (Words{"page", "pageSize", "pageCount", "totalCount", "ok", "assets"}));
    EXPECT_EQ(answer->getInt("pageSize", 0), 10);
    EXPECT_EQ(answer->getInt("totalCount", 0), 1);
    Zq::Ptr<JSON::Element> const asset = JSON::orEmpty(answer->getChild("assets")).getChild(std::uint16_t{0});
    ASSERT_TRUE(asset);
    EXPECT_EQ(keysOf(*asset), (Words{"id", "frameRateText", "mediaExtension", "proxyLocation",
                                     "proxyExtension", "thumbnailUrl", "previewUrl", "localPath", "frameRate",
                                     "videoChannels", "audioChannels", "purchased", "display", "log"}));
    EXPECT_EQ(keysOf(*asset->getChild("display")), (Words{"45", "18", "59", "1003"}));
    EXPECT_EQ(keysOf(*asset->getChild("log")), (Words{"1", "23", "6", "59"}));
    EXPECT_EQ(asset->getString("frameRateText"), "25");
    EXPECT_EQ(asset->getInt("audioChannels", -1), 0);
    EXPECT_TRUE(asset->getString("proxyLocation").startsWith("Virtual:T7 https://www.tarn7.example/"));
    EXPECT_TRUE(asset->getString("previewUrl").endsWith(".mov"));
    EXPECT_TRUE(asset->getString("thumbnailUrl").endsWith("_iconm.jpeg"));
    EXPECT_TRUE(asset->getString("localPath").endsWith(".mov"));
}

TEST_F(EmbeddedService, TellsNoHitsFromAFailure) {
    std::string const line = answers({"search nothinglikethis"})[0];
    EXPECT_EQ(line, R"({"ok":true,"page":1,"pageSize":25,"pageCount":0,"totalCount":0,"assets":[]})");
    EXPECT_EQ(run({"search", "nothinglikethis"}).out, "no clips found\n");
}

TEST_F(EmbeddedService, SignsInAndOut) {
    ASSERT_EQ(added_.status, 0) << added_.err;
    std::vector<std::string> const lines = answers({"login anna", "wrong", "login nobody", "x", "login anna",
                                                    "open sesame", "form", "logout", "logout"});
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[0], R"({"ok":false,"error":"the password is wrong","code":7,"user":""})");
    EXPECT_EQ(lines[1],
              R"({"ok":false,"error":"the service knows no user of that name","code":2,"user":""})");
    EXPECT_EQ(lines[2], R"({"ok":true,"code":0,"user":"anna"})");
    EXPECT_THAT(lines[3], HasSubstr(R"("value":"anna")"));
    EXPECT_EQ(lines[4], R"({"ok":true})");
    for (fs::directory_entry const& entry : fs::recursive_directory_iterator(home())) {
        if (!entry.is_regular_file()) {
            continue;
        }
        std::ifstream file(entry.path());
        std::string const text{std::istreambuf_iterator<char>(file), {}};
        EXPECT_THAT(text, Not(HasSubstr("sesame"))) << entry.path();
    }
}

TEST_F(EmbeddedService, GivesPictures) {
    fs::path const picture = folder() / "car.png";
    std::vector<std::string> const found = answers({"search car"});
    Zq::Ptr<JSON::Element> const answer = parsed(found[0]);
    Zq::Ptr<JSON::Element> const asset = JSON::orEmpty(answer->getChild("assets")).getChild(std::uint16_t{0});
    ASSERT_TRUE(asset);
    std::string const id(asset->getString("id").view());
    std::vector<std::string> const lines =
        answers({"search car", "thumbnail " + id + " " + picture.string(),
                 "thumbnail 424242 " + picture.string(), "thumbnail " + id + " /dev/null/x.png"});
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_THAT(lines[1], StartsWith(R"({"ok":true,"file":)"));
    std::ifstream file(picture);
    char magic[4] = {};
    file.read(magic, sizeof magic);
    EXPECT_EQ(std::string(magic + 1, 3), "PNG");
    EXPECT_THAT(errorOf(lines[2]), StartsWith("there is no picture of clip 424242: "));
    EXPECT_THAT(errorOf(lines[2]), HasSubstr("status 404"));
    EXPECT_EQ(errorOf(lines[3]), "cannot write /dev/null/x.png");
}

TEST_F(EmbeddedService, GivesAPictureToACommandOnItsOwn) {
    fs::path const picture = folder() / "car.png";
    Zq::Ptr<JSON::Element> const answer = parsed(answers({"search car"})[0]);
    Zq::Ptr<JSON::Element> const asset = JSON::orEmpty(answer->getChild("assets")).getChild(std::uint16_t{0});
    ASSERT_TRUE(asset);
    Finished const finished =
        run({"thumbnail", std::string(asset->getString("id").view()), picture.string()});
    EXPECT_EQ(finished.status, 0) << finished.err;
    EXPECT_GT(fs::file_size(picture), 0U);
}

TEST_F(EmbeddedService, ShowsPicturesOnATerminalThatCan) {
    environment.push_back("COLORTERM=truecolor");
    auto const terminal = start({"search", "car", "--pictures"}, RunningProgram::Around::terminal);
    std::string const out = terminal->finish().out;
    EXPECT_THAT(out, HasSubstr("\033[38;2;"));
    EXPECT_THAT(out, HasSubstr("▀"));
    EXPECT_THAT(out, HasSubstr("page 1 of 1, 1 clip\r\n"));
}

TEST_F(EmbeddedService, CountsWhatIsExchanged) {
    Zq::Ptr<JSON::Element> const answer = parsed(answers({"search car", "stats"})[1]);
    Zq::Ptr<JSON::Element> const services = JSON::orEmpty(answer).getChild("services");
    Zq::Ptr<JSON::Element> const service = JSON::orEmpty(services).getChild(std::uint16_t{0});
    ASSERT_TRUE(service);
    EXPECT_EQ(keysOf(*service), (Words{"server", "lastError", "requests", "failures", "refusals", "bytesSent",
                                       "bytesReceived", "time_us"}));
    EXPECT_EQ(service->getString("server"), "https://www.tarn7.example");
    EXPECT_GE(service->getInt("requests", 0), 1);
    EXPECT_EQ(service->getInt("failures", -1), 0);
    EXPECT_GT(service->getInt("bytesSent", 0), 0);
    EXPECT_GT(service->getInt("bytesReceived", 0), 0);
}

TEST_F(EmbeddedService, IsNotTrustedWithoutItsAuthority) {
    leadTo(name(), {});
    std::string const error = errorOf(answers({"search car"})[0]);
    EXPECT_THAT(error, StartsWith("the request to the service failed: "));
    EXPECT_THAT(error, HasSubstr("ca_file"));
}

TEST_F(EmbeddedService, IsNotTrustedByAnotherAuthority) {
    leadTo(name(), certificates("other").ca);
    Finished const finished = run({"search", "car"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_THAT(finished.err, HasSubstr("certificate"));
}

TEST_F(Service, ThatIsNotThereIsNamedWithWhatToDo) {
    leadTo("127.0.0.1:" + std::to_string(test::closedPort()), {});
    std::vector<std::string> const lines = answers({"search car", "login anna", "secret", "logout"});
    EXPECT_THAT(errorOf(lines[0]), StartsWith("the request to the service failed: "));
    EXPECT_THAT(errorOf(lines[0]), HasSubstr("connect"));
    EXPECT_THAT(errorOf(lines[1]), StartsWith("the request to the service failed: "));
    EXPECT_THAT(lines[1], HasSubstr(R"("code":17)"));
    EXPECT_EQ(lines[2], R"({"ok":true})") << "nobody was signed in";
}

TEST_F(Service, ThatRefusesIsQuotedAndNotTakenForNoHits) {
    tarn7d::CertificateFiles const files = certificates();
    test::WebServer web(files.certificate, files.key);
    std::string body;
    int status = 200;
    web.routes().Post("/", [&](httplib::Request const&, httplib::Response& response) {
        response.status = status;
        response.set_content(body, "application/json");
    });
    web.start();
    leadTo(web.name(), files.ca);
    auto const searchError = [&](std::string answer, int answerStatus) {
        body = std::move(answer);
        status = answerStatus;
        return errorOf(answers({"search car"})[0]);
    };
    EXPECT_EQ(searchError(R"({"e":true,"s":"The key is not known"})", 200),
              "the service refused the request: The key is not known");
    EXPECT_EQ(searchError(R"({"e":true})", 200), "the service refused the request");
    EXPECT_EQ(searchError(R"({"e":false,"commands":[{"s":"too busy"}]})", 200),
              "the service refused the request: too busy");
    EXPECT_THAT(searchError("{}", 503), HasSubstr("answered with the error status 503"));
    EXPECT_EQ(searchError(R"({"e":false,"commands":[{"items":[],"tot_nbr_rows":0}]})", 200), "");
    body = R"({"e":true,"s":"\u001b[31mred\nline"})";
    EXPECT_THAT(run({"search", "car"}).err, HasSubstr(": [31mred line\n"));
}

TEST_F(Service, WhoseAnswerIsNoneIsNotTakenForNoHits) {
    tarn7d::CertificateFiles const files = certificates();
    test::WebServer web(files.certificate, files.key);
    std::string body;
    web.routes().Post("/", [&](httplib::Request const&, httplib::Response& response) {
        response.set_content(body, "application/json");
    });
    web.start();
    leadTo(web.name(), files.ca);
    std::string const whole = R"({"e":false,"commands":[{"items":[],"tot_nbr_rows":0}]})";
    std::string const deep(100'000, '[');
    for (std::string const& answer :
         {std::string(), whole.substr(0, 30), std::string("<html>"), std::string("null"), std::string("5"),
          std::string("[1,2]"), std::string(R"({"e":false,"s":""})"), std::string(R"({"commands":[1,"a"]})"),
          std::string(R"({"commands":{"0":7}})"), R"({"commands":)" + deep,
          std::string(300, '[') + std::string(300, ']')}) {
        body = answer;
        std::vector<std::string> const lines = answers({"search car", "login anna", "secret", "columns"});
        std::string const sample = answer.substr(0, 60);
        EXPECT_THAT(errorOf(lines[0]), StartsWith("the service's answer cannot be understood; check "))
            << sample;
        EXPECT_THAT(errorOf(lines[1]), StartsWith("the service's answer cannot be understood; check "))
            << sample;
        EXPECT_THAT(lines[2], StartsWith(R"({"ok":true)")) << sample;
    }
    body = R"({"e":false,"commands":[{"s":"","items":{"id":7},"tot_nbr_rows":"many"}]})";
    EXPECT_THAT(errorOf(answers({"search car"})[0]), StartsWith("the service's answer cannot be used: "));
}

TEST_F(Service, ThatSendsWithoutEndIsCutOffWithAnError) {
    tarn7d::CertificateFiles const files = certificates();
    test::WebServer web(files.certificate, files.key);
    web.routes().Post("/", [](httplib::Request const&, httplib::Response& response) {
        response.set_chunked_content_provider("application/json", [](std::size_t, httplib::DataSink& sink) {
            static std::string const blanks(1 << 20, ' ');
            return sink.write(blanks.data(), blanks.size());
        });
    });
    web.start();
    leadTo(web.name(), files.ca);
    EXPECT_THAT(errorOf(answers({"search car"})[0]), HasSubstr("too large"));
}

// Accepts and never says a word.
class SilentService : public Service {
protected:
    SilentService()
        : server_([this](test::RawConnection& connection) {
              arrived_.release();
              connection.waitForEnd();
          }) {
        leadTo(server_.name(), {});
    }
    void waitForRequest() { ASSERT_TRUE(arrived_.try_acquire_for(std::chrono::seconds(30))); }

    std::counting_semaphore<> arrived_{0};
    test::RawServer server_;
};

TEST_F(SilentService, IsGivenUpAtCtrlCAndTheShellGoesOn) {
    auto const program = start({"--json", "shell"});
    program->write("search car\n");
    waitForRequest();
    auto const before = std::chrono::steady_clock::now();
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->readLine(), R"({"ok":false,"error":"interrupted"})");
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    program->write("columns\n");
    EXPECT_THAT(program->readLine(), StartsWith(R"({"ok":true,"columns":)"));
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 1);
}

TEST_F(SilentService, IsGivenUpByACommandOnItsOwn) {
    auto const program = start({"search", "car"});
    waitForRequest();
    program->sendSignal(SIGINT);
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 1);
    EXPECT_EQ(finished.err, "zq: error: interrupted\n");
}

TEST_F(SilentService, IsGivenUpWhenTheProgramIsTerminated) {
    auto const program = start({"--json", "shell"});
    program->write("search car\ncolumns\n");
    waitForRequest();
    program->sendSignal(SIGTERM);
    Finished const finished = program->finish();
    EXPECT_EQ(finished.status, 143);
    EXPECT_EQ(finished.out, "{\"ok\":false,\"error\":\"interrupted\"}\n");
}

} // namespace
