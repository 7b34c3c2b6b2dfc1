#include "platform/posix/private_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <thread>

#include "harness/process.h"
#include "harness/temporary_folder.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t limit = 8192;

class PrivateFile : public ::testing::Test {
  protected:
    std::string write(const std::string& bytes, mode_t permissions = 0600) {
        const std::string path = folder_.file("configuration.json");
        test::writeFile(path, bytes);
        EXPECT_EQ(::chmod(path.c_str(), permissions), 0);
        return path;
    }

    static PrivateFileResult read(const std::string& path) {
        return readPrivateFile(path, ::getuid(), limit);
    }
    static PrivateFileFailure failureOf(const PrivateFileResult& result) {
        EXPECT_FALSE(result);
        return result ? PrivateFileFailure{-1} : result.error();
    }

    test::TemporaryFolder folder_;
};

TEST_F(PrivateFile, IsReadAsItIs) {
    const PrivateFileResult bytes = read(write(std::string("a\0b\n", 4)));
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->view(), std::string_view("a\0b\n", 4));
}

TEST_F(PrivateFile, WithAnyOtherModeIsRefused) {
    for (const mode_t mode : {0640U, 0700U, 0400U, 0200U, 0604U, 0660U, 0601U, 0606U, 0677U, 0777U,
                              04600U, 02600U, 01600U}) {
        const std::string path = write("{}", mode);
        // What the owner can't even open tells nothing of its mode; who is root can.
        const PrivateFileFailure expected = ::access(path.c_str(), R_OK) == 0
                                                ? PrivateFileFailure::permissions
                                                : PrivateFileFailure::unreadable;
        EXPECT_EQ(failureOf(read(path)), expected) << std::oct << mode;
    }
}

TEST_F(PrivateFile, OfAnotherUserIsRefused) {
    EXPECT_EQ(failureOf(readPrivateFile(write("{}"), ::getuid() + 1, limit)),
              PrivateFileFailure::permissions);
}

TEST_F(PrivateFile, BehindASymbolicLinkIsRefused) {
    const std::string link = folder_.file("link");
    fs::create_symlink(write("{}"), link);
    EXPECT_EQ(failureOf(read(link)), PrivateFileFailure::unreadable);
}

TEST_F(PrivateFile, IsNeitherAFolderNorAPipeNorADeviceNorMissing) {
    const std::string pipe = folder_.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path :
         {folder_.path(), pipe, std::string("/dev/null"), folder_.file("missing"), std::string()})
        EXPECT_EQ(failureOf(read(path)), PrivateFileFailure::unreadable) << path;
}

TEST_F(PrivateFile, HasFromOneByteToTheLimit) {
    EXPECT_EQ(failureOf(read(write(""))), PrivateFileFailure::size);
    EXPECT_EQ(read(write("x"))->size(), 1U);
    EXPECT_EQ(read(write(std::string(limit, 'x')))->size(), limit);
    EXPECT_EQ(failureOf(read(write(std::string(limit + 1, 'x')))), PrivateFileFailure::size);
}

TEST_F(PrivateFile, ThatGrowsOrShrinksAfterItWasCheckedIsMeasuredAgain) {
    const std::string path = write("x");
    const auto file = openPrivateFile(path, ::getuid(), limit);
    ASSERT_TRUE(file);
    test::writeFile(path, std::string(limit + 100, 'x'));
    EXPECT_EQ(failureOf(readOpenedFile(*file, limit)), PrivateFileFailure::size);

    const auto second = openPrivateFile(write("x"), ::getuid(), limit);
    ASSERT_TRUE(second);
    test::writeFile(path, "");
    EXPECT_EQ(failureOf(readOpenedFile(*second, limit)), PrivateFileFailure::size);
}

TEST_F(PrivateFile, ThatIsReplacedAfterItWasCheckedIsReadAsItWas) {
    const std::string path = write("checked");
    const auto file = openPrivateFile(path, ::getuid(), limit);
    ASSERT_TRUE(file);
    fs::remove(path);
    test::writeFile(path, "in its place");
    EXPECT_EQ(readOpenedFile(*file, limit)->view(), "checked");
}

TEST_F(PrivateFile, IsNotHandedToChildren) {
    const auto file = openPrivateFile(write("x"), ::getuid(), limit);
    ASSERT_TRUE(file);
    EXPECT_NE(::fcntl(file->get(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST_F(PrivateFile, ThatCantBeReadIsUnreadable) {
    const FileDescriptor file(::open(write("x").c_str(), O_WRONLY | O_CLOEXEC));
    EXPECT_EQ(failureOf(readOpenedFile(file, limit)), PrivateFileFailure::unreadable);
}

TEST_F(PrivateFile, IsReadInPiecesAndPastSignals) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const FileDescriptor reader(ends[0]);
    FileDescriptor writer(ends[1]);
    static volatile std::sig_atomic_t signals = 0;
    struct sigaction count {};
    struct sigaction former {};
    count.sa_handler = [](int) { signals = signals + 1; };
    ASSERT_EQ(::sigaction(SIGUSR1, &count, &former), 0);
    std::thread other([&writer, waiting = ::pthread_self()] {
        ASSERT_EQ(::write(writer.get(), "ab", 2), 2);
        ASSERT_TRUE(test::eventually([&] {
            ::pthread_kill(waiting, SIGUSR1);
            return signals >= 5;
        }));
        ASSERT_EQ(::write(writer.get(), "cd", 2), 2);
        writer.close();
    });
    const PrivateFileResult bytes = readOpenedFile(reader, limit);
    other.join();
    ::sigaction(SIGUSR1, &former, nullptr);
    ASSERT_TRUE(bytes);
    EXPECT_EQ(bytes->view(), "abcd");
}

}  // namespace
}  // namespace brimwatch
