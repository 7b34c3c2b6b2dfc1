#include "support/paths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "harness/environment_list.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

constexpr std::uint32_t rootUser = 0;
constexpr std::uint32_t unknownUser = 4'000'000'000;

class PathsOnDisk : public ::testing::Test {
  protected:
    test::TemporaryFolder folder_;
    PosixFileSystem files_;
};
using HomeFolder = PathsOnDisk;
using ConfigFolder = PathsOnDisk;
using SettingsFile = PathsOnDisk;
using StateFolder = PathsOnDisk;
using DataFolder = PathsOnDisk;

TEST(Paths, JoinsWithOneSlash) {
    EXPECT_EQ(joinPath("/a", "b"), "/a/b");
    EXPECT_EQ(joinPath("/a/", "b"), "/a/b");
    EXPECT_EQ(joinPath("/", "b"), "/b");
}

TEST(Paths, LastComponentDoesNotCountTrailingSlashes) {
    EXPECT_EQ(lastPathComponent("/a/b"), "b");
    EXPECT_EQ(lastPathComponent("/a/b//"), "b");
    EXPECT_EQ(lastPathComponent("b"), "b");
    EXPECT_EQ(lastPathComponent("/"), "/");
    EXPECT_EQ(lastPathComponent("///"), "/");
    EXPECT_EQ(lastPathComponent(""), "");
}

TEST(Paths, ParentIsTheFolderOfTheLastComponent) {
    EXPECT_EQ(parentPath("/a/b"), "/a");
    EXPECT_EQ(parentPath("/a/b/"), "/a");
    EXPECT_EQ(parentPath("/a//b"), "/a");
    EXPECT_EQ(parentPath("/a"), "/");
    EXPECT_EQ(parentPath("/"), "/");
    EXPECT_EQ(parentPath("a"), ".");
    EXPECT_EQ(parentPath(""), ".");
}

TEST(Paths, StandardisingTakesOutDotsAndEmptyComponents) {
    EXPECT_EQ(standardizedPath("/a/./b//c/"), "/a/b/c");
    EXPECT_EQ(standardizedPath("/a/../b"), "/b");
    EXPECT_EQ(standardizedPath("/../.."), "/");
    EXPECT_EQ(standardizedPath("/"), "/");
    EXPECT_EQ(standardizedPath("a/../../b"), "../b");
    EXPECT_EQ(standardizedPath("a/.."), "");
}

TEST_F(PathsOnDisk, ResolvingFollowsLinksAsFarAsThePathExists) {
    const std::string real = std::filesystem::canonical(folder_.path());
    std::filesystem::create_directories(real + "/target/inside");
    std::filesystem::create_symlink(real + "/target", real + "/link");
    EXPECT_EQ(resolvedPath(files_, real + "/link/inside"), real + "/target/inside");
    EXPECT_EQ(resolvedPath(files_, real + "/link/missing/deep"), real + "/target/missing/deep");
    EXPECT_EQ(resolvedPath(files_, real + "/link/../x"), real + "/x");
    EXPECT_EQ(resolvedPath(files_, "/"), "/");
    EXPECT_EQ(resolvedPath(files_, "/no-such-folder/x"), "/no-such-folder/x");
}

TEST_F(PathsOnDisk, ResolvingTakesARelativePathFromTheWorkingFolder) {
    const std::string here = std::filesystem::current_path();
    EXPECT_EQ(resolvedPath(files_, ""), here);
    EXPECT_EQ(resolvedPath(files_, "."), here);
    EXPECT_EQ(resolvedPath(files_, "no-such-folder"), here + "/no-such-folder");
    EXPECT_EQ(resolvedPath(files_, "no-such-folder/x/"), here + "/no-such-folder/x");
    EXPECT_EQ(resolvedPath(files_, ".."), parentPath(here));
    EXPECT_EQ(resolvedPath(files_, "../no-such-folder"),
              joinPath(parentPath(here), "no-such-folder"));
}

TEST_F(PathsOnDisk, ResolvingALoopOfLinksEnds) {
    std::filesystem::create_symlink(folder_.file("b"), folder_.file("a"));
    std::filesystem::create_symlink(folder_.file("a"), folder_.file("b"));
    EXPECT_EQ(lastPathComponent(resolvedPath(files_, folder_.file("a"))), "a");
}

TEST_F(HomeFolder, IsTheMovedOneWhenThatIsSetAndNotEmpty) {
    const test::EnvironmentList moved = {{"BRIMWATCH_HOME", "/moved"}, {"HOME", "/home/a"}};
    EXPECT_EQ(homeFolder(moved.view(), files_, rootUser), "/moved");
    EXPECT_EQ(realHomeFolder(moved.view(), files_, rootUser), "/home/a");
}

