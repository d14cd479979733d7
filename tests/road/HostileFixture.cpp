#include "tests/road/HostileFixture.h"

#include "apps/tarn7d/CertificateAuthority.h"

namespace road_tests {

namespace {

std::string answerOf(std::string const& members) {
    return R"({"e":false,"s":"","commands":[{"e":false,"s":"")" + members + "}]}";
}

} // namespace

std::string ownedAnswer(std::vector<LyingItem> const& items) {
    std::string text = R"(,"icon_base":"https://www.tarn7.example/i/","flv_base":)"
                       R"("https://www.tarn7.example/p/","items":[)";
    for (LyingItem const& item : items) {
        text += text.back() == '[' ? "" : ",";
        text += R"({"bid":")" + item.bid + R"(","versions":[{"ext":")" + item.ext +
                R"(","n":"A\nclip","tr":"t","v":"1","fps":"25","dur":"1000","ox":320,"oy":240}]})";
    }
    return answerOf(text + "]");
}

HostileRoad::HostileRoad() {
    std::filesystem::create_directories(folder.path() / "tls");
    tarn7d::CertificateFiles const tls =
        tarn7d::ensureCertificates(folder.path() / "tls", {"www.tarn7.example"});
    service_ = std::make_unique<test::WebServer>(tls.certificate, tls.key);
    service_->routes().Post("/", [this](httplib::Request const& request, httplib::Response& response) {
        // A type that the library does not compress: that would take it ten seconds for a long list.
        response.set_content(answerTo(request.body), "application/octet-stream");
    });
    service_->routes().Get("/full", [this](httplib::Request const&, httplib::Response& response) {
        std::lock_guard const lock(mutex_);
        if (tellsLength_) {
            response.set_content(file_, "video/quicktime");
            return;
        }
        response.set_chunked_content_provider("video/quicktime",
                                              [bytes = file_](std::size_t, httplib::DataSink& sink) {
                                                  sink.write(bytes.data(), bytes.size());
                                                  sink.done();
                                                  return true;
                                              });
    });
    service_->start();
    host_ = std::make_unique<RoadHost>(folder.path(), service_->name(), tls.ca);
    host_->connect();
    EXPECT_EQ(host_->signIn("ada", "secret"), 0);
}

void HostileRoad::owns(std::string answer) {
    std::lock_guard const lock(mutex_);
    owned_ = std::move(answer);
}

void HostileRoad::sends(std::string bytes, bool tellsLength) {
    std::lock_guard const lock(mutex_);
    file_ = std::move(bytes);
    tellsLength_ = tellsLength;
}

std::string HostileRoad::answerTo(std::string const& body) {
    auto const asks = [&body](std::string const& word) {
        return body.find(R"(\"command\":\")" + word + R"(\")") != std::string::npos;
    };
    if (asks("login")) {
        return answerOf(R"(,"cx":1,"cm":2)");
    }
    if (asks("get_downloads_formatted")) {
        std::lock_guard const lock(mutex_);
        return owned_;
    }
    if (asks("download")) {
        ++downloads_;
        return answerOf(R"(,"url":"https://www.tarn7.example/full?clip")");
    }
    return answerOf("");
}

} // namespace road_tests
