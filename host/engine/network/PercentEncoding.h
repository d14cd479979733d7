// Percent encoding (RFC 3986, section 2.1).
#pragma once

#include <string>

#include "host/text/LightweightString.h"

namespace engine {

// UTF-8 with every byte but the unreserved characters as %XX, upper-case. Thread: any.
[[nodiscard]] WideString encodeComponent(WideString const& text);

// A request path of UTF-8 in which blanks, control characters and what is not ASCII are %XX and all else is
// as it was, so that no path can add to the request line. Thread: any.
[[nodiscard]] std::string encodePath(WideString const& path);

} // namespace engine
