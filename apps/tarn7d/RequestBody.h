// The form body of a request, as the client writes it:
//
//   api={"api_key":...}[&apicx=N&apicm=N]
//
// The values are not percent-encoded, and the JSON text may hold "&", "=" and anything else. So its end is
// found by reading it as JSON, not by looking for the next "&".
#pragma once

#include <optional>
#include <string_view>

#include "apps/tarn7d/Sessions.h"

namespace tarn7d {

struct RequestForm {
    std::string_view envelope; // the JSON object; a view into the body
    SessionKey session;        // -1 where the body has no such field
};

// Empty if the body does not have this form. Fields of other names behind the envelope are passed over.
[[nodiscard]] std::optional<RequestForm> parseRequestBody(std::string_view body) noexcept;

} // namespace tarn7d
