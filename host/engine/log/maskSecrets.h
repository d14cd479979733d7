// Keeps what only a person and a service may know out of a line of the log.
#pragma once

#include <string>
#include <string_view>

namespace engine {

// The line with the values of password, apicx, apicm, api_key, commands_hash and similar names replaced by
// "***", where they stand as name=value, name: value or a JSON member, also percent-encoded or inside another
// JSON text. The callers of the log keep secrets out by themselves; this catches what slips through. Thread:
// any.
[[nodiscard]] std::string maskSecrets(std::string_view line);

} // namespace engine
