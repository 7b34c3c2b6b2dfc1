#include "platform/posix/limits_changed_socket.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "harness/environment_list.h"
#include "harness/forked_process.h"
#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "platform/posix/limits_changed_datagram.h"
#include "platform/posix/socket_address.h"
#include "platform/posix/spawning.h"

namespace brimwatch {
namespace {

using Binding = FileResult<std::unique_ptr<LimitsChangedSocket>>;

class LimitsChangedSocketTest : public ::testing::Test {
  protected:
    Binding bind() const { return LimitsChangedSocket::bind(path_); }
    void post() const { postLimitsChanged(environment_.view()); }

    // A socket file that nobody listens at.
    void abandonSocket(int type = SOCK_DGRAM) const { foreignSocket(type); }

    FileDescriptor foreignSocket(int type) const {
        const auto address = socketAddress(path_).value();
        FileDescriptor socket(::socket(AF_UNIX, type | SOCK_CLOEXEC, 0));
        EXPECT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
                  0);
        return socket;
    }

    void expectTaken() const {
        const Binding binding = bind();
        ASSERT_FALSE(binding);
        EXPECT_EQ(binding.error(), std::errc::address_in_use);
    }

    test::TemporaryFolder folder_;
    test::EnvironmentList environment_ = {{"XDG_RUNTIME_DIR", folder_.path()}};
    std::string path_ = limitsChangedSocket(environment_.view()).value();
};

std::size_t drained(const Binding& binding) {
    return (*binding)->drain().value_or(99'999);
}

TEST_F(LimitsChangedSocketTest, HearsWhatIsPosted) {
    const Binding binding = bind();
    ASSERT_TRUE(binding);
    EXPECT_EQ(drained(binding), 0U);
    post();
    post();
    EXPECT_EQ(drained(binding), 2U);
    EXPECT_EQ(drained(binding), 0U);
}

TEST_F(LimitsChangedSocketTest, IsForTheUserAloneWhateverTheMask) {
    for (const mode_t mask : {0U, 022U, 077U}) {
        const mode_t former = ::umask(mask);
        const Binding binding = bind();
        ::umask(former);
        ASSERT_TRUE(binding);
        struct stat status {};
        ASSERT_EQ(::lstat(path_.c_str(), &status), 0);
        EXPECT_TRUE(S_ISSOCK(status.st_mode));
        EXPECT_EQ(status.st_mode & 07777U, 0600U);
    }
}

TEST_F(LimitsChangedSocketTest, BlocksNothingAndIsClosedOnExec) {
    const Binding binding = bind();
    ASSERT_TRUE(binding);
    EXPECT_NE(::fcntl((*binding)->descriptor(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_NE(::fcntl((*binding)->descriptor(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(LimitsChangedSocketTest, TheFileGoesWithIt) {
    ASSERT_TRUE(bind());
    EXPECT_FALSE(test::exists(path_));
    EXPECT_TRUE(bind());
}

TEST_F(LimitsChangedSocketTest, AFileThatHasTakenItsNameStays) {
    {
        const Binding binding = bind();
        ASSERT_TRUE(binding);
        std::filesystem::remove(path_);
        test::writeFile(path_, "of somebody else");
    }
    EXPECT_EQ(test::readFile(path_), "of somebody else");
}

TEST_F(LimitsChangedSocketTest, ASocketThatHasTakenItsNameStays) {
    Binding former = bind();
    ASSERT_TRUE(former);
    std::filesystem::remove(path_);
    const Binding next = bind();
    ASSERT_TRUE(next);
    former->reset();
    post();
    EXPECT_EQ(drained(next), 1U);
}

TEST_F(LimitsChangedSocketTest, AFileThatIsGoneByThenDoesNoHarm) {
    const Binding binding = bind();
    ASSERT_TRUE(binding);
    std::filesystem::remove(path_);
}

TEST_F(LimitsChangedSocketTest, AnAbandonedSocketIsReplaced) {
    for (const int type : {SOCK_DGRAM, SOCK_STREAM, SOCK_SEQPACKET}) {
        abandonSocket(type);
        const Binding binding = bind();
        ASSERT_TRUE(binding) << type;
        post();
        EXPECT_EQ(drained(binding), 1U);
    }
}

TEST_F(LimitsChangedSocketTest, ASocketAtWhichSomebodyListensIsNeverTakenAway) {
    const Binding living = bind();
    ASSERT_TRUE(living);
    expectTaken();
    expectTaken();
    post();
    EXPECT_EQ(drained(living), 1U);
}

TEST_F(LimitsChangedSocketTest, NorIsOneWhoseQueueIsFull) {
    const Binding living = bind();
    ASSERT_TRUE(living);
    for (int count = 0; count < 2000; ++count)
        post();
    expectTaken();
    EXPECT_GE(drained(living), 1U);
}

TEST_F(LimitsChangedSocketTest, NorIsOneOfAnotherType) {
    for (const int type : {SOCK_STREAM, SOCK_SEQPACKET}) {
        const FileDescriptor living = foreignSocket(type);
        expectTaken();
        ASSERT_EQ(::listen(living.get(), 1), 0);
        expectTaken();
        std::filesystem::remove(path_);
    }
}

TEST_F(LimitsChangedSocketTest, NorIsOneThatTakesDatagramsFromAPartnerOnly) {
    const FileDescriptor living = foreignSocket(SOCK_DGRAM);
    const std::string partnerPath = folder_.file("partner");
    const Binding partner = LimitsChangedSocket::bind(partnerPath);
    ASSERT_TRUE(partner);
    const auto address = socketAddress(partnerPath).value();
    ASSERT_EQ(::connect(living.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    expectTaken();
}

TEST_F(LimitsChangedSocketTest, WhatIsNoSocketStays) {
    test::writeFile(path_, "a file");
    expectTaken();
    EXPECT_EQ(test::readFile(path_), "a file");
    std::filesystem::remove(path_);

    std::filesystem::create_directory(path_);
    expectTaken();
    EXPECT_TRUE(std::filesystem::is_directory(path_));
    std::filesystem::remove(path_);

    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    expectTaken();
    EXPECT_TRUE(std::filesystem::is_fifo(path_));
}

TEST_F(LimitsChangedSocketTest, ALinkStaysWhereverItLeads) {
    const std::string target = folder_.file("target");
    for (const bool isAbandoned : {false, true}) {
        if (isAbandoned) {
            abandonSocket();
            std::filesystem::rename(path_, target);
        }
        std::filesystem::create_symlink(target, path_);
        expectTaken();
        EXPECT_EQ(std::filesystem::read_symlink(path_), target);
        EXPECT_EQ(test::exists(target), isAbandoned);
        std::filesystem::remove(path_);
    }
}

TEST_F(LimitsChangedSocketTest, NeedsAFolderAndAPathOfAUsualLength) {
    const Binding missing = LimitsChangedSocket::bind(folder_.file("missing/socket"));
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error(), std::errc::no_such_file_or_directory);
    const Binding tooLong = LimitsChangedSocket::bind(folder_.file(std::string(200, 'x')));
    ASSERT_FALSE(tooLong);
    EXPECT_EQ(tooLong.error(), std::errc::filename_too_long);
}

TEST_F(LimitsChangedSocketTest, TheLongestPathThatFitsIsReached) {
    const std::string name = "/net.quillmoor.brimwatch.limitsChanged";
    const std::size_t longest = sizeof(sockaddr_un::sun_path) - 1;
    const std::string folder =
        folder_.file(std::string(longest - name.size() - folder_.path().size() - 1, 'x'));
    std::filesystem::create_directory(folder);
    const Binding binding = LimitsChangedSocket::bind(folder + name);
    ASSERT_TRUE(binding);
    postLimitsChanged(test::EnvironmentList{{"XDG_RUNTIME_DIR", folder}}.view());
    EXPECT_EQ(drained(binding), 1U);
}

TEST_F(LimitsChangedSocketTest, WhileAnotherProcessBindsItGivesUpInsteadOfWaiting) {
    const FileDescriptor other(::open(folder_.path().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(other.get(), LOCK_SH), 0);
    abandonSocket();
    const Binding binding = bind();
    ASSERT_FALSE(binding);
    EXPECT_EQ(binding.error(), std::errc::resource_unavailable_try_again);
    EXPECT_TRUE(test::exists(path_));
}

TEST_F(LimitsChangedSocketTest, WhereverTheDescriptorsRunOutTheFailureLeavesNothing) {
    abandonSocket();
    rlimit former{};
    ::getrlimit(RLIMIT_NOFILE, &former);
    int failures = 0;
    bool succeeded = false;
    for (rlim_t limit = STDERR_FILENO + 1; !succeeded && limit < former.rlim_cur; ++limit) {
        const rlimit narrow{.rlim_cur = limit, .rlim_max = former.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &narrow);
        const Binding binding = bind();
        ::setrlimit(RLIMIT_NOFILE, &former);
        succeeded = binding.has_value();
        failures += succeeded ? 0 : 1;
        EXPECT_TRUE(test::exists(path_));
    }
    EXPECT_TRUE(succeeded);
    EXPECT_GE(failures, 3);  // the socket, the folder, the probe
}

TEST_F(LimitsChangedSocketTest, LongDatagramsAndDescriptorsInThemAreDropped) {
    const Binding binding = bind();
    ASSERT_TRUE(binding);
    const auto address = socketAddress(path_).value();
    const FileDescriptor sender(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::connect(sender.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);
    std::string text(50'000, 'x');
    iovec content{.iov_base = text.data(), .iov_len = text.size()};
    union {
        cmsghdr header;
        char bytes[CMSG_SPACE(sizeof(int))];
    } control{};
    control.header = {
        .cmsg_len = CMSG_LEN(sizeof(int)), .cmsg_level = SOL_SOCKET, .cmsg_type = SCM_RIGHTS};
    Pipe passed;
    ASSERT_TRUE(passed.open());
    const int passedEnd = passed.writeEnd.get();
    std::copy_n(reinterpret_cast<const char*>(&passedEnd), sizeof passedEnd,
                CMSG_DATA(&control.header));
    msghdr message{};
    message.msg_iov = &content;
    message.msg_iovlen = 1;
    message.msg_control = &control;
    message.msg_controllen = sizeof control;
    ASSERT_EQ(::sendmsg(sender.get(), &message, 0), static_cast<ssize_t>(text.size()));
    EXPECT_EQ(drained(binding), 1U);
    // With no writer left, the pipe is at its end.
    passed.writeEnd.close();
    char byte = 0;
    EXPECT_EQ(::read(passed.readEnd.get(), &byte, 1), 0);
}

TEST_F(LimitsChangedSocketTest, TheSocketOfAnotherProcessIsTakenOnceThatIsKilled) {
    Pipe ready;
    ASSERT_TRUE(ready.open());
    test::ForkedProcess other([&] {
        const Binding binding = bind();
        const char byte = binding ? 'y' : 'n';
        if (::write(ready.writeEnd.get(), &byte, 1) == 1) ::pause();
    });
    char byte = 0;
    ASSERT_EQ(::read(ready.readEnd.get(), &byte, 1), 1);
    ASSERT_EQ(byte, 'y');
    expectTaken();
    other.kill();
    ASSERT_TRUE(test::exists(path_));
    const Binding binding = bind();
    ASSERT_TRUE(binding);
    post();
    EXPECT_EQ(drained(binding), 1U);
}

TEST_F(LimitsChangedSocketTest, OfManyProcessesThatFindItAbandonedAtOnceOneSucceeds) {
    constexpr int rounds = 20;
    constexpr int processes = 6;
    for (int round = 0; round < rounds; ++round) {
        abandonSocket();
        Pipe start;
        Pipe answers;
        ASSERT_TRUE(start.open() && answers.open());
        std::vector<std::unique_ptr<test::ForkedProcess>> children;
        for (int number = 0; number < processes; ++number) {
            children.push_back(std::make_unique<test::ForkedProcess>([&] {
                start.writeEnd.close();
                char byte = 0;
                static_cast<void>(::read(start.readEnd.get(), &byte, 1));  // until it is closed
                const Binding binding = bind();
                byte = binding ? 'y' : 'n';
                if (::write(answers.writeEnd.get(), &byte, 1) == 1) ::pause();
            }));
        }
        start.writeEnd.close();
        int successes = 0;
        for (int number = 0; number < processes; ++number) {
            char byte = 0;
            ASSERT_EQ(::read(answers.readEnd.get(), &byte, 1), 1);
            successes += byte == 'y' ? 1 : 0;
        }
        EXPECT_EQ(successes, 1);
        expectTaken();
        children.clear();
        ASSERT_TRUE(std::filesystem::remove(path_));
    }
}

TEST_F(LimitsChangedSocketTest, EndsWhileOthersGoOnSending) {
    const Binding binding = bind();
    ASSERT_TRUE(binding);
    const auto address = socketAddress(path_).value();
    std::vector<std::unique_ptr<test::ForkedProcess>> senders;
    for (int number = 0; number < 3; ++number) {
        senders.push_back(std::make_unique<test::ForkedProcess>([&] {
            const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM, 0));
            const auto* target = reinterpret_cast<const sockaddr*>(&address);
            while (true)
                ::sendto(socket.get(), "", 0, 0, target, sizeof address);
        }));
    }
    std::size_t heard = 0;
    EXPECT_TRUE(test::eventually([&] {
        const std::size_t count = drained(binding);
        EXPECT_LE(count, LimitsChangedSocket::mostAtOnce);
        heard += count;
        return heard > 10'000;
    }));
}

}  // namespace
}  // namespace brimwatch
