// The routes of fetching: fetches, checks, tasks and their logs.

#include <algorithm>
#include <limits>
#include <optional>

#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/commands/RelinkListing.h"
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
            throw isSold ? ApiError(ErrorCode::conflict, "clip " + id + " is not owned", Reason::notOwned)
                         : ApiError(ErrorCode::notFound, "there is no clip " + id, Reason::unknownClip);
        }
        chosen.push_back(*found);
    }
    return chosen;
}

std::uint64_t beginFetch(Panel const& panel, RepositoryDesk& desk, std::vector<std::string> const& ids) {
    return desk.ask([&](Session& session) {
        if (session.needsSignIn() && session.user().empty()) {
            throw ApiError(ErrorCode::conflict, "nobody is signed in", Reason::notSignedIn);
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

// What relinking a clip to what is on this machine would do.
struct Check {
    std::string clip;
    std::string name;
    char const* outcome = "no_edit";
    std::string text; // in words
    std::optional<engine::RelinkReport> report;
    std::vector<SequenceUse> uses;

    [[nodiscard]] std::size_t cutShort() const {
        return static_cast<std::size_t>(std::ranges::count_if(uses, &SequenceUse::isCutShort));
    }
};

std::string usesInWords(std::size_t cutShort) {
    if (cutShort == 0) {
        return "every use stays the same cut";
    }
    return std::to_string(cutShort) + (cutShort == 1 ? " use shows" : " uses show") +
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
        check.outcome = "no_file";
        check.text = "its full file is not on this machine: a fetch brings it";
        return check;
    }
    engine::Result<engine::RelinkReport> const report = project.checkRelink(cookie, path);
    if (!report) {
        check.outcome = "unusable";
        check.text = report.error();
        return check;
    }
    check.report = *report;
    check.uses = usesOf(session, cookie, *report);
    check.outcome = check.cutShort() == 0 ? "same" : "cut_short";
    check.text = usesInWords(check.cutShort());
    return check;
}

void addCheck(JSON::Builder& json, Check const& found) {
    json.startChild(nullptr);
    addText(json, "clip", found.clip);
    addText(json, "name", found.name);
    json.add("ok", found.report.has_value());
    addText(json, "outcome", found.outcome);
    addNumber(json, "cutShort", found.cutShort());
    addText(json, "text", found.text);
    addRelinkMembers(json, found.report.value_or(engine::RelinkReport()), found.uses);
    json.endChild();
}

Response checkClips(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(request.captures.at(0));
    std::vector<std::string> const ids = bodyClips(request, "clips", Fetches::mostClips);
    return jsonAnswer(desk.ask([&](Session& session) {
        JSON::Builder json;
        json.startChild(nullptr);
        json.startArray("checks");
        for (std::string const& id : ids) {
            addCheck(json, check(desk, session, id));
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
