// Whether the work at hand is still wanted.
#pragma once

namespace engine {

// True while the calling thread's task is being cancelled; false without a task. Thread: any.
[[nodiscard]] bool isTaskCancelled() noexcept;

} // namespace engine
