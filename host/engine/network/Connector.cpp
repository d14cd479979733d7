#include "host/engine/network/Connector.h"

#include <algorithm>
#include <new>
#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#endif

#include "host/engine/network/CurlOption.h"

namespace engine {

namespace {

void startLibrary() {
    static CURLcode const started = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (started != CURLE_OK) {
        throw std::runtime_error("libcurl does not start");
    }
}

// A program that the host starts, such as a browser, must not hold the host's connections open.
int closeOnExec([[maybe_unused]] void* context, [[maybe_unused]] curl_socket_t socket, curlsocktype) {
#ifndef _WIN32
    fcntl(socket, F_SETFD, FD_CLOEXEC);
#endif
    return CURL_SOCKOPT_OK;
}

// "host:port" with both parts written; the port of a name without one is unknown here.
std::optional<ServerAddress> endpoint(std::string const& text) {
    std::size_t const colon = text.rfind(':');
    bool const hasPort = colon != std::string::npos && text.find(']', colon) == std::string::npos;
    return hasPort ? ServerAddress::parse(text, 0, true) : std::nullopt;
}

std::string printable(std::string text) {
    std::ranges::replace_if(
        text, [](char c) { return (c >= 0 && c < 0x20) || c == 0x7f; }, ' ');
    return text;
}

} // namespace

void append(HeaderList& list, std::string const& line) {
    curl_slist* const longer = curl_slist_append(list.get(), line.c_str());
    if (longer == nullptr) {
        throw std::bad_alloc();
    }
    (void)list.release();
    list.reset(longer);
}

Connector::Connector(NetworkSettings settings)
    : settings_((startLibrary(), std::move(settings))), trust_(settings_.caFile) {
    if (!trust_.problem().empty()) {
        problems_.push_back(trust_.problem());
    }
    for (auto const& [name, target] : settings_.connect) {
        std::optional<ServerAddress> const from = endpoint(name);
        std::optional<ServerAddress> const to = endpoint(target);
        if (!from || !to) {
            problems_.push_back(
                printable("[network] connect needs \"host:port\" on both sides: " + name + " = " + target));
            continue;
        }
        append(connectTo_, from->name() + ':' + to->name());
        redirected_.push_back(from->name());
    }
}

void Connector::configure(CURL* easy) const {
    setOption(easy, CURLOPT_NOSIGNAL, 1L);
    setOption(easy, CURLOPT_PROTOCOLS_STR, "http,https");
    setOption(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    setOption(easy, CURLOPT_FOLLOWLOCATION, 0L);
    setOption(easy, CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
    setOption(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    setOption(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    setOption(easy, CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
    setOption(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(settings_.connectTimeout.count()));
    setOption(easy, CURLOPT_TCP_NODELAY, 1L);
    setOption(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    setOption(easy, CURLOPT_SOCKOPTFUNCTION, &closeOnExec);
    // A transfer that is given up while a name is being looked up does not wait for the end of that.
    setOption(easy, CURLOPT_QUICK_EXIT, 1L);
    if (connectTo_) {
        setOption(easy, CURLOPT_CONNECT_TO, connectTo_.get());
    }
    trust_.use(easy);
}

void Connector::chooseProxy(CURL* easy, ServerAddress const& server) const {
    if (!settings_.proxy.empty()) {
        setOption(easy, CURLOPT_PROXY, settings_.proxy.c_str());
    } else if (std::ranges::find(redirected_, server.name()) != redirected_.end()) {
        setOption(easy, CURLOPT_PROXY, "");
    } else {
        setOption(easy, CURLOPT_PROXY, nullptr);
    }
}

std::string Connector::explain(CURLcode code, std::string const& detail, bool connected,
                               ServerAddress const& server) const {
    std::string const reason = printable(detail.empty() ? curl_easy_strerror(code) : detail);
    std::string const name = server.name();
    switch (code) {
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_CONNECT:
        // With a proxy it is the proxy that did not answer.
        return "could not connect to " + name + ": " + reason + "; check [network] " +
               (settings_.proxy.empty() ? "connect" : "proxy") + " in host.toml";
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_PROXY:
        return "could not connect to " + name + " through the proxy: " + reason +
               "; check [network] proxy in host.toml";
    case CURLE_PEER_FAILED_VERIFICATION:
        return "the certificate of " + name + " is not accepted: " + reason +
               "; if the server is the right one, name the authority of its certificate as [network] ca_file "
               "in host.toml";
    case CURLE_OPERATION_TIMEDOUT:
        return connected ? name + " was silent for too long"
                         : "could not connect to " + name + " in time; check [network] connect in host.toml";
    case CURLE_PARTIAL_FILE:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
        return "the answer of " + name + " was cut short: " + reason;
    default:
        return "no answer from " + name + ": " + reason;
    }
}

} // namespace engine
