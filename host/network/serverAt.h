// The server of a parsed address.
#pragma once

#include "host/network/OSPrivate.h"
#include "host/web/ParsedURI.h"

// A connection of its own to the server that the address names, with nothing of an account; null for an
// address that is not valid, and where no server can be made from it. Connects nothing yet. Thread: any.
[[nodiscard]] inline Zq::Ptr<iHTTPServer> serverAt(ParsedURI const& address) {
    if (!address.valid()) {
        return {};
    }
    HTTPConnectionInfo info;
    info.server = address.server;
    info.secure = address.secure;
    return OSPrivate().network().createHTTPServer(info);
}
