#include "platform/posix/instance_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <vector>

#include "harness/forked_process.h"
#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "platform/posix/spawning.h"

namespace brimwatch {
namespace {

using Taken = FileResult<std::optional<InstanceLock>>;

bool isMine(const Taken& lock) {
    return lock && *lock;
}

bool isAnothers(const Taken& lock) {
    return lock && !*lock;
}

class InstanceLockTest : public ::testing::Test {
  protected:
    Taken take() const { return InstanceLock::take(state_); }

    mode_t modeOf(const std::string& path) const {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777U;
    }

    void expectFailure(std::errc error) const {
        const Taken lock = take();
        ASSERT_FALSE(lock);
        EXPECT_EQ(lock.error(), error);
    }

    // One that takes the lock, tells whether it got it, does that and waits for its end.
    std::unique_ptr<test::ForkedProcess> startHolder(const std::function<void()>& then = [] {}) {
        auto holder = std::make_unique<test::ForkedProcess>([&] {
            const Taken lock = take();
            then();
            const char answer = isMine(lock) ? 'y' : 'n';
            if (::write(answers_.writeEnd.get(), &answer, 1) == 1) ::pause();
        });
        return holder;
    }
    char answer() const {
        char byte = 0;
        EXPECT_EQ(::read(answers_.readEnd.get(), &byte, 1), 1);
        return byte;
    }

    void SetUp() override { ASSERT_TRUE(answers_.open()); }

