#include "platform/linux/limits_changed_listener.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QTimer>
#include <csignal>
#include <filesystem>
#include <memory>

#include "harness/environment_list.h"
#include "harness/forked_process.h"
#include "harness/temporary_folder.h"
#include "platform/linux/application_test.h"
#include "platform/posix/limits_changed_datagram.h"

namespace brimwatch {
namespace {

class LimitsChangedListenerTest : public test::ApplicationTest {
  protected:
    void TearDown() override {
        listener_.reset();
        ApplicationTest::TearDown();
    }

    void listen() {
        if (!listener_) listener_ = makeListener();
        listener_->listen([this] { ++calls_; });
    }
    std::unique_ptr<LimitsChangedListener> makeListener() const {
        return std::make_unique<LimitsChangedListener>(environment_.view());
    }
    void post() const { postLimitsChanged(environment_.view()); }

    bool hearsAPost() {
        calls_ = 0;
        post();
        return eventually([this] { return calls_ == 1; });
    }

    test::TemporaryFolder folder_;
    test::EnvironmentList environment_ = {{"XDG_RUNTIME_DIR", folder_.path()}};
    std::string socket_ = folder_.file("net.quillmoor.brimwatch.limitsChanged");
    std::unique_ptr<LimitsChangedListener> listener_;
    int calls_ = 0;
};

TEST_F(LimitsChangedListenerTest, HearsOfEachPost) {
    listen();
    EXPECT_TRUE(hearsAPost());
    EXPECT_TRUE(hearsAPost());
}

TEST_F(LimitsChangedListenerTest, NothingIsThereBeforeItListens) {
    listener_ = makeListener();
    EXPECT_FALSE(test::exists(socket_));
}

TEST_F(LimitsChangedListenerTest, WithoutAPostThereIsNoCall) {
    listen();
    settle();
    EXPECT_EQ(calls_, 0);
}

TEST_F(LimitsChangedListenerTest, ABurstGivesOneCall) {
    listen();
    for (int count = 0; count < 8; ++count)
        post();
    settle();
    EXPECT_EQ(calls_, 1);
}

TEST_F(LimitsChangedListenerTest, AFloodLetsTheLoopGoOn) {
    listen();
    test::ForkedProcess flooder([this] {
        while (true)
            post();
    });
    int turns = 0;
    QTimer other;
    QObject::connect(&other, &QTimer::timeout, [&] { ++turns; });
    other.start(0);
    EXPECT_TRUE(eventually([&] { return calls_ > 200 && turns > 200; }));
    flooder.kill();
    settle();
    EXPECT_TRUE(hearsAPost());
}

TEST_F(LimitsChangedListenerTest, TheLastThatAskedIsCalled) {
    int former = 0;
    listener_ = makeListener();
    listener_->listen([&] { ++former; });
    listen();
    EXPECT_TRUE(hearsAPost());
    EXPECT_EQ(former, 0);
}

TEST_F(LimitsChangedListenerTest, OfTwoListenersTheFirstKeepsTheSocket) {
    listen();
    const auto second = makeListener();
    int seconds = 0;
    second->listen([&] { ++seconds; });
    EXPECT_TRUE(hearsAPost());
    EXPECT_EQ(seconds, 0);
}

TEST_F(LimitsChangedListenerTest, ASecondListenerThatAsksAgainWhenTheFirstHasGoneHears) {
    auto first = makeListener();
    first->listen([] {});
    listen();
    first.reset();
    listen();
    EXPECT_TRUE(hearsAPost());
}

TEST_F(LimitsChangedListenerTest, TheSecondDoesNotTakeTheSocketOfTheFirstWithIt) {
    listen();
    auto second = makeListener();
    second->listen([] {});
    second.reset();
    EXPECT_TRUE(hearsAPost());
}

TEST_F(LimitsChangedListenerTest, WhatAKilledProcessLeftIsReplaced) {
    const pid_t other = ::fork();
    if (other == 0) {
        const auto socket = LimitsChangedSocket::bind(socket_);
        if (socket) ::raise(SIGKILL);
        ::_exit(1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(other, &status, 0), other);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_TRUE(test::exists(socket_));
    listen();
    EXPECT_TRUE(hearsAPost());
}

TEST_F(LimitsChangedListenerTest, WhereItCannotBeHadNothingComes) {
    for (const std::string& folder :
         {std::string(), std::string("relative"), folder_.file("missing"),
          folder_.file(std::string(200, 'x'))}) {
        environment_.set("XDG_RUNTIME_DIR", folder);
        listener_.reset();
        listen();
        post();
        settle();
        EXPECT_EQ(calls_, 0);
    }
    environment_ = {{"HOME", folder_.path()}};
    listener_.reset();
    listen();
    settle();
    EXPECT_EQ(calls_, 0);
    EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(LimitsChangedListenerTest, AFileOfThatNameIsLeftAlone) {
    test::writeFile(socket_, "a file");
    listen();
    post();
    settle();
    EXPECT_EQ(calls_, 0);
    listener_.reset();
    EXPECT_EQ(test::readFile(socket_), "a file");
}

TEST_F(LimitsChangedListenerTest, DestroyingItEndsTheListening) {
    listen();
    post();
    listener_.reset();
    settle();
    EXPECT_EQ(calls_, 0);
    EXPECT_FALSE(test::exists(socket_));
}

TEST_F(LimitsChangedListenerTest, ItMayBeDestroyedFromWithinItsCall) {
    const auto token = std::make_shared<int>(7);
    listener_ = makeListener();
    listener_->listen([this, token] {
        listener_.reset();
        calls_ += *token;
    });
    post();
    EXPECT_TRUE(eventually([&] { return calls_ > 0; }));
    EXPECT_EQ(calls_, 7);
    EXPECT_FALSE(test::exists(socket_));
}

TEST_F(LimitsChangedListenerTest, AnotherMayAskFromWithinTheCall) {
    const auto token = std::make_shared<int>(7);
    int former = 0;
    listener_ = makeListener();
    listener_->listen([this, &former, token] {
        listen();
        former += *token;
    });
    post();
    EXPECT_TRUE(eventually([&] { return former == 7; }));
    EXPECT_TRUE(hearsAPost());
    EXPECT_EQ(former, 7);
}

}  // namespace
}  // namespace brimwatch
