// Members of a JSON answer.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "apps/zq/Reply.h"
#include "apps/zq/Text.h"

namespace zq {

inline void addText(JSON::Builder& json, char const* key, std::string_view text) {
    json.add(key, wide(text), true);
}
// A number in decimal, of any integer type; wider ones than JSON::Builder takes.
template <class Integer>
void addNumber(JSON::Builder& json, char const* key, Integer value) {
    json.add(key, wide(std::to_string(value)), false);
}

// The shortest decimal number that means the same; 0 for what is no number.
void addDecimal(JSON::Builder& json, char const* key, double value);

// The text as a JSON string, quotes included: an item of an array.
[[nodiscard]] WideString quoted(WideString const& text);
// Items that are JSON already, as an array.
void addItems(JSON::Builder& json, char const* key, std::span<WideString const> items);
// Texts as an array of strings.
void addTexts(JSON::Builder& json, char const* key, std::span<std::string const> texts);

// The reply as one line of JSON, without a line end.
[[nodiscard]] std::string jsonLine(Reply const& reply);

} // namespace zq
