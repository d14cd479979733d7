// The one border between UTF-16 and UTF-8. Malformed input of either kind, such as an unpaired surrogate or a
// cut sequence, becomes U+FFFD and never fails.
#pragma once

#include <string_view>

#include "host/text/LightweightString.h"

// Thread: any.
[[nodiscard]] ZQ_API NarrowString toUTF8(std::wstring_view text);
[[nodiscard]] inline NarrowString toUTF8(WideString const& text) {
    return toUTF8(text.view());
}
[[nodiscard]] inline NarrowString toUTF8(wchar_t const* text) {
    return toUTF8(text != nullptr ? std::wstring_view(text) : std::wstring_view());
}

[[nodiscard]] ZQ_API WideString fromUTF8(std::string_view text);
[[nodiscard]] inline WideString fromUTF8(NarrowString const& text) {
    return fromUTF8(text.view());
}
[[nodiscard]] inline WideString fromUTF8(char const* text) {
    return fromUTF8(text != nullptr ? std::string_view(text) : std::string_view());
}
