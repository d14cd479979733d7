#include "host/HostServices.h"
#include "host/os/getTime32.h"
#include "host/tasks/BackgroundTaskQueueBase.h"

iTaskContext::~iTaskContext() = default;
iClock::~iClock() = default;

iBackgroundTask::eStatus BackgroundTaskQueueBase::getCurrentTaskStatus() {
    iTaskContext* const tasks = installedHost().tasks;
    return tasks != nullptr ? tasks->currentTaskStatus() : iBackgroundTask::eRunning;
}

std::uint32_t getTime32() {
    iClock* const clock = installedHost().clock;
    return clock != nullptr ? clock->seconds() : 0;
}
