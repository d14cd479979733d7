#include "apps/zq/panel/Access.h"

#include <algorithm>
#include <charconv>

#include <openssl/crypto.h>
#include <strings.h>

#include "host/engine/crypto/Digest.h"

namespace zq::panel {

namespace {

constexpr std::size_t secret_bytes = 32;

bool isSame(std::string_view a, std::string_view b) {
    return a.size() == b.size() && CRYPTO_memcmp(a.data(), b.data(), a.size()) == 0;
}

Refusal refusal(ErrorCode code, std::string text) {
    return {code, rowOf(code).status, std::move(text)};
}

// The value of a header that stands there once; nothing where it stands there never or more often.
std::optional<std::string> single(httplib::Request const& request, char const* name) {
    return request.get_header_value_count(name) == 1 ? std::optional(request.get_header_value(name))
                                                     : std::nullopt;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    std::size_t const first = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(first, text.find_last_not_of(blanks) + 1 - first);
}

bool changesSomething(httplib::Request const& request) {
    return request.method != "GET" && request.method != "HEAD";
}

bool isSameOrigin(httplib::Request const& request, std::string const& host) {
    bool const sameOrigin = single(request, "Origin") == "http://" + host;
    bool const saysSo =
        !request.has_header("Sec-Fetch-Site") || single(request, "Sec-Fetch-Site") == "same-origin";
    return sameOrigin && saysSo;
}

// A browser says where a request comes from; what says nothing is no browser, or an old one.
bool saysOwnOrNobody(httplib::Request const& request) {
    if (!request.has_header("Sec-Fetch-Site")) {
        return true;
    }
    std::optional<std::string> const site = single(request, "Sec-Fetch-Site");
    return site == "same-origin" || site == "none"; // nobody: a person has typed the address
}

bool isJson(httplib::Request const& request) {
    std::optional<std::string> const type = single(request, "Content-Type");
    if (!type || request.has_header("Content-Encoding")) {
        return false;
    }
    std::string const plain(trimmed(std::string_view(*type).substr(0, type->find(';'))));
    return ::strcasecmp(plain.c_str(), "application/json") == 0;
}

std::optional<Refusal> judgeBody(httplib::Request const& request) {
    constexpr int unsupportedMediaType = 415;
    if (!isJson(request)) {
        return Refusal{ErrorCode::notJson, unsupportedMediaType, "a request's body is application/json"};
    }
    bool const inChunks = request.has_header("Transfer-Encoding");
    if (inChunks) {
        std::optional<std::string> const encoding = single(request, "Transfer-Encoding");
        bool const plain = encoding && ::strcasecmp(encoding->c_str(), "chunked") == 0;
        // Two lengths at once are read differently by different programs.
        if (!plain || request.has_header("Content-Length")) {
            return refusal(ErrorCode::badRequest, "the length of the body is not clear");
        }
        return std::nullopt;
    }
    std::string const length = single(request, "Content-Length").value_or("");
    std::uint64_t size = 0;
    auto const [end, error] = std::from_chars(length.data(), length.data() + length.size(), size);
    if (error == std::errc::result_out_of_range ||
        (error == std::errc() && size > Access::longestBody_bytes)) {
        return refusal(ErrorCode::tooLarge, "a request's body has 64 KiB at most");
    }
    if (error != std::errc() || end != length.data() + length.size()) {
        return refusal(ErrorCode::badRequest, "the length of the body is not clear");
    }
    return std::nullopt;
}

} // namespace

bool hasBody(httplib::Request const& request) {
    return request.has_header("Transfer-Encoding") ||
           (request.has_header("Content-Length") && single(request, "Content-Length") != "0");
}

Entry entryOf(httplib::Request const& request) {
    constexpr std::string_view frames[] = {"embed", "fencedframe", "frame", "iframe", "object"};
    bool const isFrame =
        request.has_header("Sec-Fetch-Dest") &&
        std::ranges::find(frames, single(request, "Sec-Fetch-Dest").value_or("frame")) != std::end(frames);
    return isFrame && !saysOwnOrNobody(request) ? Entry::frame : Entry::window;
}

Access::Access(int port)
    : port_(std::to_string(port)), token_(engine::randomHex(secret_bytes)),
      secret_(engine::randomHex(secret_bytes)), key_(engine::randomHex(secret_bytes)),
      frameKey_(engine::randomHex(secret_bytes)) {}

std::string Access::address() const {
    return "http://127.0.0.1:" + port_ + std::string(enterPath) + "?token=" + token_;
}

bool Access::isToken(std::string_view text) const {
    return isSame(text, token_);
}

std::string Access::cookie() const {
    return "zq-panel-" + port_ + "=" + secret_ + "; HttpOnly; SameSite=Strict; Path=/";
}

std::string Access::addressFor(Entry entry) const {
    return entry == Entry::frame ? "/?frame=" + frameKey_ : "/";
}

// As data in its head: scripts in a page are forbidden, and an address would be kept by the browser.
std::string Access::pageFor(Entry entry, std::string page) const {
    constexpr std::string_view head = "<head>";
    std::size_t const at = page.find(head);
    std::string const data = "<meta name=\"zq-panel-key\" content=\"" + key_ +
                             "\"><meta name=\"zq-panel-address\" content=\"" + addressFor(entry) + "\">";
    page.insert(at != std::string::npos ? at + head.size() : page.size(), data);
    return page;
}

bool Access::isOwnHost(std::string_view host) const {
    return host == "127.0.0.1:" + port_ || host == "localhost:" + port_;
}

bool Access::hasKey(httplib::Request const& request) const {
    std::optional<std::string> const key = single(request, keyHeader);
    return key && isSame(*key, key_);
}

bool Access::hasCookie(httplib::Request const& request) const {
    std::string const name = "zq-panel-" + port_;
    // Other programs of this machine may set cookies of the same name: any one that is right will do.
    bool found = false;
    for (std::size_t i = 0; i < request.get_header_value_count("Cookie"); ++i) {
        std::string const header = request.get_header_value("Cookie", i);
        std::string_view rest = header;
        while (!rest.empty()) {
            std::string_view const pair = trimmed(rest.substr(0, rest.find(';')));
            rest.remove_prefix(std::min(rest.size(), std::min(rest.find(';'), rest.size()) + 1));
            std::size_t const equals = std::min(pair.find('='), pair.size());
            found = (pair.substr(0, equals) == name && equals < pair.size() &&
                     isSame(pair.substr(equals + 1), secret_)) ||
                    found;
        }
    }
    return found;
}

// Other pages may lead to the panel, and may hold it in a frame where they know the token. What else they ask
// for would come with the cookie when they are of another port of this machine, which is no other site.
bool Access::mayRead(httplib::Request const& request, std::string_view path) const {
    if (saysOwnOrNobody(request) || path == enterPath) {
        return true;
    }
    bool const leads = path == "/" && single(request, "Sec-Fetch-Mode") == "navigate";
    return leads && (entryOf(request) == Entry::window || isSame(request.target, addressFor(Entry::frame)));
}

std::optional<Refusal> Access::judge(httplib::Request const& request) const {
    std::optional<std::string> const host = single(request, "Host");
    if (!host || !isOwnHost(*host)) {
        return refusal(ErrorCode::wrongHost, "the panel is at 127.0.0.1:" + port_ + " only");
    }
    std::string_view const path = std::string_view(request.target).substr(0, request.target.find('?'));
    if (path != enterPath && !hasCookie(request)) {
        return refusal(ErrorCode::notEntered, "open the address that \"zq panel\" has printed");
    }
    bool const isOwnPage =
        changesSomething(request) ? isSameOrigin(request, *host) && hasKey(request) : mayRead(request, path);
    if (!isOwnPage) {
        return refusal(ErrorCode::foreignOrigin, "the request does not come from the panel's own page");
    }
    if (hasBody(request)) {
        if (std::optional<Refusal> refused = judgeBody(request)) {
            return refused;
        }
    }
    return std::nullopt;
}

} // namespace zq::panel
