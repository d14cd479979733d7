// Text of others where one line is expected: a name with a line break in it could pass for a line of the
// host.
#pragma once

#include "host/text/LightweightString.h"

namespace Zq {

// True for the control characters of both blocks and for Unicode's line and paragraph separators. Thread:
// any.
[[nodiscard]] constexpr bool breaksLine(wchar_t unit) noexcept {
    return unit < 0x20 || (unit >= 0x7f && unit < 0xa0) || unit == 0x2028 || unit == 0x2029;
}

// The text with a blank for each of those. Thread: any.
[[nodiscard]] ZQ_API WideString onOneLine(WideString const& text);

} // namespace Zq
