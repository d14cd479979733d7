#include "apps/zq/TaskWait.h"

#include <chrono>

#include "host/tasks/BackgroundTaskQueueBase.h"

namespace zq {

bool isCommandCancelled() {
    return BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling;
}

engine::TaskReport waitForTask(Session& session, std::uint64_t number,
                               std::function<void(engine::TaskReport const&)> const& meanwhile) {
    constexpr std::chrono::milliseconds step{50};
    engine::TaskQueue& tasks = session.engine().tasks();
    bool cancelled = false;
    for (;;) {
        std::optional<engine::TaskReport> const report = tasks.waitFor(number, step);
        if (!report || report->ended) {
            engine::TaskReport const last = report.value_or(engine::TaskReport());
            meanwhile(last);
            session.live().clearProgress();
            return last;
        }
        meanwhile(*report);
        if (!cancelled && isCommandCancelled()) {
            cancelled = true;
            tasks.cancel(number);
        }
    }
}

} // namespace zq
