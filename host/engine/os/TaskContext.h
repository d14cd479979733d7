// Which task runs on which thread, and how one is cancelled.
//
// A TaskState belongs to whoever starts a piece of work and outlives it. The code that does the work stands
// in the scope of a ScopedTask, and learns of a cancellation through the host's door.
#pragma once

#include <atomic>

#include "host/tasks/BackgroundTaskQueueBase.h"

namespace engine {

// The status of one task: waiting, running, then finished, or cancelling from the moment of cancel() on.
class TaskState {
public:
    [[nodiscard]] iBackgroundTask::eStatus status() const noexcept { return status_.load(); }
    // Does nothing once the task has finished. Thread: any, also in a signal handler.
    void cancel() noexcept;

private:
    friend class ScopedTask;
    void change(iBackgroundTask::eStatus from, iBackgroundTask::eStatus to) noexcept {
        status_.compare_exchange_strong(from, to);
    }

    std::atomic<iBackgroundTask::eStatus> status_{iBackgroundTask::eWaiting};
    static_assert(std::atomic<iBackgroundTask::eStatus>::is_always_lock_free);
};

// Makes the state that of the calling thread's task. Scopes may nest; the innermost answers. A task that was
// not cancelled has finished when its scope ends.
class ScopedTask {
public:
    explicit ScopedTask(TaskState& state) noexcept;
    ~ScopedTask();
    ScopedTask(ScopedTask const&) = delete;
    ScopedTask& operator=(ScopedTask const&) = delete;

private:
    TaskState& state_;
    TaskState* const outer_;
};

class TaskContext final : public iTaskContext {
public:
    iBackgroundTask::eStatus currentTaskStatus() override;
};

} // namespace engine
