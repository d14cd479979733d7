#include "apps/tarn7d/FaultPort.h"

#include <chrono>
#include <stdexcept>
#include <thread>

#include <httplib.h>

#include "apps/http/ElasticTaskQueue.h"
#include "apps/tarn7d/JsonText.h"
#include "apps/tarn7d/MediaResponse.h"
#include "apps/tarn7d/PasswordHash.h"
#include "host/engine/crypto/Digest.h"

namespace tarn7d {

namespace {

constexpr std::size_t longestBody_bytes = std::size_t{1} << 20;
constexpr std::size_t mostConnections = 16;
constexpr std::size_t tokenBytes = 16;
constexpr char const* jsonType = "application/json; charset=utf-8";

void sendProblem(httplib::Response& response, int status, std::string const& problem) {
    JSON::Builder builder;
    builder.startChild(nullptr);
    addText(builder, "error", problem);
    builder.endChild();
    sendText(response, status, jsonText(builder), jsonType);
}

} // namespace

class FaultPort::Implementation {
public:
    explicit Implementation(FaultDesk& desk) : desk_(desk), token_(engine::randomHex(tokenBytes)) {
        server_.new_task_queue = [] { return new http::ElasticTaskQueue(mostConnections); };
        server_.set_payload_max_length(longestBody_bytes);
        // An idle connection would hold up the end.
        server_.set_keep_alive_max_count(1);
        addRoutes();
        port_ = server_.bind_to_any_port("127.0.0.1");
        if (port_ <= 0) {
            throw std::runtime_error("cannot listen for the fault desk");
        }
        listener_ = std::thread([this] { server_.listen_after_bind(); });
        // A stop before the library's loop runs would be lost.
        while (!server_.is_running()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    ~Implementation() {
        server_.stop();
        listener_.join();
    }
    Implementation(Implementation const&) = delete;
    Implementation& operator=(Implementation const&) = delete;

    [[nodiscard]] int port() const noexcept { return port_; }
    [[nodiscard]] std::string const& token() const noexcept { return token_; }

private:
    void addRoutes();
    void add(std::string const& body, httplib::Response& response);
    void list(httplib::Response& response) const;

    FaultDesk& desk_;
    std::string const token_;
    httplib::Server server_;
    int port_ = 0;
    std::thread listener_;
};

void FaultPort::Implementation::addRoutes() {
    server_.set_pre_routing_handler([this](httplib::Request const& request, httplib::Response& response) {
        if (!equalInConstantTime(request.get_header_value("Authorization"), "Bearer " + token_)) {
            sendProblem(response, 401, "the token is missing or wrong");
            response.set_header("WWW-Authenticate", "Bearer");
            return httplib::Server::HandlerResponse::Handled;
        }
        return httplib::Server::HandlerResponse::Unhandled;
    });
    server_.Post("/faults", [this](httplib::Request const& request, httplib::Response& response) {
        add(request.body, response);
    });
    server_.Get("/faults", [this](httplib::Request const&, httplib::Response& response) { list(response); });
    server_.Delete("/faults", [this](httplib::Request const&, httplib::Response& response) {
        desk_.clear();
        response.status = 204;
    });
}

void FaultPort::Implementation::add(std::string const& body, httplib::Response& response) {
    FaultRules parsed = parseFaultRules(body);
    if (!parsed.problem.empty()) {
        sendProblem(response, 400, parsed.problem);
        return;
    }
    for (FaultRule& rule : parsed.rules) {
        (void)desk_.add(std::move(rule));
    }
    list(response);
    response.status = 201;
}

void FaultPort::Implementation::list(httplib::Response& response) const {
    JSON::Builder builder;
    builder.startChild(nullptr);
    builder.startArray("faults");
    for (FaultDesk::Entry const& entry : desk_.list()) {
        builder.startChild(nullptr);
        addInteger(builder, "id", entry.id);
        writeFaultRule(entry.rule, builder);
        addInteger(builder, "left", entry.left);
        addInteger(builder, "met", entry.met);
        builder.endChild();
    }
    builder.endArray();
    builder.endChild();
    sendText(response, 200, jsonText(builder), jsonType);
}

FaultPort::FaultPort(FaultDesk& desk) : implementation_(std::make_unique<Implementation>(desk)) {}

FaultPort::~FaultPort() = default;

int FaultPort::port() const noexcept {
    return implementation_->port();
}

std::string const& FaultPort::token() const noexcept {
    return implementation_->token();
}

} // namespace tarn7d
