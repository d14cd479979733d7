// The routes of settings, of the host's log and of the report.

#include <future>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/panel/ConnectionTest.h"
#include "apps/zq/panel/HostLog.h"
#include "apps/zq/panel/HostReport.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/PanelSettings.h"
#include "apps/zq/panel/RequestValues.h"
#include "host/engine/Engine.h"
#include "host/engine/network/CurlNetwork.h"

namespace zq::panel {

namespace {

constexpr std::size_t mostLogLines = 500;
constexpr std::chrono::seconds longestTest{10};
constexpr std::chrono::seconds longestWait{2};

Response showLog(Panel const& panel) {
    std::vector<std::string> const lines = lastLogLines(panel.engine.home(), mostLogLines);
    JSON::Builder json;
    json.startChild(nullptr);
    json.startArray("lines");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        json.startChild(nullptr);
        addNumber(json, "number", i + 1);
        addText(json, "text", lines[i]);
        json.endChild();
    }
    json.endArray();
    json.endChild();
    return jsonAnswer(utf8(json.getOutput()));
}

// What one desk knows for a report.
struct DeskFacts {
    std::vector<std::string> modules;
    std::string user;
};

// A desk that is held up is no reason to have no report: what it knows is left out then.
Response showReport(Panel const& panel) {
    ReportFacts facts;
    std::vector<std::future<DeskFacts>> known;
    for (auto const& desk : panel.desks) {
        auto const told = std::make_shared<std::promise<DeskFacts>>();
        known.push_back(told->get_future());
        desk->post(
            [told](Session& session) {
                told->set_value({moduleLines(session.modules()), session.user()});
            },
            Turn::beforeSearches);
    }
    auto const end = std::chrono::steady_clock::now() + longestWait;
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (known[i].wait_until(end) != std::future_status::ready) {
            facts.modules.push_back(panel.desks[i]->shortName() + " is busy");
            continue;
        }
        try {
            DeskFacts const desk = known[i].get();
            facts.modules = facts.modules.empty() ? desk.modules : facts.modules;
            facts.accounts.push_back(desk.user);
        } catch (std::future_error const&) {
            facts.modules.push_back(panel.desks[i]->shortName() + " has ended");
        }
    }
    Response response;
    response.type = "text/plain; charset=utf-8";
    response.body = hostReport(panel.engine, facts);
    response.saveAs = "zq-report.txt";
    return response;
}

Response clearCache(Panel const& panel) {
    JSON::Builder json;
    json.startChild(nullptr);
    addNumber(json, "freed", panel.settings.clearCache());
    json.endChild();
    return jsonAnswer(utf8(json.getOutput()));
}

Response testConnection(Panel const& panel) {
    std::vector<HTTPConnectionInfo> servers;
    for (auto const& desk : panel.desks) {
        HTTPConnectionInfo info = desk->connection(); // a desk that is held up is what one tests for
        if (!info.server.isEmpty()) {                 // one of local files has none
            servers.push_back(std::move(info));
        }
    }
    auto const statistics = [&network = panel.engine.network()] { return network.statisticsOfThisThread(); };
    JSON::Builder json;
    json.startChild(nullptr);
    json.startArray("servers");
    for (ServerAnswer const& answer : testConnections(servers, longestTest, statistics)) {
        json.startChild(nullptr);
        addText(json, "name", answer.name);
        json.add("ok", answer.ok);
        addText(json, "reason", answer.reason);
        addNumber(json, "status", answer.status);
        addText(json, "text", answer.text);
        addDecimal(json, "seconds", answer.seconds);
        json.endChild();
    }
    json.endArray();
    json.endChild();
    return jsonAnswer(utf8(json.getOutput()));
}

} // namespace

void addSettingsRoutes(Routes& routes, Panel const& panel) {
    routes.push_back(
        {"GET", "/api/settings", [&panel](Request const&) { return jsonAnswer(panel.settings.json()); }});
    routes.push_back({"PATCH", "/api/settings", [&panel](Request const& request) {
                          panel.settings.change(request);
                          return jsonAnswer(panel.settings.json());
                      }});
    routes.push_back(
        {"POST", "/api/settings/clear-cache", [&panel](Request const&) { return clearCache(panel); }});
    routes.push_back({"POST", "/api/settings/test-connection",
                      [&panel](Request const&) { return testConnection(panel); }});
    routes.push_back({"GET", "/api/log", [&panel](Request const&) { return showLog(panel); }});
    routes.push_back({"GET", "/api/report", [&panel](Request const&) { return showReport(panel); }});
}

} // namespace zq::panel
