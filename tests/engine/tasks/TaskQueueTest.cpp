#include "host/engine/tasks/TaskQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "host/HostServices.h"
#include "host/engine/os/TaskContext.h"
#include "host/tasks/BackgroundTaskQueueBase.h"

namespace {

using namespace std::chrono_literals;
using engine::iTaskMonitor;
using engine::TaskQueue;
using engine::TaskReport;
using engine::TaskResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto patience = 20s; // ends a test that would hang

TaskResult nothing(iTaskMonitor&) {
    return {};
}

bool isCancelled() {
    return BackgroundTaskQueueBase::getCurrentTaskStatus() == iBackgroundTask::eCancelling;
}

// Says that it has begun, and runs until it is cancelled.
class Endless {
public:
    TaskQueue::Work work() {
        return [this](iTaskMonitor&) -> TaskResult {
            begun_.set_value();
            while (!isCancelled()) {
                std::this_thread::yield();
            }
            return {false, "stopped half-way"};
        };
    }
    void waitForBegin() { begun_.get_future().wait(); }

private:
    std::promise<void> begun_;
};

// Runs until it is let go.
class Gate {
public:
    TaskQueue::Work work() {
        return [this](iTaskMonitor&) -> TaskResult {
            begun_.set_value();
            open_.get_future().wait();
            return {true, "let go"};
        };
    }
    void waitForBegin() { begun_.get_future().wait(); }
    void open() { open_.set_value(); }

private:
    std::promise<void> begun_;
    std::promise<void> open_;
};

class Tasks : public testing::Test {
protected:
    Tasks() {
        HostServices services;
        services.tasks = &context_;
        before_ = installHost(services);
    }
    ~Tasks() override { installHost(before_); }

