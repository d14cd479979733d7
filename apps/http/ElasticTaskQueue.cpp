#include "apps/http/ElasticTaskQueue.h"

#include <system_error>

namespace http {

void ElasticTaskQueue::enqueue(std::function<void()> task) {
    std::lock_guard const lock(mutex_);
    tasks_.push_back(std::move(task));
    if (idle_ < tasks_.size() && threads_.size() < mostThreads_) {
        try {
            threads_.emplace_back([this] { work(); });
        } catch (std::system_error const&) {
            // No further thread to be had: one of the others takes the task when it is done.
        }
    }
    wake_.notify_one();
}

void ElasticTaskQueue::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ++idle_;
        wake_.wait(lock, [this] { return ending_ || !tasks_.empty(); });
        --idle_;
        if (tasks_.empty()) {
            return;
        }
        std::function<void()> const task = std::move(tasks_.front());
        tasks_.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
}

void ElasticTaskQueue::shutdown() {
    {
        std::lock_guard const lock(mutex_);
        ending_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
    threads_.clear();
}

} // namespace http
