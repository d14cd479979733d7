#include "apps/tarn7d/Server.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <thread>

#include <httplib.h>
#include <sys/socket.h>

#include "apps/http/ElasticTaskQueue.h"
#include "apps/tarn7d/Accounts.h"
#include "apps/tarn7d/Catalogue.h"
#include "apps/tarn7d/CatalogueWatch.h"
#include "apps/tarn7d/CertificateAuthority.h"
#include "apps/tarn7d/ConnectionRegistry.h"
#include "apps/tarn7d/DataFolder.h"
#include "apps/tarn7d/DownloadAddresses.h"
#include "apps/tarn7d/FaultDesk.h"
#include "apps/tarn7d/FaultPort.h"
#include "apps/tarn7d/FaultyAnswer.h"
#include "apps/tarn7d/FrameQuarryProtocol.h"
#include "apps/tarn7d/Log.h"
#include "apps/tarn7d/MediaResponse.h"
#include "apps/tarn7d/MediaRoutes.h"
#include "apps/tarn7d/PaymentRoutes.h"
#include "apps/tarn7d/Payments.h"
#include "apps/tarn7d/Protocol.h"
#include "apps/tarn7d/Renditions.h"
#include "apps/tarn7d/ServerSetup.h"
#include "apps/tarn7d/Shop.h"

namespace tarn7d {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestBody_bytes = std::size_t{8} << 20;
constexpr std::size_t mostConnections = 256;
constexpr std::chrono::seconds idleConnection{60};
constexpr std::chrono::seconds slowClient{30};
constexpr std::chrono::seconds firstScanPatience{5};

constexpr char const* jsonType = "application/json; charset=utf-8";
constexpr char const* plainType = "text/plain; charset=utf-8";

} // namespace

