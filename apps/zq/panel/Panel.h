// What the handlers of a panel share. All of it outlives the transport, which is ended first.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "apps/zq/panel/EventHub.h"
#include "apps/zq/panel/GivenLinks.h"
#include "apps/zq/panel/RepositoryDesk.h"
#include "apps/zq/panel/Route.h"

namespace zq::panel {

class Baskets;
class Purchases;
class Fetches;
class PanelSettings;

struct Panel {
    engine::Engine& engine;
    EventHub& events;
    // In the order in which the modules registered them. Set before the transport starts, fixed from then on.
    std::vector<std::unique_ptr<RepositoryDesk>>& desks;
    Baskets& baskets;
    Purchases& purchases;
    Fetches& fetches;
    PanelSettings& settings;
    GivenLinks& links;

    // The desk of that short name. Throws ApiError(notFound).
    [[nodiscard]] RepositoryDesk& desk(std::string_view shortName) const;
};

// One function per area; Panel outlives the routes.
void addStateRoutes(Routes& routes, Panel const& panel);      // state, texts, events, links
void addRepositoryRoutes(Routes& routes, Panel const& panel); // description, login, options
void addClipRoutes(Routes& routes, Panel const& panel);       // search, owned, clips, pictures, previews
void addShopRoutes(Routes& routes, Panel const& panel);       // baskets, purchases
void addFetchRoutes(Routes& routes, Panel const& panel);      // fetches, checks, tasks, their logs
void addProjectRoutes(Routes& routes, Panel const& panel);    // project, sequences, usage, exports
void addSettingsRoutes(Routes& routes, Panel const& panel);   // settings, log, report

// Those of all areas.
[[nodiscard]] Routes allRoutes(Panel const& panel);

} // namespace zq::panel
