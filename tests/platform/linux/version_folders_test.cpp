#include "platform/linux/version_folders.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "platform/linux/update_maker.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

class VersionFoldersTest : public ::testing::Test {
  protected:
    std::optional<VersionFolders> find(uid_t user = ::getuid()) {
        return VersionFolders::find(files_, installation_.desktopProgram(), user);
    }
    void makeVersion(const std::string& name) {
        const std::string command = installation_.versionsFolder() + '/' + name + "/bin/brimwatch";
        test::writeFile(command, "command");
        ::chmod(command.c_str(), 0755);
    }
    std::string link() const { return fs::read_symlink(installation_.root() + "/current"); }

    PosixFileSystem files_;
    test::Installation installation_;
    VersionFolders folders_ = installation_.folders();
};

TEST_F(VersionFoldersTest, AreFoundFromTheDesktopProgramThatRuns) {
    const auto found = find();
    ASSERT_TRUE(found);
    EXPECT_EQ(found->path("57"), installation_.versionsFolder() + "/57");
    EXPECT_EQ(found->running(), "1");
}

TEST_F(VersionFoldersTest, AreNotThoseOfAPackage) {
    EXPECT_FALSE(
        VersionFolders::find(files_, "/usr/libexec/brimwatch/brimwatch-desktop", ::getuid()));
    EXPECT_FALSE(VersionFolders::find(files_, "brimwatch-desktop", ::getuid()));
    EXPECT_FALSE(VersionFolders::find(files_, "", ::getuid()));
}

TEST_F(VersionFoldersTest, HaveALinkIntoThem) {
    fs::remove(installation_.root() + "/current");
    EXPECT_FALSE(find());
    fs::create_directory(installation_.root() + "/current");
    EXPECT_FALSE(find());
    fs::remove(installation_.root() + "/current");
    fs::create_symlink("/usr", installation_.root() + "/current");
    EXPECT_FALSE(find());
    fs::remove(installation_.root() + "/current");
    // To a version that is not the running one, or is gone.
    fs::create_symlink("versions/2", installation_.root() + "/current");
    EXPECT_TRUE(find());
}

TEST_F(VersionFoldersTest, AreCalledVersions) {
    fs::rename(installation_.versionsFolder(), installation_.root() + "/others");
    EXPECT_FALSE(VersionFolders::find(
        files_, installation_.root() + "/others/1/libexec/brimwatch/brimwatch-desktop",
        ::getuid()));
}

TEST_F(VersionFoldersTest, BelongToTheUserAlone) {
    EXPECT_FALSE(find(::getuid() + 1));
    for (const std::string& folder : {installation_.root(), installation_.versionsFolder()}) {
        ::chmod(folder.c_str(), 0777);
        EXPECT_FALSE(find()) << folder;
        ::chmod(folder.c_str(), 0755);
        EXPECT_TRUE(find());
    }
}

TEST_F(VersionFoldersTest, AreNamedByVersionsWithoutSurprises) {
    for (const char* name : {"57", "1.4.2", "1.0b3", "a_b-c+d", "0"})
        EXPECT_TRUE(VersionFolders::isName(name)) << name;
    EXPECT_TRUE(VersionFolders::isName(std::string(64, '1')));
    EXPECT_FALSE(VersionFolders::isName(std::string(65, '1')));
    for (const char* name : {"", ".", "..", ".5", "a/b", "../x", "a b", "1\n", "한", "a\\b", "*"})
        EXPECT_FALSE(VersionFolders::isName(name)) << name;
}

