// A clip that nobody has shown since the start of the program, as the project's edit tells of it.
#pragma once

#include <optional>
#include <string>

#include "host/engine/project/Project.h"
#include "repository/RemoteAsset.h"

namespace zq::panel {

// The project's edit of the repository's clip; nothing where it has none. Thread: any.
[[nodiscard]] std::optional<engine::EditRecord>
editOfClip(engine::Project& project, std::string const& repository, std::string const& id);

// The clip as its edit keeps it: name and texts, rate, channels and the place of its preview. Nothing where
// the project has no edit of that clip. Asks nobody. Thread: any.
[[nodiscard]] std::optional<RemoteAsset> clipOfEdit(engine::Project& project, std::string const& repository,
                                                    std::string const& id);

} // namespace zq::panel
