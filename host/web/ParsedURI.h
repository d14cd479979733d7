// An address taken apart: a plain URL, or a virtual path such as "Virtual:T7 https://host/a/b.mov?q".
#pragma once

#include <cstdint>

#include "host/text/LightweightString.h"

struct ParsedURI {
    WideString server;       // with the port if one is written
    WideString path;         // from the first "/", with the query; "/" where the address has none
    std::uint8_t secure = 0; // the flag: 1 for https

    // False where the text is anything but http or https, has no server, or has control characters, blanks in
    // the server or user info.
    [[nodiscard]] bool valid() const noexcept { return !server.isEmpty(); }

    // Thread: any.
    [[nodiscard]] ZQ_API static ParsedURI parse(WideString const& address);
};
