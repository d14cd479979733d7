// Threads for the connections of a server: as many as are needed, up to a bound.
//
// A kept-alive connection holds its thread while it is idle, so a fixed small pool would let a few idle
// clients lock out all others, and a fixed large one would cost every start.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include <httplib.h>

namespace http {

class ElasticTaskQueue final : public httplib::TaskQueue {
public:
    explicit ElasticTaskQueue(std::size_t mostThreads) : mostThreads_(mostThreads) {}
    ~ElasticTaskQueue() override { shutdown(); }

    // Runs the task on an idle thread, a new one, or, when all are busy and there are as many as may be,
    // later.
    void enqueue(std::function<void()> task) override;
    // Runs what is queued and returns when all threads have ended.
    void shutdown() override;

private:
    void work();

    std::size_t const mostThreads_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> tasks_;
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool ending_ = false;
};

} // namespace http
