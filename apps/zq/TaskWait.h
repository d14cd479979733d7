// Waiting for a background task with a progress bar.
#pragma once

#include <cstdint>
#include <functional>

#include "apps/zq/Session.h"
#include "host/engine/tasks/TaskQueue.h"

namespace zq {

// Calls `meanwhile` again and again until the task has ended, and once after that; a signal cancels the task,
// whose end is waited for then. The report of the ended task.
[[nodiscard]] engine::TaskReport waitForTask(Session& session, std::uint64_t number,
                                             std::function<void(engine::TaskReport const&)> const& meanwhile);

// True when a signal has cancelled the command on this thread.
[[nodiscard]] bool isCommandCancelled();

} // namespace zq
