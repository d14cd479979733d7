#include "apps/zq/panel/ProjectJson.h"

#include "apps/zq/JsonOutput.h"

namespace zq::panel {

void addProject(JSON::Builder& json, char const* key, engine::Project& project) {
    engine::Project::History const history = project.history();
    json.startChild(key);
    addNumber(json, "revision", history.revision);
    json.add("writable", project.canWrite());
    addText(json, "undo", history.undo);
    addText(json, "redo", history.redo);
    addTexts(json, "sequences", project.sequenceNames());
    json.endChild();
}

std::string projectJson(engine::Project& project) {
    JSON::Builder json;
    addProject(json, nullptr, project);
    return utf8(json.getOutput());
}

} // namespace zq::panel
