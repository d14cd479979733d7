// The routes of the project: its sequences, what they cost, and how they leave the house.

#include <algorithm>
#include <cmath>
#include <optional>
#include <span>

#include "apps/zq/EditLookup.h"
#include "apps/zq/JsonOutput.h"
#include "apps/zq/commands/AssetListing.h"
#include "apps/zq/panel/ApiError.h"
#include "apps/zq/panel/ClipJson.h"
#include "apps/zq/panel/Panel.h"
#include "apps/zq/panel/ProjectJson.h"
#include "apps/zq/panel/ProjectWatch.h"
#include "apps/zq/panel/RequestValues.h"
#include "apps/zq/panel/SequenceJson.h"
#include "apps/zq/panel/UsageJson.h"
#include "apps/zq/panel/plainFileName.h"
#include "host/engine/interchange/Export.h"
#include "host/json/NumberMembers.h"
#include "host/log/Log.h"

namespace zq::panel {

namespace {

constexpr std::size_t longestText_bytes = 1'000;

template <class Value>
Value orConflict(engine::Result<Value> result, Reason reason) {
    if (!result) {
        throw ApiError(ErrorCode::conflict, result.error(), reason);
    }
    return *std::move(result);
}

engine::Project& writableProject(Panel const& panel) {
    engine::Project& project = panel.engine.project();
    if (!project.canWrite()) {
        throw ApiError(ErrorCode::conflict,
                       "another program works on this project: until that ends it can only be looked at",
                       Reason::readOnly);
    }
    return project;
}

// A number of the body; nothing where it has no member of that name.
std::optional<double> bodyNumber(Request const& request, std::string_view name) {
    JSON::Element const& body = JSON::orEmpty(request.body);
    auto const has = [name](auto const& members) {
        return std::ranges::any_of(members, [name](auto const& member) { return member.key == name; });
    };
    std::optional<double> const number = JSON::findNumber(body, name);
    if (!number && (has(body.strings()) || has(body.flags()) || has(body.children()))) {
        throw ApiError(ErrorCode::badRequest, "\"" + std::string(name) + "\" is a number");
    }
    return number;
}

std::optional<double> bodyTime(Request const& request, std::string_view name) {
    std::optional<double> const time = bodyNumber(request, name);
    if (time && (!std::isfinite(*time) || *time < 0)) {
        throw ApiError(ErrorCode::badRequest,
                       "\"" + std::string(name) + "\" is a time in seconds, and not before 0");
    }
    return time;
}

std::optional<std::int64_t> bodyIndex(Request const& request, std::string_view name) {
    constexpr double most = 1e9;
    std::optional<double> const number = bodyNumber(request, name);
    if (number && (!(*number >= 0 && *number <= most) || *number != std::floor(*number))) {
        throw ApiError(ErrorCode::badRequest, "\"" + std::string(name) + "\" is an index, from 0 on");
    }
    return number ? std::optional(static_cast<std::int64_t>(*number)) : std::nullopt;
}

// The sequence in the path; an empty one where there is none of that name.
engine::Sequence sequenceOf(Panel const& panel, Request const& request) {
    return panel.engine.project().sequence(request.captures.at(0)).value_or(engine::Sequence());
}

// Number of the piece in the path, which is one of that sequence.
std::int64_t pieceOf(engine::Sequence const& sequence, Request const& request) {
    auto const number = static_cast<std::int64_t>(pathNumber(request, 1));
    if (std::ranges::find(sequence.placements, number, &engine::Placement::number) ==
        sequence.placements.end()) {
        throw ApiError(ErrorCode::notFound, "the sequence has no piece " + request.captures.at(1),
                       Reason::noPiece);
    }
    return number;
}

// The project's own text counts positions from 1, as the commands do.
void requireIndex(std::optional<std::int64_t> at, std::size_t last) {
    if (at && static_cast<std::size_t>(*at) > last) {
        throw ApiError(
            ErrorCode::conflict,
            "\"at\" " + (last == 0 ? std::string("can only be 0") : "goes from 0 to " + std::to_string(last)),
            Reason::notPlaceable);
    }
}

EditModifier openShown(RepositoryDesk const& desk, Session& session, std::string const& id) {
    RemoteAsset bare;
    bare.id = wide(id);
    if (!editOf(session, bare).isNull()) {
        return openAsset(session, bare);
    }
    if (std::optional<KnownClip> const known = desk.knownClip(id)) {
        return openAsset(session, known->asset);
    }
    RemoteAsset const found = session.findAsset(id);
    if (assetCell(found, LogAttribute(LogAttribute::eName)).empty()) {
        throw ApiError(ErrorCode::notFound, "the repository does not show a clip \"" + id + "\"",
                       Reason::unknownClip);
    }
    return openAsset(session, found);
}

// `steps`: what there is in the history for it, in words.
Response takeStep(Panel const& panel, engine::Result<std::string> (engine::Project::*step)(),
                  std::string engine::Project::History::*steps, Reason nothing) {
    engine::Project& project = writableProject(panel);
    bool const isAtEnd = (project.history().*steps).empty();
    std::string const text = orConflict((project.*step)(), isAtEnd ? nothing : Reason::none);
    JSON::Builder json;
    json.startChild(nullptr);
    addText(json, "text", text);
    addProject(json, "project", project);
    json.endChild();
    return jsonAnswer(utf8(json.getOutput()));
}

Response showSequence(Panel const& panel, Request const& request) {
    return jsonAnswer(sequenceJson(panel, request.captures.at(0)));
}

Response place(Panel const& panel, Request const& request) {
    RepositoryDesk& desk = panel.desk(bodyText(request, "repository", longestText_bytes));
    std::string const clip = bodyText(request, "clip", longestText_bytes);
    std::optional<double> const in = bodyTime(request, "in");
    std::optional<double> const out = bodyTime(request, "out");
    std::optional<std::int64_t> const at = bodyIndex(request, "at");
    engine::Project& project = writableProject(panel);
    requireIndex(at, sequenceOf(panel, request).placements.size());
    desk.ask(Turn::beforeSearches, [&](Session& session) {
        EditModifier const edit = openShown(desk, session, clip);
        static_cast<void>(orConflict(project.place(request.captures.at(0), edit->getCookie(), in, out, at),
                                     Reason::notPlaceable));
    });
    return showSequence(panel, request);
}

Response changePiece(Panel const& panel, Request const& request) {
    std::optional<double> const in = bodyTime(request, "in");
    std::optional<double> const out = bodyTime(request, "out");
    std::optional<std::int64_t> const at = bodyIndex(request, "at");
    if (at.has_value() == (in || out)) {
        throw ApiError(ErrorCode::badRequest,
                       "a piece is trimmed with \"in\" and \"out\", or moved to \"at\"");
    }
    engine::Sequence const sequence = sequenceOf(panel, request);
    std::int64_t const piece = pieceOf(sequence, request);
    engine::Project& project = writableProject(panel);
    requireIndex(at, sequence.placements.size() - 1);
    static_cast<void>(
        orConflict(at ? project.move(piece, *at) : project.trim(piece, in, out), Reason::notPlaceable));
    return showSequence(panel, request);
}

Response removePiece(Panel const& panel, Request const& request) {
    std::int64_t const piece = pieceOf(sequenceOf(panel, request), request);
    static_cast<void>(orConflict(writableProject(panel).remove(piece), Reason::none));
    return showSequence(panel, request);
}

Response showUsage(Panel const& panel, Request const& request) {
    std::string const format = queryText(request, "format", longestText_bytes);
    if (!format.empty() && format != "csv" && format != "json") {
        throw ApiError(ErrorCode::badRequest, "\"format\" is \"csv\" or \"json\"");
    }
    SequenceUsage const usage = usageOf(panel, request.captures.at(0));
    Response response = jsonAnswer(format == "csv" ? usageCsv(usage) : usageJson(usage));
    if (format == "csv") {
        response.type = "text/csv; charset=utf-8";
    }
    if (!format.empty()) {
        response.saveAs = plainFileName(usage.sequence + " usage", format);
    }
    return response;
}

struct FormatRow {
    engine::ExportFormat format;
    char const* extension;
    char const* type;
};
constexpr FormatRow formats[] = {
    {engine::ExportFormat::mlt, "mlt", "application/xml"},
    {engine::ExportFormat::edl, "edl", "text/plain; charset=utf-8"},
    {engine::ExportFormat::fcpxml, "fcpxml", "application/xml"},
    {engine::ExportFormat::otio, "otio", "application/json"},
};

char const* wordFor(engine::ExportWarning::Kind kind) {
    switch (kind) {
    case engine::ExportWarning::Kind::otherRate:
        return "other_rate";
    case engine::ExportWarning::Kind::tooManyEvents:
        return "too_many_events";
    case engine::ExportWarning::Kind::preview:
        break;
    }
    return "preview";
}

void addWarnings(JSON::Builder& json, char const* key, std::span<engine::ExportWarning const> warnings) {
    json.startArray(key);
    for (engine::ExportWarning const& warning : warnings) {
        json.startChild(nullptr);
        addText(json, "kind", wordFor(warning.kind));
        addText(json, "clip", warning.clip);
        addText(json, "text", warning.text);
        json.endChild();
    }
    json.endArray();
}

Response exportSequence(Panel const& panel, Request const& request) {
    auto const format = engine::exportFormatFromName(queryText(request, "format", longestText_bytes));
    if (!format) {
        throw ApiError(ErrorCode::badRequest, "\"format\" is mlt, edl, fcpxml or otio");
    }
    std::string const& name = request.captures.at(0);
    auto const gathered = engine::gatherSequence(panel.engine.project(), name);
    if (!gathered) {
        throw ApiError(ErrorCode::notFound, "there is no sequence \"" + name + "\"", Reason::noSequence);
    }
    engine::Exported const exported =
        orConflict(engine::exportSequence(*gathered, *format), Reason::noSequence);
    if (queryNumber(request, "check", 0, 0, 1) == 1) {
        JSON::Builder json;
        json.startChild(nullptr);
        addWarnings(json, "warnings", exported.warnings);
        json.endChild();
        return jsonAnswer(utf8(json.getOutput()));
    }
    FormatRow const& row = *std::ranges::find(formats, *format, &FormatRow::format);
    Response response;
    response.type = row.type;
    response.body = exported.text;
    response.saveAs = plainFileName(gathered->name, row.extension);
    return response;
}

} // namespace

void addProjectRoutes(Routes& routes, Panel const& panel) {
    // Ends with the routes.
    auto const watch = std::make_shared<ProjectWatch>(panel.engine.project(), panel.events);
    routes.push_back({"GET", "/api/project", [&panel, watch](Request const&) {
                          return jsonAnswer(projectJson(panel.engine.project()));
                      }});
    routes.push_back({"POST", "/api/project/undo", [&panel](Request const&) {
                          return takeStep(panel, &engine::Project::undo, &engine::Project::History::undo,
                                          Reason::nothingToUndo);
                      }});
    routes.push_back({"POST", "/api/project/redo", [&panel](Request const&) {
                          return takeStep(panel, &engine::Project::redo, &engine::Project::History::redo,
                                          Reason::nothingToRedo);
                      }});
    routes.push_back({"GET", "/api/sequences/{sequence}",
                      [&panel](Request const& request) { return showSequence(panel, request); }});
    routes.push_back({"POST", "/api/sequences/{sequence}/pieces",
                      [&panel](Request const& request) { return place(panel, request); }});
    routes.push_back({"PATCH", "/api/sequences/{sequence}/pieces/{piece}",
                      [&panel](Request const& request) { return changePiece(panel, request); }});
    routes.push_back({"DELETE", "/api/sequences/{sequence}/pieces/{piece}",
                      [&panel](Request const& request) { return removePiece(panel, request); }});
    routes.push_back({"GET", "/api/sequences/{sequence}/usage",
                      [&panel](Request const& request) { return showUsage(panel, request); }});
    routes.push_back({"GET", "/api/sequences/{sequence}/export",
                      [&panel](Request const& request) { return exportSequence(panel, request); }});
}

} // namespace zq::panel
