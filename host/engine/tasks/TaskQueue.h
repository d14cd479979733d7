// Work that goes on while its user does something else: a bounded number of threads, and a list of what they
// have done, do and will do.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/tasks/BackgroundTaskQueueBase.h"

namespace engine {

struct TaskResult {
    bool succeeded = true;
    std::string text; // one line: what was done, or why not
};

struct TaskReport {
    std::uint64_t number = 0;
    std::string name;
    iBackgroundTask::eStatus status = iBackgroundTask::eWaiting;
    double progress = 0; // of its present step, from 0 to 1
    std::string step;    // what it does now, as it says itself
    bool ended = false;  // `result` holds; `status` is eFinished, or eCancelling for a cancelled one
    TaskResult result;
};

// How a task tells what it does. Thread: the task's own.
class iTaskMonitor {
public:
    virtual ~iTaskMonitor() = default;
    virtual void setStep(std::string step) = 0;
    virtual void setProgress(double fraction) = 0;
};

// Thread: any.
class TaskQueue final : public BackgroundTaskQueueBase {
public:
    // Runs as a task: BackgroundTaskQueueBase::getCurrentTaskStatus answers for it. An exception ends it as
    // failed, with its text.
    using Work = std::function<TaskResult(iTaskMonitor& monitor)>;

    explicit TaskQueue(unsigned workers = 2);
    // Cancels everything and waits for what runs.
    ~TaskQueue();
    TaskQueue(TaskQueue const&) = delete;
    TaskQueue& operator=(TaskQueue const&) = delete;

    // Gives the task's number; numbers rise from 1. Waiting tasks begin in this order. After shutDown a task
    // ends at once, as cancelled.
    std::uint64_t add(std::string name, Work work);
    // False where no task of that number waits or runs. A waiting task ends at once, a running one when it
    // sees its status.
    bool cancel(std::uint64_t number);
    // Of all tasks, in their order; of those that have ended, the last hundred.
    [[nodiscard]] std::vector<TaskReport> reports() const;
    [[nodiscard]] std::optional<TaskReport> report(std::uint64_t number) const;
    // Waits until the task has ended, at most that long; then its report, as it is at that moment.
    [[nodiscard]] std::optional<TaskReport> waitFor(std::uint64_t number,
                                                    std::chrono::milliseconds atMost) const;
    // Cancels everything, starts nothing any more, and waits for what runs.
    void shutDown();

private:
    class Implementation;
    std::unique_ptr<Implementation> const implementation_;
};

} // namespace engine
