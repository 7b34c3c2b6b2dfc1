#include "platform/linux/launchctl_agent_stopper.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "harness/environment_list.h"
#include "harness/temporary_folder.h"
#include "platform/posix/file_descriptor.h"

namespace brimwatch {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class LaunchctlTest : public ::testing::Test {
  protected:
    // Nothing of the command is left, not even a process that has ended.
    void TearDown() override {
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }

    void stop(const std::string& definition = "/agent.plist") {
        LaunchctlAgentStopper(environment_.view(), command_).stop(definition);
    }

    // Puts a script where the command is to be; its notes are what it prints to descriptor 9.
    void setCommand(const std::string& script) {
        test::writeFile(command_, "#!/bin/sh\nexec 9>>" + notes_ + "\n" + script + "\n");
        std::filesystem::permissions(command_, std::filesystem::perms::owner_all);
    }
    std::string notes() const { return test::exists(notes_) ? test::readFile(notes_) : ""; }

    test::TemporaryFolder folder_;
    std::string command_ = folder_.file("launchctl");
    std::string notes_ = folder_.file("notes");
    test::EnvironmentList environment_ = {{"PATH", "/usr/bin:/bin"}, {"WHO", "the user"}};
};

TEST_F(LaunchctlTest, TheAgentIsTakenOutOfTheSessionOfTheUser) {
    setCommand("printf '%s|' \"$0\" \"$@\" >&9");
    stop("/home/a b/\"Library\"/$x.plist");
    EXPECT_EQ(notes(), command_ + "|bootout|gui/" + std::to_string(::getuid()) +
                           "|/home/a b/\"Library\"/$x.plist|");
}

TEST_F(LaunchctlTest, TheCommandIsWaitedFor) {
    setCommand("sleep 0.2; echo done >&9");
    stop();
    EXPECT_EQ(notes(), "done\n");
}

TEST_F(LaunchctlTest, HowItEndsDoesNotMatter) {
    for (const char* end : {"exit 3", "kill -KILL $$", "kill -SEGV $$"}) {
        setCommand(std::string("echo here >&9; ulimit -c 0; ") + end);
        stop();
    }
    EXPECT_EQ(notes(), "here\nhere\nhere\n");
}

TEST_F(LaunchctlTest, WhereThereIsNoSuchCommandNothingHappens) {
    stop();
    test::writeFile(command_, "not executable");
    stop();
    std::filesystem::permissions(command_, std::filesystem::perms::owner_all);
    stop();
    std::filesystem::remove(command_);
    std::filesystem::create_directory(command_);
    stop();
    EXPECT_EQ(notes(), "");
}

TEST_F(LaunchctlTest, EachAgentIsOneRun) {
    setCommand("echo \"$3\" >&9");
    LaunchctlAgentStopper stopper(environment_.view(), command_);
    stopper.stop("/one");
    stopper.stop("/two");
    EXPECT_EQ(notes(), "/one\n/two\n");
}

TEST_F(LaunchctlTest, ItHasNoDescriptorOfOursAndOurEnvironment) {
    const std::string ours = folder_.file("ours");
    test::writeFile(ours, "");
    // Not closed on exec, as a library may have it.
    const FileDescriptor inherited(::open(ours.c_str(), O_RDONLY));
    ASSERT_TRUE(inherited.isOpen());
    setCommand(
        "for file in /proc/$$/fd/*; do echo \"${file##*/} $(readlink \"$file\")\" >&9; done\n"
        "echo \"$WHO\" >&9");
    stop();
    for (const char* standard : {"0 /dev/null\n", "1 /dev/null\n", "2 /dev/null\n", "the user\n"})
        EXPECT_THAT(notes(), HasSubstr(standard));
    EXPECT_THAT(notes(), Not(HasSubstr(ours)));
    EXPECT_THAT(notes(), Not(HasSubstr("memfd")));
}

TEST_F(LaunchctlTest, ItHasTheUsualActionsForAllSignals) {
    sigset_t blocked;
    sigset_t former;
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &blocked, &former);
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGHUP, SIG_IGN);
    // Two signals of its own, 32 and 33, the C library keeps ignored.
    setCommand("sed -n 's/^Sig\\(Blk\\|Ign\\):.*\\(........\\)$/\\1 \\2/p' /proc/self/status >&9");
    stop();
    ::sigprocmask(SIG_SETMASK, &former, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::signal(SIGHUP, SIG_DFL);
    EXPECT_EQ(notes(), "Blk 00000000\nIgn 80000000\n");
}

TEST_F(LaunchctlTest, SignalsDoNotEndTheWait) {
    struct sigaction former {};
    struct sigaction quiet {};
    quiet.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &quiet, &former);
    const itimerval often = {.it_interval = {.tv_sec = 0, .tv_usec = 5000},
                             .it_value = {.tv_sec = 0, .tv_usec = 5000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    setCommand("sleep 0.2; echo done >&9");
    stop();
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &former, nullptr);
    EXPECT_EQ(notes(), "done\n");
}

TEST_F(LaunchctlTest, WhereTheSystemReapsItIsWaitedForAllTheSame) {
    ::signal(SIGCHLD, SIG_IGN);
    setCommand("sleep 0.2; echo done >&9");
    stop();
    ::signal(SIGCHLD, SIG_DFL);
    EXPECT_EQ(notes(), "done\n");
}

TEST_F(LaunchctlTest, WithoutAFreeDescriptorNothingHappens) {
    setCommand("echo here >&9");
    rlimit former{};
    ::getrlimit(RLIMIT_NOFILE, &former);
    const rlimit none{.rlim_cur = STDERR_FILENO + 1, .rlim_max = former.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    stop();
    ::setrlimit(RLIMIT_NOFILE, &former);
    EXPECT_EQ(notes(), "");
}

}  // namespace
}  // namespace brimwatch
