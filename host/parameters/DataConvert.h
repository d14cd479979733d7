// Values as text and back, in the form that parameters and their handlers exchange. Thread: any.
#pragma once

#include <cstdint>

#include "host/text/LightweightString.h"

namespace DataConvert {

// "true" or "false".
[[nodiscard]] ZQ_API WideString convert(bool value);
// Decimal digits.
[[nodiscard]] ZQ_API WideString convert(std::int32_t value);
[[nodiscard]] ZQ_API WideString convert(std::uint32_t value);

// False, with the value left alone, for a text that is none: a boolean is "true", "false", "1" or "0", a
// number an optional sign and decimal digits that fit.
[[nodiscard]] ZQ_API bool convert(WideString const& text, bool& value);
[[nodiscard]] ZQ_API bool convert(WideString const& text, std::int32_t& value);
[[nodiscard]] ZQ_API bool convert(WideString const& text, std::uint32_t& value);
// Every text is one.
[[nodiscard]] inline bool convert(WideString const& text, WideString& value) {
    value = text;
    return true;
}

} // namespace DataConvert
