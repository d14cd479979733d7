// Texts in the user's language, by number.
#pragma once

#include <cstdint>

#include "host/text/LightweightString.h"

using ResId = std::uint32_t;

// How a padded text is put together; plain is prefix, text, suffix as they stand.
enum class ResStrFmt { plain = 0 };

// What stands behind the door. Thread: any.
class ZQ_API iResourceStrings {
public:
    virtual ~iResourceStrings();
    // Empty for a number that the host has no text for.
    [[nodiscard]] virtual WideString read(ResId number) = 0;
};

[[nodiscard]] ZQ_API WideString resourceStrW(ResId number);

// The text between prefix and suffix, each of which may be null.
[[nodiscard]] ZQ_API WideString paddedResourceStrW(ResId number, wchar_t const* prefix, wchar_t const* suffix,
                                                   ResStrFmt format);
