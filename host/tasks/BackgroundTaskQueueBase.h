// What a piece of code may ask about the background task that runs it.
#pragma once

#include <cstdint>

#include "host/object/Api.h"

class ZQ_API iBackgroundTask {
public:
    enum eStatus : std::int32_t {
        eWaiting = 0,
        eRunning = 1,
        eFinished = 2,
        eCancelling = 3,
    };
};

// What stands behind the door. Thread: any; answers for the calling thread.
class ZQ_API iTaskContext {
public:
    virtual ~iTaskContext();
    [[nodiscard]] virtual iBackgroundTask::eStatus currentTaskStatus() = 0;
};

class ZQ_API BackgroundTaskQueueBase {
public:
    // Status of the task on this thread; eRunning on a thread that runs none.
    [[nodiscard]] static iBackgroundTask::eStatus getCurrentTaskStatus();
};
