// Answers of the service as they come over the wire, in any number of items.
#pragma once

#include <cstddef>
#include <string>

namespace bench {

// The answer to a "search" with that many clips, about 740 bytes each.
[[nodiscard]] std::string searchAnswer(std::size_t items);

} // namespace bench
