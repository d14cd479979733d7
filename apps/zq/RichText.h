// Rich text of a repository, for screens that show plain text.
#pragma once

#include <string>
#include <string_view>

namespace zq {

// The text without its tags and with the named characters of markup as themselves.
[[nodiscard]] std::string plainFromRich(std::string_view rich);

} // namespace zq
