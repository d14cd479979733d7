// Numbers as text and back, independent of the locale.
#pragma once

#include <cstdint>
#include <string_view>

#include "host/text/LightweightString.h"

namespace Zq {

// Decimal digits, with a minus sign for a negative. Thread: any.
[[nodiscard]] ZQ_API WideString WStringFromInteger(std::int64_t value);
// The same, behind what the text holds.
ZQ_API void appendInteger(WideString& text, std::int64_t value);
ZQ_API void appendInteger(NarrowString& text, std::int64_t value);

// The value of a text that is an optional sign and decimal digits and nothing else; `otherwise` for any other
// text and for a value that does not fit.
[[nodiscard]] ZQ_API std::int32_t IntFromWString(WideString const& text, std::int32_t otherwise);
[[nodiscard]] ZQ_API std::int64_t Int64FromWString(WideString const& text, std::int64_t otherwise);
[[nodiscard]] ZQ_API std::int64_t Int64FromText(std::string_view text, std::int64_t otherwise);

// The decimal number at the start of the text, such as 29.97, and 0 where there is none. Always with a point,
// whatever the locale says. Not a number and infinity count as none.
[[nodiscard]] ZQ_API double decimalFromText(std::string_view text);

// A double as the service protocols' 32-bit integer: truncated toward zero, clamped to 64 bits, and cut to
// its low 32 bits. Not a number gives 0.
[[nodiscard]] ZQ_API std::int32_t truncatedTo32Bits(double value) noexcept;
// The same without the last step.
[[nodiscard]] ZQ_API std::int64_t truncatedTo64Bits(double value) noexcept;
// The nearest float; a value outside a float's range gives the largest float of that sign.
[[nodiscard]] ZQ_API float nearestFloat(double value) noexcept;

} // namespace Zq
