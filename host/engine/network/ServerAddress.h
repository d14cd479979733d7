// The address of one server: scheme, host and port.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/network/iHTTPServer.h"

namespace engine {

struct ServerAddress {
    std::string host; // lower-case name, or address; an IPv6 address in brackets
    std::uint16_t port = 0;
    bool secure = false;

    // Nothing for an empty server, a port out of range and for characters that belong in no host name, such
    // as blanks, control characters, "/" and "@". Names outside ASCII are to be given in their ASCII form.
    [[nodiscard]] static std::optional<ServerAddress> of(HTTPConnectionInfo const& info);
    // `server` may carry a port; `port` 0 means that one, or the scheme's own.
    [[nodiscard]] static std::optional<ServerAddress> parse(std::string_view server, std::int32_t port,
                                                            bool secure);
    // The server of an http or https address; nothing for any other address and where user info is given.
    [[nodiscard]] static std::optional<ServerAddress> ofUrl(std::string_view url);

    [[nodiscard]] std::string name() const;   // "host:port", the port always written
    [[nodiscard]] std::string origin() const; // "https://host:port", without the scheme's own port
    // The address of a path of this server, with or without a leading "/"; "?q" becomes "/?q".
    [[nodiscard]] std::string url(WideString const& path) const;

    [[nodiscard]] bool operator==(ServerAddress const&) const = default;
};

} // namespace engine
