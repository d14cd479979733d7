// The project as the panel's JSON. Thread: any.
#pragma once

#include "host/engine/project/Project.h"
#include "host/json/Builder.h"

namespace zq::panel {

// As an object; unnamed where the key is null.
void addProject(JSON::Builder& json, char const* key, engine::Project& project);
[[nodiscard]] std::string projectJson(engine::Project& project);

} // namespace zq::panel
