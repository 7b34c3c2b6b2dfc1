#include "platform/posix/shell_command.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>

#include "harness/environment_list.h"
#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "platform/posix/ignored_signals.h"

namespace brimwatch {
namespace {

using Seconds = std::chrono::duration<double>;

class ShellCommand : public ::testing::Test {
  protected:
    void TearDown() override {
        ::signal(SIGPIPE, SIG_DFL);
        ::signal(SIGXFSZ, SIG_DFL);
    }

    std::optional<std::string> run(const std::string& commandLine, std::string_view input = "",
                                   Seconds timeOut = Seconds(60)) {
        return runShellCommand({.commandLine = commandLine,
                                .input = input,
                                .timeOut = timeOut,
                                .environment = environment_.entries(),
                                .defaultSignals = defaultSignals_});
    }

    test::TemporaryFolder folder_;
    sigset_t defaultSignals_ = ignoreWriteSignals();
    test::EnvironmentList environment_ = {{"PATH", "/usr/bin:/bin"}, {"X", "from here"}};
};

TEST_F(ShellCommand, GivesWhatTheCommandPrinted) {
    EXPECT_EQ(run("printf 'one\\ntwo\\n'"), "one\ntwo\n");
    EXPECT_EQ(run(":"), "");
}

TEST_F(ShellCommand, TheExitStatusPlaysNoPart) {
    EXPECT_EQ(run("exit 1"), "");
    EXPECT_EQ(run("echo x; exit 3"), "x\n");
    EXPECT_EQ(run("no-such-command-anywhere"), "");
}

TEST_F(ShellCommand, TheCommandGetsTheInputExactlyAndThenItsEnd) {
    const std::string input("\xFF\0 {\n", 5);
    EXPECT_EQ(run("cat", input), input);
    EXPECT_EQ(run("wc -c", ""), "0\n");
}

TEST_F(ShellCommand, InputAndOutputOfManyMegabytesFlowAtOnce) {
    const std::string input(8'000'000, 'x');
    EXPECT_EQ(run("cat", input), input);
}

TEST_F(ShellCommand, ACommandThatNeverReadsItsInputCostsNothing) {
    const std::string input(8'000'000, 'x');
    EXPECT_EQ(run("echo done", input), "done\n");
    EXPECT_EQ(run("exec <&-; echo done", input), "done\n");
    EXPECT_EQ(run("head -c 10", input), "xxxxxxxxxx");
}

TEST_F(ShellCommand, HasTheEnvironmentThatItIsGivenAndTheWorkingFolder) {
    EXPECT_EQ(run("printf %s \"$X\""), "from here");
    EXPECT_EQ(run("test \"$(pwd -P)\" = \"$(readlink /proc/$PPID/cwd)\" && echo same"), "same\n");
}

TEST_F(ShellCommand, ItsErrorOutputGoesNowhere) {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(run("echo x >&2; echo y"), "y\n");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(ShellCommand, EndedByASignalItHasNoResultWhateverItPrinted) {
    EXPECT_EQ(run("echo x; kill -9 $$"), std::nullopt);
    EXPECT_EQ(run("echo x; kill -TERM $$"), std::nullopt);
}

TEST_F(ShellCommand, AtTheTimeOutItIsTerminatedAndHasNoResult) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run("echo x; exec sleep 60", "", Seconds(0.1)), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST_F(ShellCommand, AtTheTimeOutOneThatClosedItsOutputIsTerminatedToo) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run("exec >&-; exec sleep 60", "", Seconds(0.1)), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
}

TEST_F(ShellCommand, OneThatEndsByItselfAfterTheRequestKeepsItsResult) {
    EXPECT_EQ(run("trap 'echo late; exit 0' TERM; while :; do sleep 0.01; done", "", Seconds(0.2)),
              "late\n");
}

TEST_F(ShellCommand, AProcessLeftBehindWithTheOutputKeepsTheRunWaitingAfterTheTimeOut) {
    const std::string mark = folder_.file("mark");
    EXPECT_EQ(run("(sleep 0.5; echo x > '" + mark + "') & exec sleep 60", "", Seconds(0.1)),
              std::nullopt);
    EXPECT_TRUE(test::exists(mark));
}

TEST_F(ShellCommand, AProcessLeftBehindWithoutTheOutputDoesNotKeepTheRunWaiting) {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(run("sleep 3 >/dev/null & echo x"), "x\n");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2900));
}

TEST_F(ShellCommand, AtTheTimeOutAStoppedOneIsTerminatedToo) {
    EXPECT_EQ(run("kill -STOP $$", "", Seconds(0.1)), std::nullopt);
}

TEST_F(ShellCommand, AFloodOfOutputIsBoundedAndHasNoResult) {
    rusage before{};
    ::getrusage(RUSAGE_SELF, &before);
    EXPECT_EQ(run("head -c 300000000 /dev/zero"), std::nullopt);
    rusage after{};
    ::getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 260'000);
}

