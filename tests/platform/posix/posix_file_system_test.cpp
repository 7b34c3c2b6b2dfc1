#include "platform/posix/posix_file_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "harness/temporary_folder.h"
#include "support/atomic_file.h"

namespace brimwatch {
namespace {

using ::testing::UnorderedElementsAre;

class PosixFiles : public ::testing::Test {
  protected:
    test::TemporaryFolder folder_;
    PosixFileSystem files_;
};

TEST_F(PosixFiles, ReadGivesEveryByte) {
    const std::string bytes("a\0\xFF\n", 4);
    test::writeFile(folder_.file("x"), bytes);
    EXPECT_EQ(files_.read(folder_.file("x"), 100), bytes);
    test::writeFile(folder_.file("empty"), "");
    EXPECT_EQ(files_.read(folder_.file("empty"), 100), "");
    const std::string large(3'000'000, 'x');
    test::writeFile(folder_.file("large"), large);
    EXPECT_EQ(files_.read(folder_.file("large"), large.size()), large);
}

TEST_F(PosixFiles, ReadRefusesALargerFile) {
    test::writeFile(folder_.file("x"), "12345");
    EXPECT_TRUE(files_.read(folder_.file("x"), 5));
    EXPECT_EQ(files_.read(folder_.file("x"), 4).error(), std::errc::file_too_large);
}

TEST_F(PosixFiles, ReadRefusesWhatIsNotARegularFileWithoutWaiting) {
    ASSERT_EQ(::mkfifo(folder_.file("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files_.read(folder_.file("pipe"), 100));
    EXPECT_EQ(files_.read(folder_.path(), 100).error(), std::errc::is_a_directory);
    EXPECT_FALSE(files_.read("/dev/zero", 100));
    EXPECT_EQ(files_.read(folder_.file("none"), 100).error(), std::errc::no_such_file_or_directory);
}

TEST_F(PosixFiles, ReadTakesFilesOfProcThatClaimToBeEmpty) {
    EXPECT_GT(files_.read("/proc/self/status", 100'000)->size(), 100U);
}

TEST_F(PosixFiles, StatusFollowsLinks) {
    test::writeFile(folder_.file("x"), "12345");
    std::filesystem::create_symlink(folder_.file("x"), folder_.file("link"));
    ::chmod(folder_.file("x").c_str(), 04640);
    const FileResult<FileStatus> status = files_.status(folder_.file("link"));
    ASSERT_TRUE(status);
    EXPECT_EQ(status->kind, FileKind::regular);
    EXPECT_EQ(status->permissions, 04640U);
    EXPECT_EQ(status->size, 5);
    EXPECT_EQ(status->owner, ::geteuid());
    EXPECT_EQ(status, files_.status(folder_.file("x")));
    EXPECT_EQ(files_.status(folder_.path())->kind, FileKind::folder);
    EXPECT_EQ(files_.status("/dev/null")->kind, FileKind::other);
    EXPECT_FALSE(files_.status(folder_.file("none")));
}

TEST_F(PosixFiles, EntriesHoldHiddenNamesAndNamesThatAreNotUtf8) {
    test::writeFile(folder_.file(".hidden"), "");
    test::writeFile(folder_.file("\xFF"), "");
    test::writeFile(folder_.file("한글"), "");
    EXPECT_THAT(*files_.entries(folder_.path()), UnorderedElementsAre(".hidden", "\xFF", "한글"));
    EXPECT_FALSE(files_.entries(folder_.file("none")));
    EXPECT_FALSE(files_.entries(folder_.file("한글")));
}

TEST_F(PosixFiles, MakeFoldersMakesWhatIsMissing) {
    EXPECT_TRUE(files_.makeFolders(folder_.file("a/b/c")));
    EXPECT_TRUE(files_.makeFolders(folder_.file("a/b/c")));
    EXPECT_TRUE(files_.makeFolders(folder_.file("a/b/d/")));
    EXPECT_EQ(files_.status(folder_.file("a/b/d"))->kind, FileKind::folder);
    test::writeFile(folder_.file("file"), "");
    EXPECT_EQ(files_.makeFolders(folder_.file("file/x")).error(), std::errc::not_a_directory);
    EXPECT_FALSE(files_.makeFolders("/proc/no/such"));
}

TEST_F(PosixFiles, ALockKeepsOthersOutUntilItIsGivenBack) {
    auto first = files_.lock(folder_.file(".lock"), LockWait::untilFree);
    ASSERT_TRUE(first);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(files_.lock(folder_.file(".lock"), LockWait::atMostTwoSeconds));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1900));
    first->reset();
    EXPECT_TRUE(files_.lock(folder_.file(".lock"), LockWait::atMostTwoSeconds));
}

TEST_F(PosixFiles, ALockThatIsGivenBackInTimeIsTaken) {
    auto first = files_.lock(folder_.file(".lock"), LockWait::untilFree);
    std::thread release([&first] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        first->reset();
    });
    EXPECT_TRUE(files_.lock(folder_.file(".lock"), LockWait::atMostTwoSeconds));
    release.join();
}

TEST_F(PosixFiles, ATemporaryFileIsHiddenAndGoesWithItsOwner) {
    {
        const auto file = files_.makeTemporary(folder_.path(), 0644);
        ASSERT_TRUE(file);
        const auto names = *files_.entries(folder_.path());
        ASSERT_EQ(names.size(), 1U);
        EXPECT_TRUE(names[0].starts_with('.'));
        EXPECT_FALSE(names[0].ends_with(".json"));
    }
    EXPECT_TRUE(files_.entries(folder_.path())->empty());
}

TEST_F(PosixFiles, TemporaryFilesOfOneProcessDoNotMeet) {
    const auto first = files_.makeTemporary(folder_.path(), 0644);
    const auto second = files_.makeTemporary(folder_.path(), 0644);
    ASSERT_TRUE(first && second);
    EXPECT_TRUE((*first)->write("1"));
    EXPECT_TRUE((*second)->write("2"));
    EXPECT_TRUE((*first)->replace(folder_.file("a")));
    EXPECT_TRUE((*second)->replace(folder_.file("b")));
    EXPECT_EQ(test::readFile(folder_.file("a")) + test::readFile(folder_.file("b")), "12");
}

TEST_F(PosixFiles, ATemporaryFileGetsANameWhereItsFirstOnesAreTaken) {
    for (int index = 0; index < 50; ++index) {
        test::writeFile(folder_.file(".brimwatch-" + std::to_string(::getpid()) + "-" +
                                     std::to_string(index) + ".tmp"),
                        "of a process with the same number elsewhere");
    }
    const auto file = files_.makeTemporary(folder_.path(), 0644);
    ASSERT_TRUE(file);
    EXPECT_EQ(files_.entries(folder_.path())->size(), 51U);
}

TEST_F(PosixFiles, ClaimTakesANameOnlyWhenItIsFree) {
    {
        const auto file = files_.makeTemporary(folder_.path(), 0644);
        EXPECT_TRUE((*file)->write("first"));
        EXPECT_TRUE((*file)->claim(folder_.file("x")));
        const auto late = files_.makeTemporary(folder_.path(), 0644);
        EXPECT_EQ((*late)->claim(folder_.file("x")).error(), std::errc::file_exists);
    }
    EXPECT_EQ(test::readFile(folder_.file("x")), "first");
    EXPECT_EQ(files_.entries(folder_.path())->size(), 1U);
}

TEST_F(PosixFiles, OnlyAbandonedTemporaryFilesAreRemoved) {
    const auto living = files_.makeTemporary(folder_.path(), 0644);
    test::writeFile(folder_.file(".brimwatch-1-0.tmp"), "left behind");
    test::writeFile(folder_.file(".brimwatch-x"), "of somebody else");
    test::writeFile(folder_.file("brimwatch-1-0.tmp"), "of somebody else");
    std::filesystem::create_symlink(folder_.file(".brimwatch-x"), folder_.file(".brimwatch-2.tmp"));
    files_.removeAbandonedTemporaries(folder_.path());
    EXPECT_FALSE(test::exists(folder_.file(".brimwatch-1-0.tmp")));
    EXPECT_EQ(files_.entries(folder_.path())->size(), 4U);
    EXPECT_TRUE((*living)->replace(folder_.file("y")));
}

TEST_F(PosixFiles, ReplacingKeepsTheModeAndOwnerThatAreAskedFor) {
    const mode_t mask = ::umask(077);
    const FileOwner self{::geteuid(), ::getegid()};
    EXPECT_TRUE(
        replaceFile(files_, folder_.file("x"), "1",
                    {.durability = Durability::synchronized, .permissions = 0664, .owner = self}));
    EXPECT_TRUE(replaceFile(files_, folder_.file("y"), "1", {}));
    ::umask(mask);
    EXPECT_EQ(files_.status(folder_.file("x"))->permissions, 0664U);
    EXPECT_EQ(files_.status(folder_.file("y"))->permissions, 0600U);
}

TEST_F(PosixFiles, LinkTargetIsWhatALinkSaysAndNothingElseHasOne) {
    std::filesystem::create_symlink("some/where", folder_.file("link"));
    test::writeFile(folder_.file("x"), "");
    EXPECT_EQ(files_.linkTarget(folder_.file("link")), "some/where");
    EXPECT_EQ(files_.linkTarget(folder_.file("x")).error(), std::errc::invalid_argument);
    EXPECT_EQ(files_.linkTarget(folder_.file("none")).error(),
              std::errc::no_such_file_or_directory);
}

TEST_F(PosixFiles, AnotherNameIsTheSameFileAndNeverTakesOneThatIsThere) {
    test::writeFile(folder_.file("x"), "1");
    EXPECT_TRUE(files_.addName(folder_.file("x"), folder_.file("y")));
    EXPECT_EQ(files_.status(folder_.file("x")), files_.status(folder_.file("y")));
    EXPECT_EQ(files_.addName(folder_.file("x"), folder_.file("y")).error(), std::errc::file_exists);
}

TEST_F(PosixFiles, RemovingTakesAFileOrALinkAndNothingElse) {
    test::writeFile(folder_.file("x"), "1");
    std::filesystem::create_symlink(folder_.file("x"), folder_.file("link"));
    std::filesystem::create_directory(folder_.file("folder"));
    EXPECT_TRUE(files_.remove(folder_.file("link")));
    EXPECT_TRUE(test::exists(folder_.file("x")));
    EXPECT_TRUE(files_.remove(folder_.file("x")));
    EXPECT_EQ(files_.remove(folder_.file("x")).error(), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(files_.remove(folder_.file("folder")));
    EXPECT_EQ(files_.entries(folder_.path()), std::vector<std::string>{"folder"});
}

TEST_F(PosixFiles, ClaimingAFileIsMakingItWholeOrNotAtAll) {
    EXPECT_TRUE(claimFile(files_, folder_.file("x"), "first", {}));
    EXPECT_EQ(claimFile(files_, folder_.file("x"), "second", {}).error(), std::errc::file_exists);
    EXPECT_EQ(test::readFile(folder_.file("x")), "first");
    EXPECT_EQ(files_.entries(folder_.path())->size(), 1U);
}

TEST_F(PosixFiles, RealPathIsWithoutLinks) {
    const std::string real = std::filesystem::canonical(folder_.path());
    std::filesystem::create_directories(real + "/a");
    std::filesystem::create_symlink("a", real + "/link");
    EXPECT_EQ(files_.realPath(real + "/link/../a/."), real + "/a");
    EXPECT_FALSE(files_.realPath(real + "/none"));
}

}  // namespace
}  // namespace brimwatch