TEST_F(VersionFoldersTest, HoldAFileThatHasNoName) {
    const auto file = folders_.makeUnnamedFile();
    ASSERT_TRUE(file);
    ASSERT_EQ(::write(file->get(), "x", 1), 1);
    struct stat status {};
    ::fstat(file->get(), &status);
    EXPECT_EQ(status.st_nlink, 0U);
    EXPECT_NE(::fcntl(file->get(), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_THAT(installation_.versions(), ElementsAre("1"));
}

TEST_F(VersionFoldersTest, AStagedVersionGetsItsNameAsAWhole) {
    const auto staging = folders_.makeStaging();
    ASSERT_TRUE(staging);
    EXPECT_NE(folders_.makeStaging(), *staging);
    makeVersion(*staging);
    test::writeFile(installation_.versionsFolder() + "/2/left", "of an attempt before");
    ASSERT_TRUE(folders_.adopt(*staging, "2"));
    EXPECT_TRUE(test::exists(installation_.versionsFolder() + "/2/bin/brimwatch"));
    EXPECT_FALSE(test::exists(installation_.versionsFolder() + "/2/left"));
    struct stat status {};
    ::stat((installation_.versionsFolder() + "/2").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777U, 0755U);
}

TEST_F(VersionFoldersTest, AVersionInUseIsNotReplaced) {
    const auto staging = folders_.makeStaging();
    EXPECT_TRUE(folders_.adopt(*staging, "1"));
    EXPECT_EQ(installation_.current(), "1");
    EXPECT_THAT(installation_.versions(), ElementsAre("1"));
    // One that runs, but is not called any more.
    makeVersion("2");
    ASSERT_TRUE(folders_.switchTo("2"));
    const auto second = folders_.makeStaging();
    makeVersion(*second);
    EXPECT_FALSE(folders_.adopt(*second, "1"));
    EXPECT_EQ(test::readFile(installation_.versionsFolder() + "/1/bin/brimwatch"), "command 1");
}

TEST_F(VersionFoldersTest, TheLinkChangesToAVersionThatIsThere) {
    EXPECT_FALSE(folders_.switchTo("2"));
    EXPECT_EQ(link(), "versions/1");
    makeVersion("2");
    ASSERT_TRUE(folders_.switchTo("2"));
    EXPECT_EQ(link(), "versions/2");
    ::chmod((installation_.versionsFolder() + "/1/bin/brimwatch").c_str(), 0644);
    EXPECT_EQ(folders_.switchTo("1").has_value(), false);
    EXPECT_EQ(link(), "versions/2");
}

TEST_F(VersionFoldersTest, TheLinkChangesPastOneThatASwitchBeforeLeft) {
    makeVersion("2");
    fs::create_symlink("versions/9", installation_.root() + "/.current-new");
    ASSERT_TRUE(folders_.switchTo("2"));
    EXPECT_EQ(link(), "versions/2");
    EXPECT_FALSE(fs::is_symlink(installation_.root() + "/.current-new"));
}

TEST_F(VersionFoldersTest, WhatNobodyUsesIsRemoved) {
    for (const char* name : {"0", "2", "3", "4"})
        makeVersion(name);
    ASSERT_TRUE(folders_.switchTo("3"));
    test::writeFile(installation_.versionsFolder() + "/.staging-abcdef/x", "x");
    test::writeFile(installation_.versionsFolder() + "/.of-the-user", "x");
    folders_.removeUnused("4");
    EXPECT_THAT(installation_.versions(), ElementsAre(".of-the-user", "1", "3", "4"));
}

TEST_F(VersionFoldersTest, WithoutALinkNothingIsRemoved) {
    makeVersion("2");
    fs::remove(installation_.root() + "/current");
    folders_.removeUnused("");
    EXPECT_THAT(installation_.versions(), ElementsAre("1", "2"));
}

TEST_F(VersionFoldersTest, RemovingDoesNotFollowLinks) {
    test::writeFile(installation_.root() + "/outside/file", "x");
    makeVersion("2");
    fs::create_directory_symlink("../../outside", installation_.versionsFolder() + "/2/link");
    fs::create_directory_symlink("../outside", installation_.versionsFolder() + "/3");
    folders_.removeUnused("");
    EXPECT_THAT(installation_.versions(), ElementsAre("1"));
    EXPECT_TRUE(test::exists(installation_.root() + "/outside/file"));
}

}  // namespace
}  // namespace brimwatch