class Server::Implementation {
public:
    explicit Implementation(ServerOptions options)
        : options_(checkedOptions(std::move(options))), footage_(existingFolder(options_.footage)),
          folder_(dataFolderApart(options_.data, footage_)),
          certificates_(ensureCertificates(folder_.path(), certificateNames(options_))),
          catalogue_(openOrExplain<Catalogue>("catalogue", folder_.path() / "catalogue.db", footage_)),
          accounts_(openOrExplain<Accounts>("accounts", accountsFile())),
          shop_(openOrExplain<Shop>("accounts", accountsFile(), *catalogue_, options_.clock)),
          payments_(openOrExplain<Payments>("accounts", accountsFile(), *catalogue_, options_.paymentLifetime,
                                            options_.clock)),
          downloads_(folder_.path() / "download.key", options_.downloadLifetime, options_.clock),
          frameQuarry_(*catalogue_, "https://" + options_.frameQuarryName, options_.clock),
          renditions_(folder_.path() / "renditions", *catalogue_),
          watch_(*catalogue_, renditions_, options_.rescanInterval,
                 options_.prepareAhead ? CatalogueWatch::Prepare::ahead : CatalogueWatch::Prepare::asked),
          media_(*catalogue_, renditions_, downloads_, options_.renditionPatience), pages_(*payments_),
          faulty_(faults_, connections_), server_([this](SSL_CTX& context) {
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
    void rescan() { watch_.rescan(); }

    [[nodiscard]] fs::path const& caFile() const noexcept { return certificates_.ca; }
    [[nodiscard]] Accounts& accounts() noexcept { return *accounts_; }
    [[nodiscard]] FaultDesk& faults() noexcept { return faults_; }
    [[nodiscard]] std::optional<FaultDeskAddress> faultDesk() const;

private:
    [[nodiscard]] fs::path accountsFile() const { return folder_.path() / "accounts.db"; }
    [[nodiscard]] ServiceParts serviceParts(int port);
    void configure();
    void addRoutes();
    using Expiry = DownloadAddresses::Expiry;
    using GetHandler = std::function<void(httplib::Request const&, httplib::Response&, Expiry)>;
    void get(char const* pattern, GetHandler handler);
    void answerApi(httplib::Request const& request, httplib::Response& response,
                   httplib::ContentReader const& readContent);
    int bind(std::string const& address);

    ServerOptions options_;
    fs::path footage_;
    DataFolder folder_;
    CertificateFiles certificates_;
    std::unique_ptr<Catalogue> catalogue_;
    std::unique_ptr<Accounts> accounts_;
    std::unique_ptr<Shop> shop_;
    std::unique_ptr<Payments> payments_;
    Sessions sessions_;
    SignInThrottle throttle_;
    DownloadAddresses downloads_;
    FrameQuarryProtocol frameQuarry_;
    Renditions renditions_;
    CatalogueWatch watch_;
    MediaRoutes media_;
    PaymentRoutes pages_;
    FaultDesk faults_;
    std::optional<Protocol> protocol_; // from the start on: its addresses may need the port
    ConnectionRegistry connections_;
    FaultyAnswer faulty_;
    std::unique_ptr<FaultPort> faultPort_;
    httplib::SSLServer server_;
    std::thread listener_;
};

ServiceParts Server::Implementation::serviceParts(int port) {
    std::string const server = "https://" + options_.publicName;
    std::string const pages =
        options_.paymentPages == PaymentPages::local ? "https://localhost:" + std::to_string(port) : server;
    return {*catalogue_,
            *accounts_,
            sessions_,
            throttle_,
            *shop_,
            *payments_,
            downloads_,
            server + "/icons/",
            server + "/previews/",
            server,
            pages + "/pay/"};
}

void Server::Implementation::configure() {
    server_.new_task_queue = [] { return new http::ElasticTaskQueue(mostConnections); };
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
        // The library cuts ranges out of any answer by itself, past the end of a short one and also where a
        // precondition says otherwise: it learns of none, and sendFile reads the header. The request is the
        // library's own changeable object.
        const_cast<httplib::Request&>(request).ranges.clear();
        // Without a length the library would read until the client hangs up.
        if (request.method == "POST" && !request.has_header("Content-Length") &&
            !request.has_header("Transfer-Encoding")) {
            response.set_header("Connection", "close");
            sendText(response, 411, "a length is needed\n", plainType);
            return httplib::Server::HandlerResponse::Handled;
        }
        if (request.path == FrameQuarryProtocol::searchPath && request.method != "GET" &&
            request.method != "HEAD") {
            response.set_header("Allow", "GET, HEAD");
            response.set_header("Connection", "close"); // a body may follow, which nobody reads
            sendText(response, 405, "only GET and HEAD\n", plainType);
            return httplib::Server::HandlerResponse::Handled;
        }
        return httplib::Server::HandlerResponse::Unhandled;
    });
    server_.Post("/", [this](httplib::Request const& request, httplib::Response& response,
                             httplib::ContentReader const& readContent) {
        answerApi(request, response, readContent);
    });
    get(FrameQuarryProtocol::searchPath.data(), [this](httplib::Request const& request,
                                                       httplib::Response& response, Expiry expiry) {
        std::size_t const path = std::min(request.target.find('?'), request.target.size());
        std::size_t const query = std::min(path + 1, request.target.size());
        response.set_header("Cache-Control", "no-store"); // the address holds a signature
        sendText(response, 200, frameQuarry_.answerSearch(request.target.substr(query), expiry), jsonType);
    });
    get(R"(/(?:icons/|previews/)?([0-9]{9,10}[._a-z0-9]{1,20}))",
        [this](httplib::Request const& request, httplib::Response& response, Expiry expiry) {
            media_.answerRendition(request.matches[1].str(), request, response, expiry);
        });
    get("/full/.*", [this](httplib::Request const& request, httplib::Response& response, Expiry expiry) {
        media_.answerFull(request, response, expiry);
    });
    get("/pay/([^/]*)", [this](httplib::Request const& request, httplib::Response& response, Expiry) {
        pages_.showForm(request.matches[1].str(), response);
    });
    get("/pay/([^/]*)/receipt", [this](httplib::Request const& request, httplib::Response& response, Expiry) {
        pages_.showReceipt(request.matches[1].str(), response);
    });
    server_.Post("/pay/([^/]*)", [this](httplib::Request const& request, httplib::Response& response) {
        faulty_.answer(request, response, {},
                       [&](Expiry) { pages_.pay(request.matches[1].str(), request, response); });
    });
}

void Server::Implementation::get(char const* pattern, GetHandler handler) {
    server_.Get(pattern, [this, handler = std::move(handler)](httplib::Request const& request,
                                                              httplib::Response& response) {
        faulty_.answer(request, response, {}, [&](Expiry expiry) { handler(request, response, expiry); });
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
        std::vector<std::string> const words =
            faults_.hasCommandRules() ? Protocol::commandWords(body) : std::vector<std::string>();
        faulty_.answer(request, response, words, [&](Expiry expiry) {
            sendText(response, 200, protocol_->answer(body, expiry), jsonType);
        });
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
    protocol_.emplace(serviceParts(port));
    if (options_.faultDesk) {
        faultPort_ = std::make_unique<FaultPort>(faults_);
    }
    watch_.start(firstScanPatience);
    listener_ = std::thread([this] { server_.listen_after_bind(); });
    // A stop before the library's loop runs would be lost.
    while (!server_.is_running()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return port;
}

void Server::Implementation::stop() {
    watch_.stop();
    if (listener_.joinable()) {
        faultPort_.reset();
        faults_.end();
        server_.stop();
        renditions_.cancel();
        connections_.shutDownAll();
        listener_.join();
    }
}

std::optional<FaultDeskAddress> Server::Implementation::faultDesk() const {
    return faultPort_ ? std::optional(FaultDeskAddress{faultPort_->port(), faultPort_->token()})
                      : std::nullopt;
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

FaultDesk& Server::faults() {
    return implementation_->faults();
}

std::optional<FaultDeskAddress> Server::faultDesk() const {
    return implementation_->faultDesk();
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
