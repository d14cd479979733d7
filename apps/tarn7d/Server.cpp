#include "apps/tarn7d/Server.h"

#include <cerrno>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <arpa/inet.h>
#include <httplib.h>
#include <sys/socket.h>

#include "apps/tarn7d/Accounts.h"
#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/CertificateAuthority.h"
#include "apps/tarn7d/ConnectionRegistry.h"
#include "apps/tarn7d/DataFolder.h"
#include "apps/tarn7d/ElasticTaskQueue.h"
#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/MediaResponse.h"
#include "apps/tarn7d/Protocol.h"
#include "apps/tarn7d/Renditions.h"

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestBody_bytes = std::size_t{4} << 20;
constexpr std::size_t mostConnections = 256;
constexpr std::chrono::seconds idleConnection{60};
constexpr std::chrono::seconds slowClient{30};
constexpr std::chrono::seconds firstScanPatience{5};

constexpr char const* jsonType = "application/json; charset=utf-8";
constexpr char const* plainType = "text/plain; charset=utf-8";

std::string withoutPort(std::string const& name) {
    return name.substr(0, name.find(':'));
}

// The address that "localhost" stands for, and the loopback's own; nothing else is listened on.
std::string loopbackAddress(std::string const& host) {
    if (host == "localhost") {
        return "127.0.0.1";
    }
    in_addr four{};
    in6_addr six{};
    bool const isFour = inet_pton(AF_INET, host.c_str(), &four) == 1 && (ntohl(four.s_addr) >> 24) == 127;
    bool const isSix = inet_pton(AF_INET6, host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six);
    if (!isFour && !isSix) {
        throw std::runtime_error("cannot listen on " + host + ": only the loopback interface is served");
    }
    return host;
}

std::vector<std::string> certificateNames(ServerOptions const& options) {
    std::vector<std::string> names{withoutPort(options.publicName), "www.tarn7.example", "localhost",
                                   "127.0.0.1"};
    names.insert(names.end(), options.furtherNames.begin(), options.furtherNames.end());
    return names;
}

char const* contentTypeOf(RenditionKind kind) {
    switch (kind) {
    case RenditionKind::thumbnail:
        return "image/jpeg";
    case RenditionKind::preview:
        return "video/quicktime";
    case RenditionKind::highQualityPreview:
        return "video/mp4";
    }
    return "application/octet-stream";
}

void useCertificate(SSL_CTX* context, CertificateFiles const& files) {
    if (SSL_CTX_use_certificate_chain_file(context, files.certificate.c_str()) != 1 ||
        SSL_CTX_use_PrivateKey_file(context, files.key.c_str(), SSL_FILETYPE_PEM) != 1 ||
        SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) != 1) {
        throw std::runtime_error("cannot use the certificate " + files.certificate.string());
    }
    // A client that comes again resumes its session; the name is any constant.
    constexpr unsigned char sessionContext[] = "tarn7d";
    SSL_CTX_set_session_id_context(context, sessionContext, sizeof sessionContext - 1);
}

template <class Store, class... More>
std::unique_ptr<Store> openOrExplain(char const* what, fs::path const& file, More const&... more) {
    try {
        return std::make_unique<Store>(file, more...);
    } catch (std::exception const& error) {
        throw std::runtime_error(
            std::string("cannot open the ") + what + " " + file.string() + ": " + error.what() +
            "; make it writable, put a sound copy in its place, or move it away to begin "
            "with an empty one");
    }
}

// Refuses what start would refuse: before footage is made, which takes a while.
ServerOptions checked(ServerOptions options) {
    (void)loopbackAddress(options.host);
    return options;
}

// What the service writes must not come back to it as footage.
fs::path dataFolderApart(fs::path const& data, fs::path const& footage) {
    fs::path const fromFootage = fs::weakly_canonical(data).lexically_relative(footage);
    if (!fromFootage.empty() && *fromFootage.begin() != "..") {
        throw std::runtime_error("the data folder must not lie in the footage folder");
    }
    return data;
}

fs::path existingFolder(fs::path const& folder) {
    std::error_code error;
    fs::path path = fs::canonical(folder, error);
    if (error || !fs::is_directory(path, error)) {
        throw std::runtime_error("cannot use the footage folder " + folder.string() + ": " +
                                 (error ? error.message() : "not a folder"));
    }
    return path;
}

} // namespace

