// The entries of the search filters. A handler receives a row number of its table as the chosen entry's tag.
#pragma once

#include <cstdint>
#include <iterator>

namespace tarn7 {

struct FilterChoice {
    std::int32_t value; // what the preference keeps
    wchar_t const* text;
};

// Highest price, in dollars.
inline constexpr FilterChoice Tarn7PriceChoices[] = {
    {5, L"$5"}, {10, L"$10"}, {20, L"$20"}, {50, L"$50"}, {100, L"$100"},
};

// Least picture height, in lines.
inline constexpr FilterChoice Tarn7HeightChoices[] = {
    {720, L"HD (720)"},
    {1080, L"HD (1080)"},
    {2160, L"4k"},
};

// Least length, in seconds.
inline constexpr FilterChoice Tarn7LengthChoices[] = {
    {5, L"5 secs"}, {10, L"10 secs"}, {20, L"20 secs"}, {30, L"30 secs"}, {45, L"45 secs"}, {60, L"60 secs"},
};

// The preferences that keep the filters; 0 is no filter.
inline constexpr char pricePreference[] = "T7 Price";
inline constexpr char heightPreference[] = "T7 Height";
inline constexpr char lengthPreference[] = "T7 Len";

} // namespace tarn7
