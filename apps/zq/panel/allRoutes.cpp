#include "apps/zq/panel/Panel.h"

namespace zq::panel {

Routes allRoutes(Panel const& panel) {
    Routes routes;
    addRepositoryRoutes(routes, panel);
    addClipRoutes(routes, panel);
    addShopRoutes(routes, panel);
    addFetchRoutes(routes, panel);
    addProjectRoutes(routes, panel);
    addSettingsRoutes(routes, panel);
    addStateRoutes(routes, panel);
    return routes;
}

} // namespace zq::panel
