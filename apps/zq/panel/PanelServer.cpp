#include "apps/zq/panel/PanelServer.h"

#include <atomic>
#include <list>
#include <mutex>

#include <httplib.h>

#include "apps/http/LoopbackServer.h"
#include "apps/zq/MemoryBlock.h"
#include "apps/zq/Reply.h"
#include "apps/zq/panel/Access.h"
#include "apps/zq/panel/HttpResponse.h"
#include "apps/zq/panel/RouteTable.h"
#include "host/engine/json/SimdjsonReader.h"
#include "host/engine/os/TaskContext.h"
#include "host/log/Log.h"
#include "host/modules/ModuleThreads.h"

namespace zq::panel {

namespace {

// Handlers read previews and the like through modules, and wait for them as a task that the end cancels.
class TaskServer final : public http::LoopbackServer {
public:
    TaskServer() : LoopbackServer(Limits()) {}
    ~TaskServer() override { endWithTasks(); }

    void endWithTasks() {
        {
            std::lock_guard const lock(mutex_);
            ending_ = true;
            for (engine::TaskState& task : tasks_) {
                task.cancel();
            }
        }
        end();
    }

private:
    bool process_and_close_socket(socket_t socket) override {
        Zq::ThreadAttachment const thread;
        std::list<engine::TaskState> own(1);
        engine::ScopedTask const scope(own.front());
        auto const place = own.begin();
        {
            std::lock_guard const lock(mutex_);
            if (ending_) {
                place->cancel();
            }
            tasks_.splice(tasks_.end(), own);
        }
        bool const served = LoopbackServer::process_and_close_socket(socket);
        std::lock_guard const lock(mutex_);
        own.splice(own.end(), tasks_, place);
        return served;
    }

    std::mutex mutex_;
    std::list<engine::TaskState> tasks_; // of the connections
    bool ending_ = false;
};

int bindFirst(TaskServer& server, std::vector<int> const& preferred, int otherwise) {
    for (int const port : preferred) {
        try {
            return server.bind(port);
        } catch (std::runtime_error const&) {
            continue; // taken: the next one may be free
        }
    }
    return server.bind(otherwise);
}

constexpr std::string_view fromPage = "page"; // in the query of an entry

bool takesBody(std::string const& method) {
    return method == "POST" || method == "PUT" || method == "PATCH" || method == "DELETE";
}

// An empty text is an object without members. Null for what is no object.
Zq::Ptr<JSON::Element> parseObject(std::string const& text) {
    std::string const json = text.empty() ? "{}" : text;
    std::size_t const first = json.find_first_not_of(" \t\r\n");
    // The host's own reader would have its listeners take a page's request for an answer of a service.
    return first != std::string::npos && json[first] == '{'
               ? engine::SimdjsonReader().parse(MemoryBlock(json))
               : nullptr;
}

std::uint64_t lastEventOf(httplib::Request const& request) {
    // A browser says the first by itself; a page that begins a new stream cannot, and says the second.
    std::string const header = request.get_header_value("Last-Event-ID");
    std::string const text = header.empty() ? request.get_param_value("since") : header;
    bool const isNumber =
        !text.empty() && text.size() <= 18 && text.find_first_not_of("0123456789") == std::string::npos;
    return isNumber ? std::stoull(text) : 0;
}

} // namespace

class PanelServer::Implementation {
public:
    Implementation(Routes routes, WebFiles files, int port, std::vector<int> const& preferred)
        : files_(std::move(files)), port_(bindFirst(server_, preferred, port)), access_(port_),
          table_(withOwn(std::move(routes))) {
        configure();
        server_.start();
    }
    // Before what the handlers use goes.
    ~Implementation() { end(); }
    Implementation(Implementation const&) = delete;
    Implementation& operator=(Implementation const&) = delete;

