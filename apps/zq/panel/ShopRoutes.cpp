// The routes of buying: baskets and purchases.

#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Baskets.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/Purchases.h"
#include "apps/zq/panel/RequestValues.h"

namespace zq::panel {

namespace {

constexpr std::size_t longestKey_bytes = 200;

std::string basketJson(Panel const& panel, RepositoryDesk const& desk, Session& session) {
    return panel.baskets.json(desk, session, panel.purchases.undecided(desk, session.user()));
}

Response showBasket(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    return jsonAnswer(
        desk.ask(Turn::beforeSearches, [&](Session& session) { return basketJson(panel, desk, session); }));
}

Response replaceBasket(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    std::vector<std::string> const ids = bodyClips(request, "clips", Baskets::most);
    return jsonAnswer(desk.ask(Turn::beforeSearches, [&](Session& session) {
        panel.baskets.replace(desk, session, ids);
        return basketJson(panel, desk, session);
    }));
}

Payment paymentOf(Request const& request) {
    std::string const payment = bodyText(request, "payment", longestKey_bytes);
    if (payment != "credits" && payment != "page") {
        throw ApiError(ErrorCode::badRequest, "\"payment\" is \"credits\" or \"page\"");
    }
    return payment == "credits" ? Payment::credits : Payment::cash;
}

Response buy(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    Purchases::Order order;
    order.key = bodyText(request, "key", longestKey_bytes);
    order.clips = bodyClips(request, "clips", Baskets::most);
    order.payment = paymentOf(request);
    if (order.key.empty() || order.clips.empty()) {
        throw ApiError(ErrorCode::badRequest, "a purchase has a \"key\" and at least one clip");
    }
    return jsonAnswer(panel.purchases.buy(desk, order));
}

Response withdraw(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    std::string const& key = request.captures.at(1);
    if (key.empty() || key.size() > longestKey_bytes) {
        throw ApiError(ErrorCode::badRequest, "this is no key");
    }
    return jsonAnswer(panel.purchases.withdraw(desk, key));
}

} // namespace

void addShopRoutes(Routes& routes, Panel const& panel) {
    routes.push_back({"GET", "/api/repositories/{repository}/basket",
                      [&panel](Request const& request) { return showBasket(panel, request); }});
    routes.push_back({"PUT", "/api/repositories/{repository}/basket",
                      [&panel](Request const& request) { return replaceBasket(panel, request); }});
    routes.push_back({"POST", "/api/repositories/{repository}/purchases",
                      [&panel](Request const& request) { return buy(panel, request); }});
    routes.push_back({"DELETE", "/api/repositories/{repository}/purchases/{key}",
                      [&panel](Request const& request) { return withdraw(panel, request); }});
    routes.push_back({"GET", "/api/repositories/{repository}/purchases", [&panel](Request const& request) {
                          return jsonAnswer(panel.purchases.list(panel.desk(request.captures.at(0))));
                      }});
}

} // namespace zq::panel
