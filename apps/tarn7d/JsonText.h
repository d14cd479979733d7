// JSON between the service's bytes and the elements and builders that the rest works with.
#pragma once

#include <string>
#include <string_view>

#include "host/json/Builder.h"
#include "host/json/parse.h"

namespace tarn7d {

// The element of the text; null if it is not JSON. Any thread.
[[nodiscard]] Zq::Ptr<JSON::Element> parseJson(std::string_view text);

// What the builder has written, in UTF-8.
[[nodiscard]] std::string jsonText(JSON::Builder const& builder);

void addText(JSON::Builder& builder, char const* key, std::string_view text);
// The number brought into 32 bits.
void addInteger(JSON::Builder& builder, char const* key, std::int64_t value);

} // namespace tarn7d
