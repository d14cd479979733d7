// Requests as a client makes them, and their answers.
#pragma once

#include <string>
#include <string_view>

#include "apps/tarn7d/Sessions.h"
#include "host/json/parse.h"

namespace test {

// The JSON text of an answer; null if it is not JSON.
[[nodiscard]] Zq::Ptr<JSON::Element> parseJson(std::string_view text);

// The text as a JSON string, quotation marks included.
[[nodiscard]] std::string jsonString(std::string_view text);

// The envelope of a command text, signed as the service expects it.
[[nodiscard]] std::string envelope(std::string_view commands);

// The whole form body.
[[nodiscard]] std::string requestBody(std::string_view commands, tarn7d::SessionKey session = {});

// Reply number `index` of an answer; null if there is none.
[[nodiscard]] Zq::Ptr<JSON::Element> reply(Zq::Ptr<JSON::Element> const& answer, std::uint16_t index = 0);

} // namespace test