class Server::Implementation {
public:
    explicit Implementation(ServerOptions options)
        : options_(checked(std::move(options))), footage_(existingFolder(options_.footage)),
          folder_(dataFolderApart(options_.data, footage_)),
          certificates_(ensureCertificates(folder_.path(), certificateNames(options_))),
          catalogue_(openOrExplain<Catalogue>("catalogue", folder_.path() / "catalogue.db", footage_)),
          accounts_(openOrExplain<Accounts>("accounts", folder_.path() / "accounts.db")),
          renditions_(folder_.path() / "renditions", *catalogue_),
          protocol_({*catalogue_, *accounts_, sessions_, throttle_,
                     "https://" + options_.publicName + "/icons/",
                     "https://" + options_.publicName + "/previews/"}),
          server_([this](SSL_CTX& context) {
              useCertificate(&context, certificates_);
              connections_.attach(&context);
              return true;
          }) {
        if (!server_.is_valid()) {
            throw std::runtime_error("cannot set up TLS");
        }
        configure();
    }
    ~Implementation() { stop(); }
    Implementation(Implementation const&) = delete;
    Implementation& operator=(Implementation const&) = delete;

    int start();
    void stop();
    void rescan() { scan(Catalogue::Settling::none, {}); }

    [[nodiscard]] fs::path const& caFile() const noexcept { return certificates_.ca; }
    [[nodiscard]] Accounts& accounts() noexcept { return *accounts_; }

private:
    void configure();
    void addRoutes();
    void answerApi(httplib::Request const& request, httplib::Response& response,
                   httplib::ContentReader const& readContent);
    void answerMedia(httplib::Request const& request, httplib::Response& response);
    int bind(std::string const& address);
    void watch(std::stop_token const& stop);
    void scan(Catalogue::Settling settling, std::stop_token const& stop);
    void prepareAll();

    ServerOptions options_;
    fs::path footage_;
    DataFolder folder_;
    CertificateFiles certificates_;
    std::unique_ptr<Catalogue> catalogue_;
    std::unique_ptr<Accounts> accounts_;
    Sessions sessions_;
    SignInThrottle throttle_;
    Renditions renditions_;
    Protocol protocol_;
    ConnectionRegistry connections_;
    httplib::SSLServer server_;

    std::mutex firstScanMutex_; // guards the flag
    std::condition_variable_any firstScanEnded_;
    bool firstScanDone_ = false;

    std::jthread watcher_;
    std::thread listener_;
};

