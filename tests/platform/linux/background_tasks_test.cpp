#include "platform/linux/background_tasks.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <vector>

#include "harness/process.h"

namespace brimwatch {
namespace {

auto failure() {
    return tl::unexpected(std::make_error_code(std::errc::no_space_on_device));
}

// A task that holds the thread until it is let go.
class Gate {
  public:
    BackgroundTasks::Task task() {
        return [this]() -> FileResult<void> {
            entered_.set_value();
            opened_.get_future().wait();
            return {};
        };
    }
    void waitUntilEntered() { entered_.get_future().wait(); }
    void open() { opened_.set_value(); }

  private:
    std::promise<void> entered_;
    std::promise<void> opened_;
};

TEST(BackgroundTasks, RunOnAnotherThreadAndAreDoneAfterFlush) {
    BackgroundTasks tasks;
    std::thread::id where;
    tasks.submit("a", [&]() -> FileResult<void> {
        where = std::this_thread::get_id();
        return {};
    });
    EXPECT_TRUE(tasks.flush());
    EXPECT_NE(where, std::thread::id());
    EXPECT_NE(where, std::this_thread::get_id());
}

TEST(BackgroundTasks, SubmittingDoesNotWaitAndOfEachNameTheLatestRuns) {
    Gate gate;
    std::vector<int> ran;
    BackgroundTasks tasks;
    tasks.submit("gate", gate.task());
    gate.waitUntilEntered();
    for (int number = 1; number <= 100; ++number) {
        tasks.submit("a", [&ran, number]() -> FileResult<void> {
            ran.push_back(number);
            return {};
        });
    }
    tasks.submit("b", [&ran]() -> FileResult<void> {
        ran.push_back(-1);
        return {};
    });
    gate.open();
    EXPECT_TRUE(tasks.flush());
    EXPECT_EQ(ran, (std::vector<int>{100, -1}));
}

TEST(BackgroundTasks, WhatFailedIsToldAndTriedAgainWithTheNextTask) {
    BackgroundTasks tasks;
    std::atomic<bool> isFull = true;
    int written = 0;
    tasks.submit("a", [&]() -> FileResult<void> {
        if (isFull) return failure();
        ++written;
        return {};
    });
    EXPECT_EQ(tasks.flush().error(), std::errc::no_space_on_device);
    isFull = false;
    Gate gate;
    tasks.submit("b", gate.task());
    gate.waitUntilEntered();
    EXPECT_EQ(written, 1);
    gate.open();
    EXPECT_TRUE(tasks.flush());
    EXPECT_EQ(written, 1);
}

TEST(BackgroundTasks, WhatFailedIsTriedAgainOnDemandWithoutWaiting) {
    std::atomic<bool> isFull = true;
    std::atomic<int> written = 0;
    BackgroundTasks tasks;
    tasks.submit("a", [&]() -> FileResult<void> {
        if (isFull) return failure();
        ++written;
        return {};
    });
    EXPECT_FALSE(tasks.flush());
    isFull = false;
    tasks.retry();
    EXPECT_TRUE(test::eventually([&] { return written == 1; }));
    EXPECT_TRUE(tasks.flush());
    EXPECT_EQ(written, 1);
}

TEST(BackgroundTasks, WhatFailedGivesWayToALaterTaskOfItsName) {
    Gate gate;
    std::vector<int> ran;
    BackgroundTasks tasks;
    tasks.submit("a", [&]() -> FileResult<void> {
        ran.push_back(1);
        static_cast<void>(gate.task()());
        return failure();
    });
    gate.waitUntilEntered();
    tasks.submit("a", [&]() -> FileResult<void> {
        ran.push_back(2);
        return {};
    });
    gate.open();
    EXPECT_TRUE(tasks.flush());
    EXPECT_EQ(ran, (std::vector<int>{1, 2}));
}

TEST(BackgroundTasks, FlushingWithoutTasksReturns) {
    BackgroundTasks tasks;
    EXPECT_TRUE(tasks.flush());
    EXPECT_TRUE(tasks.flush());
}

TEST(BackgroundTasks, AreDoneBeforeTheyAreDestroyed) {
    int ran = 0;
    for (int round = 0; round < 100; ++round) {
        BackgroundTasks tasks;
        tasks.submit("a", [&]() -> FileResult<void> {
            ++ran;
            return {};
        });
    }
    EXPECT_EQ(ran, 100);
}

TEST(BackgroundTasks, WhatFailedIsTriedAgainBeforeTheyAreDestroyed) {
    std::atomic<bool> isFull = true;
    int written = 0;
    {
        BackgroundTasks tasks;
        tasks.submit("a", [&]() -> FileResult<void> {
            if (isFull) return failure();
            ++written;
            return {};
        });
        EXPECT_FALSE(tasks.flush());
        isFull = false;
    }
    EXPECT_EQ(written, 1);
}

}  // namespace
}  // namespace brimwatch
