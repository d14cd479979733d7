// The words that a person sees for a text of the contract.
#pragma once

#include "host/resources/resourceStr.h"
#include "host/text/UIString.h"

namespace zq {

// The plain text, or the host's string where the text is only a number of one.
[[nodiscard]] inline WideString label(UIString const& text) {
    return text.resource == UIString::noResource ? text.text : resourceStrW(text.resource);
}

} // namespace zq
