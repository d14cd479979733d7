#include "host/engine/tasks/TaskQueue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "host/engine/os/TaskContext.h"
#include "host/log/Log.h"

namespace engine {

namespace {

constexpr std::size_t mostEndedKept = 100;
constexpr std::chrono::hours longestWait{24 * 365}; // a deadline further off would overflow its clock
constexpr char const* cancelledText = "cancelled";

TaskResult failed(char const* text) noexcept {
    try {
        return {false, text};
    } catch (std::bad_alloc const&) {
        return {false, {}};
    }
}

} // namespace

class TaskQueue::Implementation {
public:
    explicit Implementation(unsigned workers);

    std::uint64_t add(std::string name, Work work);
    bool cancel(std::uint64_t number);
    [[nodiscard]] std::vector<TaskReport> reports() const;
    [[nodiscard]] std::optional<TaskReport> report(std::uint64_t number) const;
    [[nodiscard]] std::optional<TaskReport> waitFor(std::uint64_t number,
                                                    std::chrono::milliseconds atMost) const;
    void shutDown();

private:
    struct Task {
        Task(std::uint64_t ownNumber, std::string ownName, Work ownWork)
            : number(ownNumber), name(std::move(ownName)), work(std::move(ownWork)) {}

        std::uint64_t const number;
        std::string const name;
        TaskState state;
        Work work; // of whoever runs the task or takes it from the waiting ones
        // Under the queue's lock:
        std::string step;
        double progress = 0;
        std::uint64_t endedAs = 0; // rises with every end; 0 for a task that has not ended
        TaskResult result;
    };

    class Monitor final : public iTaskMonitor {
    public:
        Monitor(std::mutex& mutex, Task& task) noexcept : mutex_(mutex), task_(task) {}
        void setStep(std::string step) override {
            std::lock_guard const lock(mutex_);
            task_.step.swap(step);
            task_.progress = 0;
        }
        void setProgress(double fraction) override {
            std::lock_guard const lock(mutex_);
            task_.progress = fraction > 0 ? std::min(fraction, 1.0) : 0; // 0 also for what is no number
        }

    private:
        std::mutex& mutex_;
        Task& task_;
    };

    void work();
    void run(Task& task) noexcept;
    // These need the lock.
    [[nodiscard]] static TaskReport reportOf(Task const& task);
    [[nodiscard]] std::shared_ptr<Task> find(std::uint64_t number) const;
    void end(Task& task, TaskResult result) noexcept;
    void forgetOldest() noexcept;

    mutable std::mutex mutex_;
    std::condition_variable wanted_;
    mutable std::condition_variable ended_;
    // A task is shared with those who wait for its end: they see it also when it is no longer listed.
    std::map<std::uint64_t, std::shared_ptr<Task>> tasks_;
    std::deque<std::shared_ptr<Task>> waiting_;
    std::uint64_t lastNumber_ = 0;
    std::uint64_t ends_ = 0;
    std::size_t endedKept_ = 0;
    bool stopping_ = false;

