// Text between the contract's wide form and the UTF-8 of this program.
#pragma once

#include <string>
#include <string_view>

#include "host/text/Unicode.h"

namespace zq {

[[nodiscard]] inline std::string utf8(WideString const& text) {
    return std::string(toUTF8(text).view());
}
[[nodiscard]] inline WideString wide(std::string_view text) {
    return fromUTF8(text);
}

} // namespace zq
