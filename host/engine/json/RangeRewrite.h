// A JSON text whose every number and escape the reader can represent.
#pragma once

#include <string>
#include <string_view>

namespace engine {

// A copy of the text in which every well-formed number outside a double's range is the nearest double (the
// largest of its sign, or 0), every integer beyond 64 bits is written with an exponent, and every escape of
// an unpaired surrogate is that of U+FFFD. What is not JSON stays as it is, so a wrong text stays wrong.
// Thread: any.
[[nodiscard]] std::string rewriteIntoRange(std::string_view text);

} // namespace engine
