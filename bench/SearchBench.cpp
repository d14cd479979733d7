// A search through the repository and the engine, beside the same request by libcurl on a kept connection:
// both over TLS on loopback, to the embedded service with a small library.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

#include <benchmark/benchmark.h>
#include <curl/curl.h>

#include "apps/tarn7d/Server.h"
#include "bench/BenchHost.h"
#include "host/engine/Engine.h"
#include "host/text/Unicode.h"

namespace {

namespace fs = std::filesystem;

constexpr int clips = 50;

// A footage folder with one clip under many names, and a service over it.
class Service {
public:
    Service() {
        fs::create_directories(root_ / "footage");
        fs::path const clip = root_ / "clip.mov";
        std::string const command = "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=size=320x180:rate=25 "
                                    "-t 1 -c:v mjpeg '" +
                                    clip.string() + "'";
        if (std::system(command.c_str()) != 0) {
            throw std::runtime_error("ffmpeg could not make the clip");
        }
        for (int i = 0; i < clips; ++i) {
            fs::copy_file(clip, root_ / "footage" / ("sunset over the bay " + std::to_string(i) + ".mov"));
        }
        tarn7d::ServerOptions options;
        options.data = root_ / "data";
        options.footage = root_ / "footage";
        server_.emplace(options);
        port_ = server_->start();
        server_->rescan();
        std::ofstream settings(root_ / "host.toml");
        settings << "[network]\nconnect = { \"www.tarn7.example:443\" = \"127.0.0.1:" << port_
                 << "\" }\nca_file = \"" << server_->caFile().string() << "\"\n";
    }
    ~Service() {
        server_.reset();
        fs::remove_all(root_);
    }
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    [[nodiscard]] fs::path home() const { return root_; }
    [[nodiscard]] fs::path caFile() const { return server_->caFile(); }
    [[nodiscard]] int port() const { return port_; }

private:
    static fs::path makeFolder() {
        std::string name = (fs::temp_directory_path() / "zq-bench-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        return name;
    }
    fs::path root_ = makeFolder();
    std::optional<tarn7d::Server> server_;
    int port_ = 0;
};

Service& service() {
    static Service instance;
    return instance;
}

SearchQuery query() {
    SearchQuery search;
    search.words = L"sunset";
    search.pageSize = clips;
    return search;
}

void searchThroughZq(benchmark::State& state) {
    engine::EngineOptions options;
    options.home = service().home();
    auto const engine = engine::Engine::start(options);
    if (!engine) {
        state.SkipWithError(engine.error().c_str());
        return;
    }
    bench::Resource resource{Zq::Ptr<iHTTPServer>()};
    resource.connect(resource.getDescription().connection, LoggerHandle());
    for (auto _ : state) {
        resource.searchResultCache.clear();
        SearchResults const page = resource.search(query());
        if (page.assets.size() != clips) {
            state.SkipWithError("the page is not whole");
        }
    }
}

// Keeps the form that the repository would send.
class CapturingServer final : public iHTTPServer {
public:
    explicit CapturingServer(std::string& form) : form_(form) {}
    Zq::Ptr<iHTTPReply> get(WideString const&) override { return {}; }
    Zq::Ptr<iHTTPReply> postForm(WideString const& body, WideString const&) override {
        form_ = std::string(toUTF8(body).view());
        return {};
    }
    int httpGetToReceiver(WideString const&, iDataReceiver&) override { return 0; }

private:
    std::string& form_;
};

std::size_t keep(char* bytes, std::size_t size, std::size_t count, void* answer) {
    static_cast<std::string*>(answer)->append(bytes, size * count);
    return size * count;
}

void searchByCurl(benchmark::State& state) {
    std::string form;
    {
        bench::Host const host;
        bench::Resource resource(Zq::makeShared<CapturingServer>(form));
        (void)resource.searchInternal(query());
    }
    CURL* const curl = curl_easy_init();
    std::string const connect = "www.tarn7.example:443:127.0.0.1:" + std::to_string(service().port());
    curl_slist* const connections = curl_slist_append(nullptr, connect.c_str());
    std::string answer;
    curl_easy_setopt(curl, CURLOPT_URL, "https://www.tarn7.example/?page=api");
    curl_easy_setopt(curl, CURLOPT_CONNECT_TO, connections);
    curl_easy_setopt(curl, CURLOPT_CAINFO, service().caFile().c_str());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, form.c_str());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE, static_cast<long>(form.size()));
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &keep);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    for (auto _ : state) {
        answer.clear();
        CURLcode const result = curl_easy_perform(curl);
        if (result != CURLE_OK || answer.find("\"items\"") == std::string::npos) {
            state.SkipWithError("curl got no page");
            break;
        }
    }
    curl_easy_cleanup(curl);
    curl_slist_free_all(connections);
}

BENCHMARK(searchThroughZq)->UseRealTime();
BENCHMARK(searchByCurl)->UseRealTime();

} // namespace