void Server::Implementation::configure() {
    server_.new_task_queue = [] { return new ElasticTaskQueue(mostConnections); };
    server_.set_tcp_nodelay(true);
    server_.set_keep_alive_max_count(1'000'000);
    server_.set_keep_alive_timeout(idleConnection.count());
    server_.set_read_timeout(slowClient);
    server_.set_write_timeout(slowClient);
    server_.set_payload_max_length(longestBody_bytes);
    // The library's own choice would let a second service share the port.
    server_.set_socket_options([](socket_t socket) {
        int const yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server_.set_exception_handler([](auto const&, httplib::Response& response, std::exception_ptr failure) {
        try {
            std::rethrow_exception(failure);
        } catch (std::exception const& error) {
            logLine(std::string("a request failed: ") + error.what());
        } catch (...) {
            logLine("a request failed");
        }
        sendText(response, 500, "the service failed\n", plainType);
    });
    addRoutes();
}

void Server::Implementation::addRoutes() {
    server_.set_pre_routing_handler([](httplib::Request const& request, httplib::Response& response) {
        // Without a length the library would read until the client hangs up.
        if (request.method == "POST" && !request.has_header("Content-Length") &&
            !request.has_header("Transfer-Encoding")) {
            response.set_header("Connection", "close");
            sendText(response, 411, "a length is needed\n", plainType);
            return httplib::Server::HandlerResponse::Handled;
        }
        return httplib::Server::HandlerResponse::Unhandled;
    });
    server_.Post("/", [this](httplib::Request const& request, httplib::Response& response,
                             httplib::ContentReader const& readContent) {
        answerApi(request, response, readContent);
    });
    server_.Get(R"(/(?:icons/|previews/)?([0-9]{9,10}[._a-z0-9]{1,20}))",
                [this](httplib::Request const& request, httplib::Response& response) {
                    answerMedia(request, response);
                });
}

void Server::Implementation::answerApi(httplib::Request const& request, httplib::Response& response,
                                       httplib::ContentReader const& readContent) {
    std::string body;
    bool const whole = readContent([&body](char const* data, std::size_t size) {
        if (body.size() + size > longestBody_bytes) {
            return false;
        }
        body.append(data, size);
        return true;
    });
    if (!whole) {
        response.set_header("Connection", "close");
        sendText(response, 413, "the request is too large or incomplete\n", plainType);
    } else if (request.get_param_value("page") != "api") {
        sendText(response, 404, "not found\n", plainType);
    } else {
        sendText(response, 200, protocol_.answer(body), jsonType);
    }
}

void Server::Implementation::answerMedia(httplib::Request const& request, httplib::Response& response) {
    std::optional<RenditionName> const name = parseRenditionName(request.matches[1].str());
    std::optional<Clip> const clip = name ? catalogue_->find(name->clipId) : std::nullopt;
    if (!clip) {
        sendText(response, 404, "not found\n", plainType);
        return;
    }
    Renditions::Answer const answer = renditions_.get(*clip, name->kind, options_.renditionPatience);
    switch (answer.state) {
    case Renditions::State::ready:
        sendFile(request, response, answer.file, contentTypeOf(name->kind));
        break;
    case Renditions::State::unavailable:
        sendText(response, 404, "not found\n", plainType);
        break;
    case Renditions::State::pending:
        response.set_header("Retry-After", "2");
        sendText(response, 503, "still being made\n", plainType);
        break;
    }
}

int Server::Implementation::bind(std::string const& address) {
    errno = 0;
    int const port = options_.port == 0                             ? server_.bind_to_any_port(address)
                     : server_.bind_to_port(address, options_.port) ? options_.port
                                                                    : -1;
    if (port <= 0) {
        int const code = errno != 0 ? errno : EADDRINUSE;
        throw std::runtime_error("cannot listen on " + address + " port " + std::to_string(options_.port) +
                                 ": " + std::generic_category().message(code));
    }
    return port;
}

int Server::Implementation::start() {
    int const port = bind(loopbackAddress(options_.host));
    watcher_ = std::jthread([this](std::stop_token const& stop) { watch(stop); });
    {
        std::unique_lock lock(firstScanMutex_);
        (void)firstScanEnded_.wait_for(lock, firstScanPatience, [this] { return firstScanDone_; });
    }
    listener_ = std::thread([this] { server_.listen_after_bind(); });
    // A stop before the library's loop runs would be lost.
    while (!server_.is_running()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return port;
}

void Server::Implementation::stop() {
    if (watcher_.joinable()) {
        watcher_.request_stop();
        watcher_.join();
    }
    if (listener_.joinable()) {
        server_.stop();
        renditions_.cancel();
        connections_.shutDownAll();
        listener_.join();
    }
}

void Server::Implementation::watch(std::stop_token const& stop) {
    scan(Catalogue::Settling::none, stop);
    {
        std::lock_guard const lock(firstScanMutex_);
        firstScanDone_ = true;
    }
    firstScanEnded_.notify_all();
    if (options_.prepareAhead) {
        prepareAll();
    }
    std::mutex pauseMutex;
    std::condition_variable_any pause;
    std::unique_lock lock(pauseMutex);
    auto interval = options_.rescanInterval;
    while (!pause.wait_for(lock, stop, interval, [&stop] { return stop.stop_requested(); })) {
        auto const begin = std::chrono::steady_clock::now();
        scan(Catalogue::Settling::wait, stop);
        // Looking through a very large folder must not keep a processor busy.
        constexpr int restFactor = 20;
        auto const taken =
            std::chrono::ceil<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
        interval = std::max(options_.rescanInterval, taken * restFactor);
    }
}

void Server::Implementation::scan(Catalogue::Settling settling, std::stop_token const& stop) {
    try {
        Catalogue::ScanReport const report = catalogue_->scan(settling, stop);
        if (report.changedClips()) {
            logLine("catalogue: " + std::to_string(report.added) + " clips new or changed, " +
                    std::to_string(report.removed) + " gone");
            if (options_.prepareAhead && settling == Catalogue::Settling::wait) {
                prepareAll();
            }
        }
    } catch (std::exception const& error) {
        logLine(std::string("the footage folder could not be looked through: ") + error.what());
    }
}

void Server::Implementation::prepareAll() {
    try {
        ClipPage const all = catalogue_->search({}, 0, std::numeric_limits<std::int64_t>::max());
        // Everybody sees the thumbnails, few the previews.
        for (RenditionKind const kind :
             {RenditionKind::thumbnail, RenditionKind::preview, RenditionKind::highQualityPreview}) {
            for (Clip const& clip : all.clips) {
                renditions_.prepare(clip, kind);
            }
        }
    } catch (std::exception const& error) {
        logLine(std::string("previews could not be prepared: ") + error.what());
    }
}

Server::Server(ServerOptions options)
    : implementation_(std::make_unique<Implementation>(std::move(options))) {}

Server::~Server() = default;

int Server::start() {
    return implementation_->start();
}

void Server::stop() {
    implementation_->stop();
}

fs::path Server::caFile() const {
    return implementation_->caFile();
}

void Server::rescan() {
    implementation_->rescan();
}

bool Server::addAccount(std::string const& name, std::string const& password, std::int64_t credits) {
    return implementation_->accounts().add(name, password, credits);
}

} // namespace tarn7d