    static TaskReport ended(TaskQueue const& queue, std::uint64_t number) {
        std::optional<TaskReport> const report = queue.waitFor(number, patience);
        EXPECT_TRUE(report && report->ended);
        return report.value_or(TaskReport());
    }

private:
    engine::TaskContext context_;
    HostServices before_;
};

TEST_F(Tasks, ATaskRunsOnAThreadOfItsOwnAndGivesItsResult) {
    TaskQueue queue(1);
    std::thread::id elsewhere;
    std::uint64_t const number = queue.add("one", [&](iTaskMonitor&) -> TaskResult {
        elsewhere = std::this_thread::get_id();
        EXPECT_EQ(BackgroundTaskQueueBase::getCurrentTaskStatus(), iBackgroundTask::eRunning);
        return {true, "done with it"};
    });
    TaskReport const report = ended(queue, number);
    EXPECT_EQ(number, 1U);
    EXPECT_EQ(report.number, 1U);
    EXPECT_EQ(report.name, "one");
    EXPECT_EQ(report.status, iBackgroundTask::eFinished);
    EXPECT_TRUE(report.result.succeeded);
    EXPECT_EQ(report.result.text, "done with it");
    EXPECT_NE(elsewhere, std::this_thread::get_id());
}

TEST_F(Tasks, WaitingTasksBeginInTheirOrder) {
    Gate gate;
    std::vector<int> order;
    TaskQueue queue(1);
    queue.add("gate", gate.work());
    std::uint64_t last = 0;
    for (int i = 0; i < 5; ++i) {
        last = queue.add("counts", [&order, i](iTaskMonitor&) -> TaskResult {
            order.push_back(i);
            return {};
        });
    }
    EXPECT_EQ(last, 6U);
    gate.open();
    ended(queue, last);
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(Tasks, AsManyRunAtOnceAsThereAreWorkers) {
    std::latch together(3);
    TaskQueue queue(3);
    std::vector<std::uint64_t> numbers;
    for (int i = 0; i < 3; ++i) {
        numbers.push_back(queue.add("meets the others", [&](iTaskMonitor&) -> TaskResult {
            together.arrive_and_wait();
            return {};
        }));
    }
    for (std::uint64_t const number : numbers) {
        EXPECT_TRUE(ended(queue, number).result.succeeded);
    }
}

TEST_F(Tasks, NoMoreRunAtOnceThanThereAreWorkers) {
    Gate first;
    Gate second;
    TaskQueue queue(2);
    queue.add("first", first.work());
    queue.add("second", second.work());
    std::uint64_t const third = queue.add("third", nothing);
    first.waitForBegin();
    second.waitForBegin();
    EXPECT_EQ(queue.report(third)->status, iBackgroundTask::eWaiting);
    EXPECT_FALSE(queue.report(third)->ended);
    first.open();
    EXPECT_TRUE(ended(queue, third).result.succeeded);
    second.open();
}

TEST_F(Tasks, AQueueOfNoWorkersHasOne) {
    TaskQueue queue(0);
    EXPECT_TRUE(ended(queue, queue.add("one", nothing)).result.succeeded);
}

TEST_F(Tasks, AWaitingTaskThatIsCancelledEndsAtOnceAndNeverRuns) {
    Gate gate;
    bool ran = false;
    TaskQueue queue(1);
    queue.add("gate", gate.work());
    std::uint64_t const number = queue.add("waits", [&](iTaskMonitor&) -> TaskResult {
        ran = true;
        return {};
    });
    EXPECT_TRUE(queue.cancel(number));
    TaskReport const report = *queue.report(number);
    EXPECT_TRUE(report.ended);
    EXPECT_EQ(report.status, iBackgroundTask::eCancelling);
    EXPECT_FALSE(report.result.succeeded);
    EXPECT_EQ(report.result.text, "cancelled");
    EXPECT_FALSE(queue.cancel(number)) << "it has ended";
    gate.open();
    ended(queue, queue.add("last", nothing));
    EXPECT_FALSE(ran);
}

TEST_F(Tasks, ARunningTaskLearnsThatItIsCancelledAndEndsInItsOwnWords) {
    Endless endless;
    TaskQueue queue(1);
    std::uint64_t const number = queue.add("endless", endless.work());
    endless.waitForBegin();
    EXPECT_EQ(queue.report(number)->status, iBackgroundTask::eRunning);
    EXPECT_TRUE(queue.cancel(number));
    TaskReport const report = ended(queue, number);
    EXPECT_EQ(report.status, iBackgroundTask::eCancelling);
    EXPECT_EQ(report.result.text, "stopped half-way");
    EXPECT_TRUE(ended(queue, queue.add("next", nothing)).result.succeeded) << "its thread is free again";
}

TEST_F(Tasks, WhatHasEndedOrNeverWasCannotBeCancelled) {
    TaskQueue queue(1);
    std::uint64_t const number = queue.add("one", nothing);
    ended(queue, number);
    EXPECT_FALSE(queue.cancel(number));
    EXPECT_FALSE(queue.cancel(0));
    EXPECT_FALSE(queue.cancel(99));
    EXPECT_EQ(queue.report(number)->status, iBackgroundTask::eFinished);
}

TEST_F(Tasks, WaitingForATaskEndsWithItsTime) {
    Gate gate;
    TaskQueue queue(1);
    std::uint64_t const number = queue.add("gate", gate.work());
    gate.waitForBegin();
    for (auto const atMost : {0ms, 1ms, std::chrono::milliseconds::min()}) {
        std::optional<TaskReport> const report = queue.waitFor(number, atMost);
        ASSERT_TRUE(report);
        EXPECT_FALSE(report->ended);
        EXPECT_EQ(report->status, iBackgroundTask::eRunning);
    }
    gate.open();
    EXPECT_TRUE(queue.waitFor(number, std::chrono::milliseconds::max())->ended);
    EXPECT_FALSE(queue.waitFor(99, patience));
    EXPECT_FALSE(queue.report(99));
}

TEST_F(Tasks, ProgressIsOfTheStepAndStaysBetweenNothingAndAll) {
    TaskQueue queue(1);
    std::uint64_t const number = queue.add("moves", [&](iTaskMonitor& monitor) -> TaskResult {
        EXPECT_EQ(queue.report(1)->step, "");
        EXPECT_EQ(queue.report(1)->progress, 0);
        monitor.setStep("fetching");
        for (auto const& [given, shown] : {std::pair(0.5, 0.5),
                                           {-1.0, 0.0},
                                           {7.0, 1.0},
                                           {std::numeric_limits<double>::quiet_NaN(), 0.0}}) {
            monitor.setProgress(given);
            EXPECT_EQ(queue.report(1)->progress, shown);
        }
        monitor.setProgress(1);
        monitor.setStep("linking");
        EXPECT_EQ(queue.report(1)->progress, 0) << "a step begins at its beginning";
        monitor.setProgress(0.25);
        return {};
    });
    TaskReport const report = ended(queue, number);
    EXPECT_EQ(report.step, "linking");
    EXPECT_EQ(report.progress, 0.25);
}

TEST_F(Tasks, AnExceptionIsAFailureWithItsText) {
    TaskQueue queue(1);
    std::uint64_t const known = queue.add(
        "throws", [](iTaskMonitor&) -> TaskResult { throw std::runtime_error("the disk\nis gone"); });
    std::uint64_t const memory =
        queue.add("throws", [](iTaskMonitor&) -> TaskResult { throw std::bad_alloc(); });
    std::uint64_t const unknown = queue.add("throws", [](iTaskMonitor&) -> TaskResult { throw 7; });
    std::uint64_t const empty = queue.add("empty", TaskQueue::Work());
    EXPECT_EQ(ended(queue, known).result.text, "the disk is gone") << "one line";
    EXPECT_EQ(ended(queue, memory).result.text, std::bad_alloc().what());
    for (std::uint64_t const number : {known, memory, unknown, empty}) {
        TaskReport const report = ended(queue, number);
        EXPECT_FALSE(report.result.succeeded) << number;
        EXPECT_FALSE(report.result.text.empty()) << number;
        EXPECT_EQ(report.status, iBackgroundTask::eFinished) << number;
    }
    EXPECT_TRUE(ended(queue, queue.add("next", nothing)).result.succeeded);
}

TEST_F(Tasks, OfWhatHasEndedTheLastHundredAreKept) {
    TaskQueue queue(1);
    for (int i = 0; i < 250; ++i) {
        queue.add(std::to_string(i + 1), nothing);
    }
    ended(queue, 250);
    std::vector<TaskReport> const reports = queue.reports();
    ASSERT_EQ(reports.size(), 100U);
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_EQ(reports[i].number, 151 + i);
        EXPECT_EQ(reports[i].name, std::to_string(151 + i));
    }
    EXPECT_FALSE(queue.report(150));
}

TEST_F(Tasks, WhatRunsAndWaitsIsNeverForgotten) {
    Gate gate;
    TaskQueue queue(2);
    std::uint64_t const running = queue.add("gate", gate.work());
    gate.waitForBegin();
    std::uint64_t last = 0;
    for (int i = 0; i < 150; ++i) {
        last = queue.add("passes", nothing);
    }
    ended(queue, last);
    EXPECT_EQ(queue.reports().size(), 101U);
    EXPECT_EQ(queue.reports().front().number, running);
    gate.open();
    ended(queue, running);
    EXPECT_EQ(queue.reports().size(), 100U);
    EXPECT_TRUE(queue.report(running)) << "it ended last";
}

TEST_F(Tasks, WhatATaskHoldsIsGoneWhenItHasEnded) {
    TaskQueue queue(1);
    auto const held = std::make_shared<int>(1);
    std::uint64_t const number = queue.add("holds", [held](iTaskMonitor&) -> TaskResult { return {}; });
    ended(queue, number);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Tasks, ShuttingDownEndsWhatWaitsAndRunsAndStartsNothingMore) {
    Endless endless[2];
    TaskQueue queue(2);
    for (Endless& one : endless) {
        queue.add("endless", one.work());
    }
    auto const held = std::make_shared<int>(1);
    std::uint64_t const waiting = queue.add("waits", [held](iTaskMonitor&) -> TaskResult {
        ADD_FAILURE() << "a task ran after the shutting down";
        return {};
    });
    for (Endless& one : endless) {
        one.waitForBegin();
    }
    queue.shutDown();
    EXPECT_EQ(held.use_count(), 1);
    for (std::uint64_t const number : {std::uint64_t{1}, std::uint64_t{2}, waiting}) {
        EXPECT_TRUE(queue.report(number)->ended);
        EXPECT_EQ(queue.report(number)->status, iBackgroundTask::eCancelling);
    }
    std::uint64_t const late = queue.add("late", nothing);
    EXPECT_EQ(late, 4U);
    EXPECT_TRUE(queue.report(late)->ended);
    EXPECT_FALSE(queue.report(late)->result.succeeded);
    EXPECT_EQ(queue.report(late)->status, iBackgroundTask::eCancelling);
    queue.shutDown();
}

TEST_F(Tasks, ATaskMayShutItsQueueDown) {
    TaskQueue queue(1);
    std::uint64_t const number = queue.add("ends all", [&](iTaskMonitor&) -> TaskResult {
        queue.shutDown();
        return {isCancelled(), "done"};
    });
    EXPECT_TRUE(ended(queue, number).result.succeeded);
    queue.shutDown();
}

TEST_F(Tasks, TheEndOfTheQueueWaitsForItsTasks) {
    Endless endless;
    bool left = false;
    {
        TaskQueue queue(1);
        TaskQueue::Work const work = endless.work();
        queue.add("endless", [&left, work](iTaskMonitor& monitor) {
            TaskResult result = work(monitor);
            left = true;
            return result;
        });
        endless.waitForBegin();
    }
    EXPECT_TRUE(left);
}

TEST_F(Tasks, ManyThreadsAddCancelAndReadAtOnce) {
    constexpr int each = 200;
    std::atomic<int> ran{0};
    std::atomic<int> cancelled{0};
    TaskQueue queue(4);
    std::vector<std::thread> users;
    for (int user = 0; user < 4; ++user) {
        users.emplace_back([&, user] {
            for (int i = 0; i < each; ++i) {
                std::uint64_t const number = queue.add("one", [&](iTaskMonitor& monitor) -> TaskResult {
                    monitor.setStep("runs");
                    monitor.setProgress(0.5);
                    ++ran;
                    return {true, {}};
                });
                if (i % 3 == user % 3 && queue.cancel(number)) {
                    ++cancelled;
                }
                EXPECT_LE(queue.reports().size(), 100U + 4 * each);
            }
        });
    }
    for (std::thread& user : users) {
        user.join();
    }
    std::uint64_t const last = queue.add("last", nothing);
    EXPECT_EQ(last, 4U * each + 1);
    ended(queue, last);
    queue.shutDown();
    EXPECT_LE(ran, 4 * each);
    EXPECT_GE(ran + cancelled, 4 * each) << "what was not cancelled ran";
}

} // namespace
