// Lets GoogleTest print texts of the host.
#pragma once

#include <ostream>
#include <string_view>
#include <type_traits>

#include "host/text/Unicode.h"

template <class Char>
void PrintTo(LightweightString<Char> const& text, std::ostream* out) {
    NarrowString narrow;
    if constexpr (std::is_same_v<Char, wchar_t>) {
        narrow = toUTF8(text);
    } else {
        narrow = text;
    }
    *out << '"' << narrow.view() << '"';
}