TEST_F(ShellCommand, LeavesNoZombieAndNoDescriptorBehind) {
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    while (::waitpid(-1, nullptr, 0) > 0) {
        // What other commands left behind has come to this process.
    }
    const auto before = descriptors();
    for (int round = 0; round < 20; ++round)
        run("cat", "x");
    run("exec sleep 60", "", Seconds(0.05));
    EXPECT_EQ(descriptors(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(ShellCommand, HasItsSignalsAsThisProcessWasStartedWith) {
    const std::optional<std::string> blocked =
        run("exec awk '/SigBlk/ { print $2 }' /proc/self/status");
    const std::optional<std::string> ignored =
        run("exec awk '/SigIgn/ { print $2 }' /proc/self/status");
    ASSERT_TRUE(blocked && ignored);
    EXPECT_EQ(std::stoull(*blocked, nullptr, 16), 0U);
    // Signals 32 and 33 belong to the C library.
    constexpr unsigned long long ordinary = 0x7FFFFFFF;
    EXPECT_EQ(std::stoull(*ignored, nullptr, 16) & ordinary, 0U);
}

TEST_F(ShellCommand, WorksWhereTheSystemKeepsNoExitStatus) {
    ::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(run("echo x"), "x\n");
    EXPECT_EQ(run("exec sleep 60", "", Seconds(0.1)), std::nullopt);
    ::signal(SIGCHLD, SIG_DFL);
}

// The process that runs the command is ended; the test looks on from outside.
class EndedShellCommand : public ShellCommand {
  protected:
    // Orphans come to the test, which reaps them.
    void SetUp() override { ::prctl(PR_SET_CHILD_SUBREAPER, 1); }
    void TearDown() override {
        ::prctl(PR_SET_CHILD_SUBREAPER, 0);
        ShellCommand::TearDown();
    }

    // Runs the command line in a process of its own and gives that once the command has started.
    pid_t startInChild(const std::string& commandLine) {
        const std::string started = folder_.file("started");
        const pid_t child = ::fork();
        if (child == 0) {
            static_cast<void>(run("echo $$ > '" + started + ".new'; mv '" + started + ".new' '" +
                                  started + "'; " + commandLine));
            ::_exit(0);
        }
        EXPECT_TRUE(test::eventually([&] { return test::exists(started); }));
        command_ = static_cast<pid_t>(std::stol(test::readFile(started)));
        return child;
    }

    bool groupIsGone() const {
        return test::eventually([this] {
            while (::waitpid(-1, nullptr, WNOHANG) > 0) {
            }
            return ::kill(-command_, 0) != 0;
        });
    }

    pid_t command_ = 0;
};

TEST_F(EndedShellCommand, EveryEndingSignalEndsTheCommandAndItsProcessesToo) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        std::filesystem::remove(folder_.file("started"));
        const pid_t child = startInChild("sleep 60 | sleep 60; sleep 60");
        ::kill(child, signal);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << signal;
        EXPECT_TRUE(groupIsGone()) << signal;
    }
}

TEST_F(EndedShellCommand, ACommandThatRefusesToEndIsKilled) {
    const pid_t child = startInChild("trap '' TERM; while :; do sleep 0.05; done");
    ::kill(child, SIGTERM);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(groupIsGone());
}

TEST_F(EndedShellCommand, AProcessOfItThatRefusesToEndIsKilled) {
    for (const char* rest : {"wait", "exit"}) {
        std::filesystem::remove(folder_.file("started"));
        const pid_t child = startInChild("(trap '' TERM; exec sleep 60) & " + std::string(rest));
        ::usleep(20'000);
        ::kill(child, SIGTERM);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status));
        EXPECT_TRUE(groupIsGone()) << rest;
    }
}

TEST_F(EndedShellCommand, ASignalThatWasHeldBackStaysHeldBack) {
    sigset_t terminate;
    ::sigemptyset(&terminate);
    ::sigaddset(&terminate, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &terminate, nullptr);
    const pid_t child = startInChild("sleep 0.3; echo x > '" + folder_.file("done") + "'");
    ::pthread_sigmask(SIG_UNBLOCK, &terminate, nullptr);
    ::kill(child, SIGTERM);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_TRUE(test::exists(folder_.file("done")));
}

TEST_F(EndedShellCommand, AnIgnoredSignalStaysIgnored) {
    ::signal(SIGHUP, SIG_IGN);
    const pid_t child = startInChild("sleep 0.3; echo x > '" + folder_.file("done") + "'");
    ::signal(SIGHUP, SIG_DFL);
    ::kill(child, SIGHUP);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_TRUE(test::exists(folder_.file("done")));
}

}  // namespace
}  // namespace brimwatch
