#include "host/engine/os/TaskContext.h"

#include <gtest/gtest.h>

#include <ctime>
#include <thread>

#include "host/engine/os/SystemClock.h"

namespace {

using engine::ScopedTask;
using engine::TaskState;

class TaskContext : public testing::Test {
protected:
    engine::TaskContext context_;
};

TEST_F(TaskContext, AThreadWithoutATaskIsRunning) {
    EXPECT_EQ(context_.currentTaskStatus(), iBackgroundTask::eRunning);
}

TEST_F(TaskContext, ATaskWaitsThenRunsThenHasFinished) {
    TaskState state;
    EXPECT_EQ(state.status(), iBackgroundTask::eWaiting);
    {
        ScopedTask const task(state);
        EXPECT_EQ(state.status(), iBackgroundTask::eRunning);
        EXPECT_EQ(context_.currentTaskStatus(), iBackgroundTask::eRunning);
    }
    EXPECT_EQ(state.status(), iBackgroundTask::eFinished);
}

TEST_F(TaskContext, ACancelledTaskLearnsOfItAndStaysCancelled) {
    TaskState state;
    {
        ScopedTask const task(state);
        state.cancel();
        EXPECT_EQ(context_.currentTaskStatus(), iBackgroundTask::eCancelling);
    }
    EXPECT_EQ(state.status(), iBackgroundTask::eCancelling);
    EXPECT_EQ(context_.currentTaskStatus(), iBackgroundTask::eRunning);
}

TEST_F(TaskContext, ATaskThatIsCancelledBeforeItStartsFindsItselfCancelled) {
    TaskState state;
    state.cancel();
    ScopedTask const task(state);
    EXPECT_EQ(context_.currentTaskStatus(), iBackgroundTask::eCancelling);
}

TEST_F(TaskContext, CancellingAFinishedTaskDoesNothing) {
    TaskState state;
    { ScopedTask const task(state); }
    state.cancel();
    EXPECT_EQ(state.status(), iBackgroundTask::eFinished);
}

TEST_F(TaskContext, TheInnermostScopeAnswersAndTheOuterOneComesBack) {
    TaskState outer;
    TaskState inner;
    ScopedTask const outerTask(outer);
    outer.cancel();
    {
        ScopedTask const innerTask(inner);
        EXPECT_EQ(context_.currentTaskStatus(), iBackgroundTask::eRunning);
    }
    EXPECT_EQ(context_.currentTaskStatus(), iBackgroundTask::eCancelling);
}

TEST_F(TaskContext, EachThreadHasItsOwnTask) {
    TaskState state;
    ScopedTask const task(state);
    state.cancel();
    iBackgroundTask::eStatus elsewhere = iBackgroundTask::eWaiting;
    std::thread([&] { elsewhere = context_.currentTaskStatus(); }).join();
    EXPECT_EQ(elsewhere, iBackgroundTask::eRunning);
}

TEST(SystemClock, GivesTheSecondsOfTheSystem) {
    auto const before = static_cast<std::uint32_t>(std::time(nullptr));
    std::uint32_t const now = engine::SystemClock().seconds();
    EXPECT_GE(now, before);
    EXPECT_LE(now, static_cast<std::uint32_t>(std::time(nullptr)));
}

} // namespace
