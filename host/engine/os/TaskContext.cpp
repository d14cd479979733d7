#include "host/engine/os/TaskContext.h"

#include <utility>

namespace engine {

namespace {

thread_local TaskState* current = nullptr;

} // namespace

void TaskState::cancel() noexcept {
    change(iBackgroundTask::eWaiting, iBackgroundTask::eCancelling);
    change(iBackgroundTask::eRunning, iBackgroundTask::eCancelling);
}

ScopedTask::ScopedTask(TaskState& state) noexcept : state_(state), outer_(std::exchange(current, &state)) {
    state_.change(iBackgroundTask::eWaiting, iBackgroundTask::eRunning);
}

ScopedTask::~ScopedTask() {
    state_.change(iBackgroundTask::eRunning, iBackgroundTask::eFinished);
    current = outer_;
}

iBackgroundTask::eStatus TaskContext::currentTaskStatus() {
    return current != nullptr ? current->status() : iBackgroundTask::eRunning;
}

} // namespace engine
