#include "platform/linux/event_loop_wait.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoroTask>
#include <memory>

#include "platform/linux/application_test.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EventLoopWaitTest : public test::ApplicationTest {
  protected:
    void TearDown() override {
        wait_.reset();
        ApplicationTest::TearDown();
    }

    void beginToWait() { waitFor(wait_.get(), &events_); }

    std::vector<std::string> events_;
    std::unique_ptr<EventLoopWait> wait_;

  private:
    void SetUp() override {
        ApplicationTest::SetUp();
        wait_ = std::make_unique<EventLoopWait>([this] { events_.push_back("cancelled"); });
    }

    static QCoro::Task<> waitFor(EventLoopWait* wait, std::vector<std::string>* events) {
        const EventLoopWait::End end(*wait);
        co_await end;
        events->push_back("went on");
    }
};

TEST_F(EventLoopWaitTest, TheCoroutineGoesOnFromTheLoopAndNotFromWithinTheEnd) {
    beginToWait();
    wait_->end();
    EXPECT_THAT(events_, IsEmpty());
    ASSERT_TRUE(eventually([&] { return !events_.empty(); }));
    EXPECT_THAT(events_, ElementsAre("went on"));
}

TEST_F(EventLoopWaitTest, WhatHasEndedIsNotWaitedFor) {
    wait_->end();
    beginToWait();
    EXPECT_THAT(events_, ElementsAre("went on"));
    settle();
    EXPECT_EQ(events_.size(), 1U);
}

TEST_F(EventLoopWaitTest, OneThatEndsTwiceGoesOnOnce) {
    beginToWait();
    wait_->end();
    wait_->end();
    ASSERT_TRUE(eventually([&] { return !events_.empty(); }));
    wait_->end();
    settle();
    EXPECT_THAT(events_, ElementsAre("went on"));
}

TEST_F(EventLoopWaitTest, TheEndOfTheApplicationCancelsItAndItGoesOnAtOnce) {
    beginToWait();
    application_.reset();
    EXPECT_THAT(events_, ElementsAre("cancelled", "went on"));
}

TEST_F(EventLoopWaitTest, AnEndBeforeThatOfTheApplicationStays) {
    beginToWait();
    wait_->end();
    application_.reset();
    EXPECT_THAT(events_, ElementsAre("went on"));
}

TEST_F(EventLoopWaitTest, OneThatNobodyWaitsForIsCancelledToo) {
    application_.reset();
    EXPECT_THAT(events_, ElementsAre("cancelled"));
}

}  // namespace
}  // namespace brimwatch
