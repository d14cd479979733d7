// The routes of the panel as a whole: its state, its texts, its events, and the links that lead out of it.

#include <memory>
#include <stdexcept>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/Version.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/Fetches.h"
#include "apps/zq/panel/PageTexts.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/PanelSettings.h"
#include "apps/zq/panel/ProjectJson.h"
#include "apps/zq/panel/RequestValues.h"
#include "host/engine/os/DesktopShell.h"
#include "host/engine/settings/HomeFolder.h"

namespace zq::panel {

namespace {

constexpr std::size_t longestLink_bytes = 8'000;

Response showState(Panel const& panel) {
    JSON::Builder json;
    json.startChild(nullptr);
    // First: what happens while the rest is gathered is told again, and nothing is missed.
    addNumber(json, "event", panel.events.last());
    addText(json, "version", version);
    addText(json, "language", panel.settings.language());
    addText(json, "theme", panel.settings.theme());
    std::vector<WideString> repositories;
    for (std::unique_ptr<RepositoryDesk> const& desk : panel.desks) {
        repositories.push_back(wide(desk->description()));
    }
    addItems(json, "repositories", repositories);
    addProject(json, "project", panel.engine.project());
    panel.fetches.addTasks(json, "tasks");
    json.endChild();
    return jsonAnswer(utf8(json.getOutput()));
}

Response showTexts(std::string const& language) {
    engine::Result<PageTexts> const texts =
        loadPageTexts(findPageTextsFolder(engine::findProgramFolder()), language);
    if (!texts) {
        throw std::runtime_error(texts.error());
    }
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "language", language);
    json.startChild("texts");
    for (auto const& [key, text] : *texts) {
        addText(json, key.c_str(), text);
    }
    json.endChild();
    json.endChild();
    return jsonAnswer(utf8(json.getOutput()));
}

Response showEvents(Panel const& panel, Request const& request) {
    Response response;
    response.type = "text/event-stream; charset=utf-8";
    response.live = panel.events.listen(request.lastEvent);
    return response;
}

Response openLink(Panel const& panel, Request const& request) {
    std::string const url = bodyText(request, "url", longestLink_bytes);
    if (!panel.links.contains(url)) {
        throw ApiError(ErrorCode::conflict, "no repository has given this link", Reason::unknownLink);
    }
    engine::DesktopShell& shell = panel.engine.shell();
    bool const opened = shell.openInBrowser(wide(url));
    static_cast<void>(shell.takeLastPage()); // a purchase looks there for its payment page
    if (!opened) {
        throw ApiError(ErrorCode::conflict, "there is no web browser that could be started",
                       Reason::noBrowser);
    }
    return jsonAnswer("{}");
}

} // namespace

void addStateRoutes(Routes& routes, Panel const& panel) {
    routes.insert(
        routes.end(),
        {{"GET", "/api/state", [&panel](Request const&) { return showState(panel); }},
         {"GET", "/api/texts", [&panel](Request const&) { return showTexts(panel.settings.language()); }},
         {"GET", "/api/events", [&panel](Request const& request) { return showEvents(panel, request); }},
         {"POST", "/api/links", [&panel](Request const& request) { return openLink(panel, request); }}});
}

} // namespace zq::panel
