// Queueing the fetch of owned clips.
#pragma once

#include <memory>
#include <string>

#include "apps/zq/FetchJob.h"
#include "apps/zq/Session.h"

namespace zq {

struct QueuedFetch {
    std::uint64_t task = 0;
    std::shared_ptr<FetchJob const> job;
};

// Opens the edits of the assets, which are of the list of what is owned, and queues a task that fetches them.
// A clip that is in the list twice is fetched once. Throws CommandError where an edit cannot be opened or a
// clip is being fetched already; nothing is queued then.
[[nodiscard]] QueuedFetch queueFetch(Session& session, LightweightVector<RemoteAsset> const& assets,
                                     FetchJob::Watcher watcher = {});

// The event as a line of text, indented as the repository says.
[[nodiscard]] std::string eventLine(FetchEvent const& event);

// Waits for the fetch and says each event: progress as a bar on a terminal, and else as a line.
[[nodiscard]] engine::TaskReport followFetch(Session& session, QueuedFetch const& fetch);

} // namespace zq
