#include "host/engine/os/isTaskCancelled.h"

#include "host/tasks/BackgroundTaskQueueBase.h"

namespace engine {

bool isTaskCancelled() noexcept {
    return BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling;
}

} // namespace engine