TEST_F(HomeFolder, IsTheRealOneWhenTheMovedOneIsEmpty) {
    const test::EnvironmentList empty = {{"BRIMWATCH_HOME", ""}, {"HOME", "/home/a"}};
    EXPECT_EQ(homeFolder(empty.view(), files_, rootUser), "/home/a");
}

TEST_F(HomeFolder, ComesFromThePasswordFileWhenHomeIsEmptyRelativeOrMissing) {
    for (const test::EnvironmentList& environment :
         {test::EnvironmentList{{"HOME", ""}}, test::EnvironmentList{{"HOME", "home/a"}},
          test::EnvironmentList{{"HOMER", "/home/b"}}}) {
        EXPECT_EQ(homeFolder(environment.view(), files_, rootUser), "/root");
    }
}

TEST_F(HomeFolder, IsNowhereForAUserWithoutOne) {
    const test::EnvironmentList environment = {{"X", "y"}};
    EXPECT_EQ(homeFolder(environment.view(), files_, unknownUser), std::nullopt);
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(0, std::errc::permission_denied);
    EXPECT_EQ(homeFolder(environment.view(), failing, rootUser), std::nullopt);
}

TEST_F(ConfigFolder, IsTheChosenOneOrThatOfTheRealHome) {
    test::EnvironmentList environment = {
        {"XDG_CONFIG_HOME", "/c"}, {"HOME", "/h"}, {"BRIMWATCH_HOME", "/moved"}};
    EXPECT_EQ(configFolder(environment.view(), files_, rootUser), "/c");
    for (const char* value : {"", "relative"}) {
        environment.set("XDG_CONFIG_HOME", value);
        EXPECT_EQ(configFolder(environment.view(), files_, rootUser), "/h/.config");
    }
}

TEST_F(ConfigFolder, IsNowhereWithoutAHome) {
    const test::EnvironmentList environment = {{"X", "y"}};
    EXPECT_EQ(configFolder(environment.view(), files_, unknownUser), std::nullopt);
    EXPECT_EQ(settingsFile(environment.view(), files_, unknownUser), std::nullopt);
}

TEST_F(SettingsFile, LiesInTheConfigurationFolder) {
    const test::EnvironmentList set = {{"XDG_CONFIG_HOME", "/c"}, {"HOME", "/h"}};
    EXPECT_EQ(settingsFile(set.view(), files_, rootUser), "/c/brimwatch/settings.json");
}

TEST_F(SettingsFile, FallsBackToTheRealHomeForAnUnsetOrRelativeFolder) {
    for (const char* value : {"", "relative"}) {
        const test::EnvironmentList environment = {
            {"XDG_CONFIG_HOME", value}, {"HOME", "/h"}, {"BRIMWATCH_HOME", "/moved"}};
        EXPECT_EQ(settingsFile(environment.view(), files_, rootUser),
                  "/h/.config/brimwatch/settings.json");
    }
}

TEST_F(StateFolder, LiesInTheFolderForState) {
    const test::EnvironmentList set = {{"XDG_STATE_HOME", "/s"}, {"HOME", "/h"}};
    EXPECT_EQ(stateFolder(set.view(), files_, rootUser), "/s/brimwatch");
}

TEST_F(StateFolder, FallsBackToTheRealHomeForAnUnsetOrRelativeFolder) {
    for (const char* value : {"", "relative"}) {
        const test::EnvironmentList environment = {
            {"XDG_STATE_HOME", value}, {"HOME", "/h"}, {"BRIMWATCH_HOME", "/moved"}};
        EXPECT_EQ(stateFolder(environment.view(), files_, rootUser), "/h/.local/state/brimwatch");
    }
}

TEST_F(DataFolder, LiesInTheFolderForData) {
    const test::EnvironmentList set = {{"XDG_DATA_HOME", "/d"}, {"HOME", "/h"}};
    EXPECT_EQ(dataFolder(set.view(), files_, rootUser), "/d/brimwatch");
}

TEST_F(DataFolder, FallsBackToTheRealHomeForAnUnsetOrRelativeFolder) {
    for (const char* value : {"", "relative"}) {
        const test::EnvironmentList environment = {
            {"XDG_DATA_HOME", value}, {"HOME", "/h"}, {"BRIMWATCH_HOME", "/moved"}};
        EXPECT_EQ(dataFolder(environment.view(), files_, rootUser), "/h/.local/share/brimwatch");
    }
}

}  // namespace
}  // namespace brimwatch
