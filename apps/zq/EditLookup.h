// The edit that a person means: by the clip's number, or by the edit's own identity.
#pragma once

#include <string>

#include "apps/zq/Session.h"
#include "host/engine/project/Project.h"

namespace zq {

// The edit of the repository's clip: that of the project, and else a new one from what the service tells.
// Throws CommandError where the service has no such clip, or no edit comes of it.
[[nodiscard]] EditModifier openClip(Session& session, std::string const& id);
[[nodiscard]] EditModifier openAsset(Session& session, RemoteAsset const& asset);

// The record of an edit that is there: `text` is its cookie, or the number of a clip of the repository.
// Throws CommandError where there is none.
[[nodiscard]] engine::EditRecord findEdit(Session& session, std::string const& text);
// The record behind an edit that was opened. Throws CommandError where it is gone.
[[nodiscard]] engine::EditRecord recordOf(Session& session, EditModifier const& edit);

// The clip's number under which the repository of that short name knows the edit; empty where it does not.
[[nodiscard]] std::string clipIdOf(engine::EditRecord const& edit, WideString const& shortName);

} // namespace zq
