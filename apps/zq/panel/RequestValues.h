// The values of a request, each with its bounds. What is out of them throws ApiError(badRequest).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "apps/zq/panel/Http.h"

namespace zq::panel {

// A number of the query; `otherwise` where it has none of that name.
[[nodiscard]] std::uint32_t queryNumber(Request const& request, std::string_view name,
                                        std::uint32_t otherwise, std::uint32_t least, std::uint32_t most);
// A text of the query; empty where it has none of that name.
[[nodiscard]] std::string queryText(Request const& request, std::string_view name, std::size_t mostBytes);
// A member of the body that has to be a text.
[[nodiscard]] std::string bodyText(Request const& request, std::string_view name, std::size_t mostBytes);
// Ids of clips, each once, in the order of the body's list.
[[nodiscard]] std::vector<std::string> bodyClips(Request const& request, std::string_view name,
                                                 std::size_t most);
// A number in a part of the path.
[[nodiscard]] std::size_t pathNumber(Request const& request, std::size_t capture);

[[nodiscard]] Response jsonAnswer(std::string body);

} // namespace zq::panel
