#include "platform/posix/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>

#include "harness/environment_list.h"
#include "harness/process.h"
#include "harness/temporary_folder.h"

namespace brimwatch {
namespace {

using test::eventually;

bool isBlocked(int signal) {
    sigset_t mask;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return ::sigismember(&mask, signal) == 1;
}

class ChildProcessTest : public ::testing::Test {
  protected:
    ChildProcess launch(const std::string& commandLine) {
        auto child = ChildProcess::launch({.executable = "/bin/sh",
                                           .arguments = {"-c", commandLine},
                                           .workingFolder = folder_.path(),
                                           .environment = environment_.entries()});
        EXPECT_TRUE(child);
        return child ? *std::move(child) : ChildProcess();
    }

    static std::string readAll(const ChildProcess& child) {
        std::string text;
        std::array<char, 100> buffer{};
        EXPECT_TRUE(eventually([&] {
            const auto count = child.read(buffer);
            if (count) text.append(buffer.data(), *count);
            return count && *count == 0;
        }));
        return text;
    }

    static void expectReaped(const ChildProcess& child) {
        EXPECT_TRUE(eventually([&] { return child.reapIfEnded(); }));
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }

    test::TemporaryFolder folder_;
    test::EnvironmentList environment_ = {{"PATH", "/usr/bin:/bin"}, {"X", "from here"}};
};

TEST_F(ChildProcessTest, TakesInputAndGivesOutput) {
    ChildProcess child = launch("read line; echo \"$line $X $PWD\"; echo lost >&2");
    EXPECT_EQ(child.write("hello\n"), std::error_code());
    EXPECT_EQ(readAll(child), "hello from here " + folder_.path() + "\n");
    expectReaped(child);
}

TEST_F(ChildProcessTest, ReadingBlocksOnNothing) {
    ChildProcess child = launch("read line");
    std::array<char, 10> buffer{};
    const auto count = child.read(buffer);
    ASSERT_FALSE(count);
    EXPECT_EQ(count.error(), std::errc::resource_unavailable_try_again);
    EXPECT_FALSE(child.reapIfEnded());
    child.terminate();
    expectReaped(child);
}

TEST_F(ChildProcessTest, AFullPipeIsAnErrorAndNothingIsWrittenByHalves) {
    ChildProcess child = launch("exec sleep 60");
    const std::string bytes(4096, 'x');
    std::error_code error;
    for (int count = 0; !error && count < 10'000; ++count)
        error = child.write(bytes);
    EXPECT_EQ(error, std::errc::resource_unavailable_try_again);
    child.terminate();
    expectReaped(child);
}

TEST_F(ChildProcessTest, AClosedInputIsAnErrorWithoutASignal) {
    ASSERT_EQ(::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    ChildProcess child = launch("exec <&-; echo closed; exec sleep 60");
    std::array<char, 10> buffer{};
    ASSERT_TRUE(eventually([&] { return child.read(buffer).has_value(); }));
    EXPECT_EQ(child.write("x"), std::errc::broken_pipe);
    child.terminate();
    expectReaped(child);
}

TEST_F(ChildProcessTest, AWriteLeavesTheSignalsOfTheThreadAsTheyWere) {
    sigset_t pipeSignal;
    ::sigemptyset(&pipeSignal);
    ::sigaddset(&pipeSignal, SIGPIPE);
    ChildProcess child = launch("exec <&-; echo closed; exec sleep 60");
    std::array<char, 10> buffer{};
    ASSERT_TRUE(eventually([&] { return child.read(buffer).has_value(); }));
    EXPECT_TRUE(child.write("x"));
    EXPECT_FALSE(isBlocked(SIGPIPE));
    ::pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
    ::raise(SIGPIPE);
    EXPECT_TRUE(child.write("x"));
    EXPECT_TRUE(isBlocked(SIGPIPE));
    const timespec atOnce{};
    EXPECT_EQ(::sigtimedwait(&pipeSignal, nullptr, &atOnce), SIGPIPE);
    ::pthread_sigmask(SIG_UNBLOCK, &pipeSignal, nullptr);
    child.terminate();
    expectReaped(child);
}

TEST_F(ChildProcessTest, AnInterruptFromTheTerminalDoesNotReachTheChild) {
    ChildProcess child = launch("echo $$; exec sleep 60");
    std::array<char, 20> buffer{};
    tl::expected<std::size_t, std::error_code> count;
    ASSERT_TRUE(eventually([&] { return (count = child.read(buffer)).has_value(); }));
    const pid_t process = std::stoi(std::string(buffer.data(), *count));
    EXPECT_EQ(::getpgid(process), process);
    child.terminate();
    expectReaped(child);
}

TEST_F(ChildProcessTest, AnEndIsNoticedWhereTheSystemReapsByItself) {
    ::signal(SIGCHLD, SIG_IGN);
    ChildProcess child = launch("exec sleep 60");
    EXPECT_FALSE(child.reapIfEnded());
    child.terminate();
    expectReaped(child);
    ::signal(SIGCHLD, SIG_DFL);
}

TEST_F(ChildProcessTest, AStoppedChildEndsToo) {
    ChildProcess child = launch("kill -STOP $$; exec sleep 60");
    siginfo_t information{};
    ASSERT_EQ(::waitid(P_ALL, 0, &information, WSTOPPED), 0);
    child.terminate();
    expectReaped(child);
}

TEST_F(ChildProcessTest, EndingOneThatHasEndedDoesNothing) {
    ChildProcess child = launch("exit 3");
    EXPECT_TRUE(eventually([&] { return child.reapIfEnded(); }));
    child.terminate();
    EXPECT_TRUE(child.reapIfEnded());
}

TEST_F(ChildProcessTest, WhatIsNotThereCannotBeLaunched) {
    const auto child = ChildProcess::launch({.executable = folder_.file("none"),
                                             .arguments = {},
                                             .workingFolder = {},
                                             .environment = environment_.entries()});
    ASSERT_FALSE(child);
    EXPECT_EQ(child.error(), std::errc::no_such_file_or_directory);
}

}  // namespace
}  // namespace brimwatch