    test::TemporaryFolder folder_;
    std::string state_ = folder_.file("state/brimwatch");
    std::string file_ = state_ + "/.instance.lock";
    Pipe answers_;
};

TEST_F(InstanceLockTest, MakesItsFolderAndFileForTheUserAlone) {
    for (const mode_t mask : {0U, 022U}) {
        const mode_t former = ::umask(mask);
        const Taken lock = take();
        ::umask(former);
        EXPECT_TRUE(isMine(lock));
        EXPECT_EQ(modeOf(folder_.file("state")), 0700U);
        EXPECT_EQ(modeOf(state_), 0700U);
        EXPECT_EQ(modeOf(file_), 0600U);
        std::filesystem::remove_all(folder_.file("state"));
    }
}

TEST_F(InstanceLockTest, LeavesAFolderThatIsThereAsItIs) {
    std::filesystem::create_directories(state_);
    ASSERT_EQ(::chmod(state_.c_str(), 0755), 0);
    EXPECT_TRUE(isMine(take()));
    EXPECT_EQ(modeOf(state_), 0755U);
}

TEST_F(InstanceLockTest, OneAtATimeHasItAlsoWithinAProcess) {
    {
        const Taken lock = take();
        ASSERT_TRUE(isMine(lock));
        EXPECT_TRUE(isAnothers(take()));
        EXPECT_TRUE(isAnothers(take()));
    }
    EXPECT_TRUE(isMine(take()));
}

TEST_F(InstanceLockTest, GoesAlongWhenItIsMoved) {
    Taken lock = take();
    ASSERT_TRUE(isMine(lock));
    std::optional<InstanceLock> kept = *std::move(lock);
    EXPECT_TRUE(isAnothers(take()));
    kept.reset();
    EXPECT_TRUE(isMine(take()));
}

TEST_F(InstanceLockTest, TwoStateFoldersHaveTwoLocks) {
    const Taken lock = take();
    ASSERT_TRUE(isMine(lock));
    EXPECT_TRUE(isMine(InstanceLock::take(folder_.file("other"))));
}

TEST_F(InstanceLockTest, ASecondProcessIsToldSoAtOnce) {
    const auto holder = startHolder();
    ASSERT_EQ(answer(), 'y');
    EXPECT_TRUE(isAnothers(take()));
    const auto third = startHolder();
    EXPECT_EQ(answer(), 'n');
}

TEST_F(InstanceLockTest, AHolderThatIsKilledLetsGo) {
    for (int round = 0; round < 3; ++round) {
        const auto holder = startHolder();
        ASSERT_EQ(answer(), 'y');
        holder->kill();
        EXPECT_TRUE(test::exists(file_));
        EXPECT_TRUE(isMine(take()));
    }
}

TEST_F(InstanceLockTest, AStoppedHolderKeepsIt) {
    Pipe stopped;
    ASSERT_TRUE(stopped.open());
    const auto holder = startHolder([&] {
        const pid_t process = ::getpid();
        static_cast<void>(::write(stopped.writeEnd.get(), &process, sizeof process));
    });
    ASSERT_EQ(answer(), 'y');
    pid_t process = 0;
    ASSERT_EQ(::read(stopped.readEnd.get(), &process, sizeof process),
              static_cast<ssize_t>(sizeof process));
    ::kill(process, SIGSTOP);
    EXPECT_TRUE(isAnothers(take()));
}

TEST_F(InstanceLockTest, ChildrenDoNotInheritIt) {
    Pipe children;
    ASSERT_TRUE(children.open());
    const auto holder = startHolder([&] {
        const pid_t child = ::fork();
        if (child == 0) {
            ::execl("/bin/sleep", "sleep", "60", nullptr);
            ::_exit(127);
        }
        static_cast<void>(::write(children.writeEnd.get(), &child, sizeof child));
    });
    ASSERT_EQ(answer(), 'y');
    pid_t child = 0;
    ASSERT_EQ(::read(children.readEnd.get(), &child, sizeof child),
              static_cast<ssize_t>(sizeof child));
    const std::string executable = "/proc/" + std::to_string(child) + "/exe";
    EXPECT_TRUE(test::eventually([&] {
        std::error_code error;
        const auto path = std::filesystem::read_symlink(executable, error);
        return path.filename() == "sleep" || path.filename() == "coreutils" ||
               path.filename() == "busybox";
    }));
    holder->kill();
    EXPECT_TRUE(isMine(take()));
    EXPECT_EQ(::kill(child, 0), 0);
    ::kill(child, SIGKILL);
}

TEST_F(InstanceLockTest, OtherDescriptorsOfTheFileMayBeClosed) {
    const Taken lock = take();
    ASSERT_TRUE(isMine(lock));
    FileDescriptor(::open(file_.c_str(), O_RDWR | O_CLOEXEC)).close();
    EXPECT_EQ(test::readFile(file_), "");
    EXPECT_TRUE(isAnothers(take()));
}

TEST_F(InstanceLockTest, OfManyProcessesThatStartAtOnceOneHasIt) {
    constexpr int rounds = 20;
    constexpr int processes = 6;
    for (int round = 0; round < rounds; ++round) {
        std::filesystem::remove_all(folder_.file("state"));
        std::vector<std::unique_ptr<test::ForkedProcess>> holders;
        for (int number = 0; number < processes; ++number)
            holders.push_back(startHolder());
        int successes = 0;
        for (int number = 0; number < processes; ++number)
            successes += answer() == 'y' ? 1 : 0;
        EXPECT_EQ(successes, 1);
    }
}

TEST_F(InstanceLockTest, AFolderThatCannotBeMadeIsAFailure) {
    test::writeFile(folder_.file("state"), "a file");
    expectFailure(std::errc::not_a_directory);
    std::filesystem::remove(folder_.file("state"));
    test::writeFile(state_, "a file");
    expectFailure(std::errc::not_a_directory);
    state_ = folder_.file(std::string(300, 'x'));
    expectFailure(std::errc::filename_too_long);
}

TEST_F(InstanceLockTest, AFileThatCannotBeOpenedIsAFailure) {
    std::filesystem::create_directories(file_);
    expectFailure(std::errc::is_a_directory);
    std::filesystem::remove(file_);
    std::filesystem::create_symlink(file_, file_);
    expectFailure(std::errc::too_many_symbolic_link_levels);
    std::filesystem::remove(file_);
    std::filesystem::create_symlink(folder_.file("gone/lock"), file_);
    expectFailure(std::errc::no_such_file_or_directory);
}

TEST_F(InstanceLockTest, AFolderThatTheUserMayNotUseIsAFailure) {
    constexpr uid_t nobody = 65534;
    std::filesystem::create_directories(state_);
    const bool isRoot = ::geteuid() == 0;
    std::filesystem::permissions(state_, std::filesystem::perms::owner_read);
    ASSERT_TRUE(!isRoot || ::setresuid(nobody, nobody, 0) == 0);
    expectFailure(std::errc::permission_denied);
    ASSERT_TRUE(!isRoot || ::setresuid(0, 0, 0) == 0);
    std::filesystem::permissions(state_, std::filesystem::perms::owner_all);
}

TEST_F(InstanceLockTest, WithoutAFreeDescriptorItIsAFailureAndNotAnothers) {
    rlimit former{};
    ::getrlimit(RLIMIT_NOFILE, &former);
    const rlimit none{.rlim_cur = STDERR_FILENO + 1, .rlim_max = former.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    const Taken lock = take();
    ::setrlimit(RLIMIT_NOFILE, &former);
    ASSERT_FALSE(lock);
    EXPECT_EQ(lock.error(), std::errc::too_many_files_open);
    EXPECT_TRUE(isMine(take()));
}

}  // namespace
}  // namespace brimwatch
