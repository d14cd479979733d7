#include "host/engine/network/ServerAddress.h"

#include <algorithm>
#include <charconv>

#include "host/engine/network/PercentEncoding.h"
#include "host/text/Unicode.h"

namespace engine {

namespace {

constexpr std::uint16_t httpPort = 80;
constexpr std::uint16_t httpsPort = 443;
constexpr std::size_t longestHost = 255;

std::uint16_t ownPort(bool secure) {
    return secure ? httpsPort : httpPort;
}

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' || c == '_';
}

bool isAddressCharacter(char c) {
    return (c >= 'a' && c <= 'f') || (c >= '0' && c <= '9') || c == ':' || c == '.';
}

bool isHost(std::string_view host) {
    if (host.size() > longestHost) {
        return false;
    }
    if (host.starts_with('[')) {
        return host.size() > 3 && host.ends_with(']') &&
               std::ranges::all_of(host.substr(1, host.size() - 2), isAddressCharacter);
    }
    return !host.empty() && host != "." && std::ranges::all_of(host, isNameCharacter);
}

std::optional<std::uint16_t> portOf(std::string_view digits) {
    std::uint16_t port = 0;
    auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    bool const whole = result.ec == std::errc() && result.ptr == digits.data() + digits.size();
    return whole && port != 0 ? std::optional(port) : std::nullopt;
}

bool takeScheme(std::string_view& url, std::string_view scheme) {
    auto const equal = [](char a, char b) { return lowered(a) == b; };
    if (url.size() < scheme.size() || !std::ranges::equal(url.substr(0, scheme.size()), scheme, equal)) {
        return false;
    }
    url.remove_prefix(scheme.size());
    return true;
}

} // namespace

std::optional<ServerAddress> ServerAddress::of(HTTPConnectionInfo const& info) {
    return parse(toUTF8(info.server).view(), info.port, info.secure != 0);
}

std::optional<ServerAddress> ServerAddress::parse(std::string_view server, std::int32_t port, bool secure) {
    ServerAddress address;
    address.secure = secure;
    address.port = ownPort(secure);
    std::size_t const bracket = server.rfind(']');
    std::size_t const colon = server.find(':', bracket != std::string_view::npos ? bracket : 0);
    if (colon != std::string_view::npos) {
        std::optional<std::uint16_t> const written = portOf(server.substr(colon + 1));
        if (!written) {
            return std::nullopt;
        }
        address.port = *written;
        server = server.substr(0, colon);
    }
    if (port < 0 || port > 0xffff) {
        return std::nullopt;
    }
    if (port != 0) {
        address.port = static_cast<std::uint16_t>(port);
    }
    address.host.resize(server.size());
    std::ranges::transform(server, address.host.begin(), lowered);
    return isHost(address.host) ? std::optional(address) : std::nullopt;
}

std::optional<ServerAddress> ServerAddress::ofUrl(std::string_view url) {
    bool const secure = takeScheme(url, "https://");
    if (!secure && !takeScheme(url, "http://")) {
        return std::nullopt;
    }
    return parse(url.substr(0, url.find_first_of("/?#\\")), 0, secure);
}

std::string ServerAddress::name() const {
    return host + ':' + std::to_string(port);
}

std::string ServerAddress::origin() const {
    return (secure ? "https://" : "http://") + (port == ownPort(secure) ? host : name());
}

std::string ServerAddress::url(WideString const& path) const {
    std::string const encoded = encodePath(path);
    return origin() + (encoded.starts_with('/') ? "" : "/") + encoded;
}

} // namespace engine
