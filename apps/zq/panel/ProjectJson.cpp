#include "apps/zq/panel/ProjectJson.h"

#include "apps/zq/JsonOutput.h"

namespace zq::panel {

namespace {

char const* wordFor(engine::StepKind kind) {
    switch (kind) {
    case engine::StepKind::placing:
        return "placing";
    case engine::StepKind::relinking:
        return "relinking";
    case engine::StepKind::moving:
        return "moving";
    case engine::StepKind::trimming:
        return "trimming";
    case engine::StepKind::removing:
        break;
    }
    return "removing";
}

void addStep(JSON::Builder& json, char const* key, std::optional<engine::Project::StepFacts> const& step) {
    if (!step) {
        json.add(key, L"null", false);
        return;
    }
    json.startChild(key);
    addText(json, "kind", wordFor(step->kind));
    addText(json, "clip", step->clip);
    addText(json, "sequence", step->sequence);
    json.endChild();
}

} // namespace

void addProject(JSON::Builder& json, char const* key, engine::Project& project) {
    engine::Project::History const history = project.history();
    json.startChild(key);
    addNumber(json, "revision", history.revision);
    json.add("writable", project.canWrite());
    addText(json, "undo", history.undo);
    addText(json, "redo", history.redo);
    addStep(json, "undoStep", history.undoStep);
    addStep(json, "redoStep", history.redoStep);
    addTexts(json, "sequences", project.sequenceNames());
    json.endChild();
}

std::string projectJson(engine::Project& project) {
    JSON::Builder json;
    addProject(json, nullptr, project);
    return utf8(json.getOutput());
}

} // namespace zq::panel