    void end() { server_.endWithTasks(); }
    [[nodiscard]] int port() const noexcept { return port_; }
    [[nodiscard]] std::string address() const { return access_.address(); }
    [[nodiscard]] bool wasPageUsed() const noexcept { return pageUsed_; }
    [[nodiscard]] Routes const& routes() const noexcept { return table_.routes(); }

private:
    [[nodiscard]] Routes withOwn(Routes routes) const;
    [[nodiscard]] Response enter(Request const& request) const;
    void configure();
    // What is known of a request without its body. True when it is answered.
    bool answerHead(httplib::Request const& request, httplib::Response& answer) const;
    void answerWithBody(httplib::Request const& request, httplib::Response& answer,
                        httplib::ContentReader const& read) const;
    void answer(httplib::Request const& request, httplib::Response& answer, std::string const& body) const;

    WebFiles const files_;
    TaskServer server_;
    int const port_;
    Access const access_;
    std::atomic<bool> mutable pageUsed_{false};
    RouteTable const table_;
};

Routes PanelServer::Implementation::withOwn(Routes routes) const {
    routes.push_back({"GET", std::string(Access::enterPath), [this](Request const& r) { return enter(r); }});
    routes.push_back({"GET", "/", [this](Request const&) { return files_.page(); }});
    routes.push_back(
        {"GET", "/assets/{file}", [this](Request const& r) { return files_.asset(r.captures.front()); }});
    return routes;
}

Response PanelServer::Implementation::enter(Request const& request) const {
    auto const token = request.query.find("token");
    if (token == request.query.end() || !access_.isToken(token->second)) {
        throw ApiError(ErrorCode::notEntered, "open the address that \"zq panel\" has printed");
    }
    if (request.query.contains(fromPage)) {
        pageUsed_ = true;
    }
    // No redirect: a browser that another page has sent would not take the cookie along it.
    Response response = files_.page();
    Entry const entry = request.inForeignFrame ? Entry::frame : Entry::window;
    response.body = access_.pageFor(entry, std::move(response.body));
    response.headers = {{"Set-Cookie", access_.cookie()}};
    return response;
}

void PanelServer::Implementation::configure() {
    server_.set_pre_routing_handler([this](httplib::Request const& request, httplib::Response& answer) {
        // The request is the library's own changeable object. Of ranges and compression the library learns
        // nothing: it would cut and press any answer by itself. Its routes are those of the methods alone.
        auto& own = const_cast<httplib::Request&>(request);
        own.ranges.clear();
        own.headers.erase("Accept-Encoding");
        own.path.assign(1, '/'); // g++ 12 warns of the text in its place without reason
        return answerHead(request, answer) ? httplib::Server::HandlerResponse::Handled
                                           : httplib::Server::HandlerResponse::Unhandled;
    });
    auto const withBody = [this](httplib::Request const& request, httplib::Response& response,
                                 httplib::ContentReader const& read) {
        answerWithBody(request, response, read);
    };
    server_.Post("/", withBody);
    server_.Put("/", withBody);
    server_.Patch("/", withBody);
    server_.Delete("/", withBody);
    server_.set_exception_handler(
        [](httplib::Request const&, httplib::Response& response, std::exception_ptr const&) {
            Log("panel: a request failed with something that is no error");
            sendError(response, ErrorCode::internal, rowOf(ErrorCode::internal).status,
                      "the program failed; its log says why");
        });
    // What the library itself refuses, as it is no HTTP, has no body yet.
    server_.set_error_handler([](httplib::Request const&, httplib::Response& response) {
        if (response.body.empty() && !response.has_header("Content-Type")) {
            http::LoopbackServer::closeAfterAnswer();
            sendError(response, ErrorCode::badRequest, response.status, "the request cannot be read");
        }
    });
    server_.set_post_routing_handler([](httplib::Request const&, httplib::Response& response) {
        addSecurityHeaders(response);
        response.headers.erase("Keep-Alive"); // tells the library's times, which are not used
    });
}

bool PanelServer::Implementation::answerHead(httplib::Request const& request,
                                             httplib::Response& response) const {
    std::optional<Refusal> refused = access_.judge(request);
    if (!refused && hasBody(request) && !takesBody(request.method)) {
        refused = {ErrorCode::badRequest, rowOf(ErrorCode::badRequest).status, "this method takes no body"};
    }
    if (refused) {
        if (hasBody(request)) {
            http::LoopbackServer::closeAfterAnswer(); // nobody reads it
        }
        sendError(response, refused->code, refused->status, refused->text);
        return true;
    }
    if (hasBody(request)) {
        return false;
    }
    answer(request, response, {});
    return true;
}

void PanelServer::Implementation::answerWithBody(httplib::Request const& request, httplib::Response& response,
                                                 httplib::ContentReader const& read) const {
    std::string body;
    bool tooLarge = false;
    bool const whole = read([&](char const* data, std::size_t size) {
        tooLarge = body.size() + size > Access::longestBody_bytes;
        if (!tooLarge) {
            body.append(data, size);
        }
        return !tooLarge;
    });
    if (!whole) {
        http::LoopbackServer::closeAfterAnswer();
        ErrorCode const code = tooLarge ? ErrorCode::tooLarge : ErrorCode::badRequest;
        sendError(response, code, rowOf(code).status,
                  tooLarge ? "a request's body has 64 KiB at most" : "the body did not arrive");
        return;
    }
    answer(request, response, body);
}

void PanelServer::Implementation::answer(httplib::Request const& request, httplib::Response& response,
                                         std::string const& body) const {
    std::string_view const target = request.target;
    std::size_t const question = std::min(target.find('?'), target.size());
    RouteTable::Match match;
    try {
        Request own;
        own.body = parseObject(body);
        if (!own.body) {
            throw ApiError(ErrorCode::notJson, "a request's body is a JSON object");
        }
        match = table_.find(request.method, target.substr(0, question));
        if (match.route == nullptr && match.allowed.empty()) {
            throw ApiError(ErrorCode::notFound, "there is no such address");
        }
        if (match.route == nullptr) {
            response.set_header("Allow", match.allowed);
            throw ApiError(ErrorCode::notAllowed, "this address takes " + match.allowed + " only");
        }
        own.captures = std::move(match.captures);
        own.query = parseQuery(target.substr(std::min(question + 1, target.size())));
        own.lastEvent = lastEventOf(request);
        own.inForeignFrame = entryOf(request) == Entry::frame;
        sendResponse(request, match.route->handler(own), response);
    } catch (ApiError const& error) {
        sendError(response, error.code(), rowOf(error.code()).status, error.what(), error.reason());
    } catch (ReasonedError const& error) {
        sendError(response, ErrorCode::failed, rowOf(ErrorCode::failed).status, error.what(), error.reason());
    } catch (CommandError const& error) {
        sendError(response, ErrorCode::failed, rowOf(ErrorCode::failed).status, error.what());
    } catch (std::exception const& error) {
        // Not the target, which holds what a person has typed.
        std::string const what =
            match.route != nullptr ? match.route->method + " " + match.route->pattern : "";
        Log("panel: a request failed: %s: %s", what.c_str(), error.what());
        sendError(response, ErrorCode::internal, rowOf(ErrorCode::internal).status,
                  "the program failed; its log says why");
    }
}

PanelServer::PanelServer(Routes routes, WebFiles files, int port, std::vector<int> const& preferred)
    : implementation_(
          std::make_unique<Implementation>(std::move(routes), std::move(files), port, preferred)) {}

PanelServer::~PanelServer() = default;

int PanelServer::port() const noexcept {
    return implementation_->port();
}

std::string PanelServer::address() const {
    return implementation_->address();
}

std::string PanelServer::addressForPage() const {
    return address() + "&" + std::string(fromPage) + "=1";
}

bool PanelServer::wasPageUsed() const noexcept {
    return implementation_->wasPageUsed();
}

Routes const& PanelServer::routes() const noexcept {
    return implementation_->routes();
}

void PanelServer::end() {
    implementation_->end();
}

} // namespace zq::panel
