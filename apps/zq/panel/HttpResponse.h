// Answers of the panel as the HTTP library sends them.
#pragma once

#include <string>

#include <httplib.h>

#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Http.h"

namespace zq::panel {

// Headers that every answer carries.
void addSecurityHeaders(httplib::Response& answer);

// Fills the answer. Of content the part that the request's "Range" asks for.
void sendResponse(httplib::Request const& request, Response response, httplib::Response& answer);

// Fills the answer with the error's body.
void sendError(httplib::Response& answer, ErrorCode code, int status, std::string const& text,
               Reason reason = Reason::none);

} // namespace zq::panel
