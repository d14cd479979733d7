// The routes of fetching: fetches, checks, tasks and their logs.

#include <algorithm>
#include <limits>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/commands/EditListing.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/ClipJson.h"
#include "apps/zq/panel/Fetches.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/Purchases.h"
#include "apps/zq/panel/RequestValues.h"
#include "host/engine/project/Project.h"
#include "host/files/iFileManager.h"
#include "host/os/OS.h"

namespace zq::panel {

namespace {

std::string taskJson(std::uint64_t task) {
    JSON::Builder json;
    json.startChild(nullptr);
    addNumber(json, "task", task);
    json.endChild();
    return utf8(json.getOutput());
}

// Of what the account owns, as the service tells it now: the addresses of files can be old in older answers.
LightweightVector<RemoteAsset> choose(LightweightVector<RemoteAsset> const& owned,
                                      std::vector<std::string> const& ids, bool isSold) {
    LightweightVector<RemoteAsset> chosen;
    for (std::string const& id : ids) {
        auto const found = std::ranges::find(owned, wide(id), &RemoteAsset::id);
        if (found == owned.end()) {
            throw isSold ? ApiError(ErrorCode::conflict, "clip " + id + " is not owned")
                         : ApiError(ErrorCode::notFound, "there is no clip " + id);
        }
        chosen.push_back(*found);
    }
    return chosen;
}

std::uint64_t beginFetch(Panel const& panel, RepositoryDesk& desk, std::vector<std::string> const& ids) {
    return desk.ask([&](Session& session) {
        if (session.needsSignIn() && session.user().empty()) {
            throw ApiError(ErrorCode::conflict, "nobody is signed in");
        }
        LightweightVector<RemoteAsset> const owned = panel.purchases.readOwned(desk, session);
        return panel.fetches.begin(desk, session, choose(owned, ids, session.needsSignIn()));
    });
}

Response fetch(Panel const& panel, Request const& request) {
    std::vector<std::string> const ids = bodyClips(request, "clips", Fetches::mostClips);
    if (ids.empty()) {
        throw ApiError(ErrorCode::badRequest, "\"clips\" has no id");
    }
    return jsonAnswer(taskJson(beginFetch(panel, panel.desk(request.captures.at(0)), ids)));
}

Response retry(Panel const& panel, Request const& request) {
    Fetches::Remaining const remaining = panel.fetches.remaining(pathNumber(request, 0));
    return jsonAnswer(taskJson(beginFetch(panel, panel.desk(remaining.repository), remaining.clips)));
}

struct Check {
    std::string clip;
    std::string name;
    bool ok = false;
    std::string text;
    std::vector<std::string> differences;
};

std::string usesInWords(engine::RelinkReport const& report) {
    if (report.cutShort.empty()) {
        return "every use stays the same cut";
    }
    return std::to_string(report.cutShort.size()) +
           (report.cutShort.size() == 1 ? " use shows" : " uses show") +
           " frames that the file does not have";
}

Check check(RepositoryDesk const& desk, Session& session, std::string const& id) {
    Check check;
    check.clip = id;
    std::optional<KnownClip> const known = desk.knownClip(id);
    RemoteAsset asset = known ? known->asset : RemoteAsset();
    asset.id = wide(id);
    engine::Project& project = session.engine().project();
    Cookie const cookie = editOf(session, asset);
    std::optional<engine::EditRecord> const edit = cookie.isNull() ? std::nullopt : project.edit(cookie);
    check.name = edit ? utf8(edit->name()) : assetCell(asset, LogAttribute(LogAttribute::eName));
    if (!edit) {
        check.text = "the project has no edit of this clip";
        return check;
    }
    WideString path = edit->mediaLocation;
    if (path.isEmpty()) {
        path = session.base().describeLocalMediaLocation(known ? asset : session.findAsset(id),
                                                         MediaFileRepositoryBase::eFullMedia);
    }
    if (path.isEmpty() || !OS().fileManager().fileExists(path)) {
        check.text = "its full file is not on this machine: a fetch brings it";
        return check;
    }
    engine::Result<engine::RelinkReport> const report = project.checkRelink(cookie, path);
    check.ok = static_cast<bool>(report);
    check.text = report ? usesInWords(*report) : report.error();
    if (report) {
        for (engine::MediaDifference const& difference : report->differences) {
            check.differences.push_back(inWords(difference));
        }
    }
    return check;
}

Response checkClips(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    std::vector<std::string> const ids = bodyClips(request, "clips", Fetches::mostClips);
    return jsonAnswer(desk.ask([&](Session& session) {
        JSON::Builder json;
        json.startChild(nullptr);
        json.startArray("checks");
        for (std::string const& id : ids) {
            Check const found = check(desk, session, id);
            json.startChild(nullptr);
            addText(json, "clip", found.clip);
            addText(json, "name", found.name);
            json.add("ok", found.ok);
            addText(json, "text", found.text);
            addTexts(json, "differences", found.differences);
            json.endChild();
        }
        json.endArray();
        json.endChild();
        return utf8(json.getOutput());
    }));
}

Response showTasks(Panel const& panel) {
    JSON::Builder json;
    json.startChild(nullptr);
    panel.fetches.addTasks(json, "tasks");
    json.endChild();
    return jsonAnswer(utf8(json.getOutput()));
}

Response cancel(Panel const& panel, Request const& request) {
    panel.fetches.cancel(pathNumber(request, 0));
    return jsonAnswer("{}");
}

Response showLog(Panel const& panel, Request const& request) {
    std::uint32_t const since =
        queryNumber(request, "since", 0, 0, std::numeric_limits<std::uint32_t>::max());
    return jsonAnswer(panel.fetches.log(pathNumber(request, 0), since));
}

} // namespace

void addFetchRoutes(Routes& routes, Panel const& panel) {
    routes.push_back({"POST", "/api/repositories/{repository}/fetches",
                      [&panel](Request const& request) { return fetch(panel, request); }});
    routes.push_back({"POST", "/api/repositories/{repository}/checks",
                      [&panel](Request const& request) { return checkClips(panel, request); }});
    routes.push_back({"GET", "/api/tasks", [&panel](Request const&) { return showTasks(panel); }});
    routes.push_back(
        {"DELETE", "/api/tasks/{task}", [&panel](Request const& request) { return cancel(panel, request); }});
    routes.push_back({"POST", "/api/tasks/{task}/retry",
                      [&panel](Request const& request) { return retry(panel, request); }});
    routes.push_back({"GET", "/api/tasks/{task}/log",
                      [&panel](Request const& request) { return showLog(panel, request); }});
}

} // namespace zq::panel