    std::mutex joining_;
    std::vector<std::thread> threads_;
    // The queue whose worker this thread is.
    static thread_local Implementation const* workerOf_;
};

thread_local TaskQueue::Implementation const* TaskQueue::Implementation::workerOf_ = nullptr;

TaskQueue::Implementation::Implementation(unsigned workers) {
    unsigned const wanted = std::max(workers, 1U);
    threads_.reserve(wanted);
    for (unsigned i = 0; i < wanted; ++i) {
        try {
            threads_.emplace_back([this] { work(); });
        } catch (std::system_error const& error) {
            if (threads_.empty()) {
                throw;
            }
            Log("Only %zu of %u threads for tasks could be started: %s", threads_.size(), wanted,
                error.what());
            break;
        }
    }
}

std::uint64_t TaskQueue::Implementation::add(std::string name, Work work) {
    // Outlive the lock: what a task holds may use the queue when it goes.
    std::shared_ptr<Task> task;
    Work dropped;
    {
        std::lock_guard const lock(mutex_);
        task = std::make_shared<Task>(lastNumber_ + 1, std::move(name), std::move(work));
        if (!stopping_) {
            waiting_.push_back(task);
        }
        try {
            tasks_.emplace(task->number, task);
        } catch (...) {
            if (!stopping_) {
                waiting_.pop_back();
            }
            throw;
        }
        ++lastNumber_;
        if (stopping_) {
            dropped.swap(task->work);
            task->state.cancel();
            end(*task, failed(cancelledText));
        }
    }
    wanted_.notify_one();
    return task->number;
}

bool TaskQueue::Implementation::cancel(std::uint64_t number) {
    Work dropped;
    std::lock_guard const lock(mutex_);
    std::shared_ptr<Task> const task = find(number);
    if (!task || task->endedAs != 0) {
        return false;
    }
    task->state.cancel();
    auto const place = std::ranges::find(waiting_, task);
    if (place != waiting_.end()) {
        waiting_.erase(place);
        dropped.swap(task->work);
        end(*task, failed(cancelledText));
    }
    return true;
}

std::vector<TaskReport> TaskQueue::Implementation::reports() const {
    std::vector<TaskReport> all;
    std::lock_guard const lock(mutex_);
    all.reserve(tasks_.size());
    for (auto const& [number, task] : tasks_) {
        all.push_back(reportOf(*task));
    }
    return all;
}

std::optional<TaskReport> TaskQueue::Implementation::report(std::uint64_t number) const {
    return waitFor(number, std::chrono::milliseconds(0));
}

std::optional<TaskReport> TaskQueue::Implementation::waitFor(std::uint64_t number,
                                                             std::chrono::milliseconds atMost) const {
    auto const wait =
        std::clamp<std::chrono::milliseconds>(atMost, std::chrono::milliseconds(0), longestWait);
    auto const deadline = std::chrono::steady_clock::now() + wait;
    std::unique_lock lock(mutex_);
    std::shared_ptr<Task> const task = find(number);
    if (!task) {
        return std::nullopt;
    }
    ended_.wait_until(lock, deadline, [&] { return task->endedAs != 0; });
    return reportOf(*task);
}

void TaskQueue::Implementation::shutDown() {
    std::deque<std::shared_ptr<Task>> dropped;
    {
        std::lock_guard const lock(mutex_);
        stopping_ = true;
        dropped.swap(waiting_);
        for (auto const& [number, task] : tasks_) {
            task->state.cancel();
        }
        for (auto const& task : dropped) {
            end(*task, failed(cancelledText));
        }
    }
    wanted_.notify_all();
    for (auto const& task : dropped) {
        task->work = nullptr;
    }
    if (workerOf_ == this) {
        return; // a task that shuts its own queue down cannot wait for itself
    }
    std::lock_guard const lock(joining_);
    for (std::thread& thread : threads_) {
        if (thread.joinable()) {
            thread.join();
        }
    }
}

void TaskQueue::Implementation::work() {
    workerOf_ = this;
    for (;;) {
        std::shared_ptr<Task> task;
        {
            std::unique_lock lock(mutex_);
            wanted_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
            if (waiting_.empty()) {
                return;
            }
            task = std::move(waiting_.front());
            waiting_.pop_front();
        }
        run(*task);
    }
}

void TaskQueue::Implementation::run(Task& task) noexcept {
    std::optional<ScopedTask> scope(std::in_place, task.state);
    TaskResult result;
    try {
        Monitor monitor(mutex_, task);
        try {
            result = task.work(monitor);
        } catch (std::exception const& error) {
            result = failed(error.what());
            Log("The task \"%s\" ended with an error: %s", task.name.c_str(), error.what());
        }
    } catch (...) {
        if (result.succeeded) {
            result = failed("unknown error");
        }
    }
    task.work = nullptr; // what it holds goes before anyone sees its end
    std::lock_guard const lock(mutex_);
    scope.reset();
    end(task, std::move(result));
}

TaskReport TaskQueue::Implementation::reportOf(Task const& task) {
    return {task.number, task.name,         task.state.status(), task.progress,
            task.step,   task.endedAs != 0, task.result};
}

std::shared_ptr<TaskQueue::Implementation::Task> TaskQueue::Implementation::find(std::uint64_t number) const {
    auto const found = tasks_.find(number);
    return found != tasks_.end() ? found->second : nullptr;
}

void TaskQueue::Implementation::end(Task& task, TaskResult result) noexcept {
    std::ranges::replace_if(
        result.text, [](char c) { return (c >= 0 && c < 0x20) || c == 0x7f; }, ' ');
    task.result = std::move(result);
    task.endedAs = ++ends_;
    if (++endedKept_ > mostEndedKept) {
        forgetOldest();
    }
    ended_.notify_all();
}

void TaskQueue::Implementation::forgetOldest() noexcept {
    auto const order = [](auto const& entry) {
        return entry.second->endedAs != 0 ? entry.second->endedAs : UINT64_MAX;
    };
    tasks_.erase(std::ranges::min_element(tasks_, {}, order));
    --endedKept_;
}

TaskQueue::TaskQueue(unsigned workers) : implementation_(std::make_unique<Implementation>(workers)) {}

TaskQueue::~TaskQueue() {
    shutDown();
}

std::uint64_t TaskQueue::add(std::string name, Work work) {
    return implementation_->add(std::move(name), std::move(work));
}

bool TaskQueue::cancel(std::uint64_t number) {
    return implementation_->cancel(number);
}

std::vector<TaskReport> TaskQueue::reports() const {
    return implementation_->reports();
}

std::optional<TaskReport> TaskQueue::report(std::uint64_t number) const {
    return implementation_->report(number);
}

std::optional<TaskReport> TaskQueue::waitFor(std::uint64_t number, std::chrono::milliseconds atMost) const {
    return implementation_->waitFor(number, atMost);
}

void TaskQueue::shutDown() {
    implementation_->shutDown();
}

} // namespace engine
