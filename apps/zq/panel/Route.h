// The routes of the panel's interface, as a table.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/zq/panel/Http.h"

namespace zq::panel {

// Called on any thread, several at a time. Throws ApiError or CommandError to fail.
using Handler = std::function<Response(Request const& request)>;

struct Route {
    std::string method;  // "GET" answers HEAD too
    std::string pattern; // as "/api/tasks/{task}/log": a part in braces matches one part of the path
    Handler handler;
};

// The routes of one area are added by one function, such as addClipRoutes(routes, panel).
using Routes = std::vector<Route>;

} // namespace zq::panel
