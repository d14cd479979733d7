// The address that a browser is given.
#pragma once

#include <optional>
#include <string>

#include "host/text/LightweightString.h"

namespace engine {

// An http or https address taken apart and built again, in UTF-8 with every character that a URL cannot hold
// percent-encoded; nothing for any other text. The result begins with its scheme, so no program takes it for
// an option or a file. The part behind "#" is dropped. Thread: any.
[[nodiscard]] std::optional<std::string> browserUrl(WideString const& address);

} // namespace engine
