// Which route of the panel a request's target leads to.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "apps/zq/panel/Route.h"

namespace zq::panel {

// Thread: any; nothing in it changes.
class RouteTable {
public:
    explicit RouteTable(Routes routes);

    struct Match {
        Route const* route = nullptr; // null: `allowed` tells the methods that the path takes
        std::vector<std::string> captures;
        std::string allowed; // as an "Allow" header; empty: there is no such path
    };
    // The path is as it stands in the request, percent-encoded and without the query. A path that cannot be
    // decoded leads nowhere.
    [[nodiscard]] Match find(std::string_view method, std::string_view path) const;
    [[nodiscard]] Routes const& routes() const noexcept { return routes_; }

private:
    Routes const routes_;
    std::vector<std::vector<std::string>> patterns_; // the parts of each route's
};

// The values of a query by key. Throws ApiError(badRequest) for what is not percent-encoded UTF-8. Thread:
// any.
[[nodiscard]] std::map<std::string, std::string, std::less<>> parseQuery(std::string_view query);

} // namespace zq::panel
