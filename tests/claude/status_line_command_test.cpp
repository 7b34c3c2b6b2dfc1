#include "claude/status_line_command.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "harness/random.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

constexpr const char* bundlePath = "/Applications/Brimwatch.app/Contents/MacOS/Brimwatch";

TEST(StatusLineCommand, QuotesThePathAndNamesTheAccount) {
    EXPECT_EQ(statusLineCommand(bundlePath, "work"),
              "'/Applications/Brimwatch.app/Contents/MacOS/Brimwatch' --statusline --account work");
    EXPECT_EQ(statusLineCommand("/usr/bin/brimwatch", std::nullopt),
              "'/usr/bin/brimwatch' --statusline");
}

TEST(StatusLineCommand, AQuoteInThePathIsWrittenForTheShellAndReadBack) {
    const std::string path = "/Users/o'neil/Applications/Brimwatch.app/Contents/MacOS/Brimwatch";
    const std::string command = statusLineCommand(path, std::nullopt);
    EXPECT_EQ(
        command,
        R"('/Users/o'\''neil/Applications/Brimwatch.app/Contents/MacOS/Brimwatch' --statusline)");
    EXPECT_EQ(parseStatusLineCommand(command), path);
}

TEST(StatusLineCommand, ReadsBackEveryPathAndAccountThatItWrites) {
    constexpr std::string_view pieces[] = {"'",
                                           "\\",
                                           " ",
                                           "/",
                                           "a",
                                           "한",
                                           "\"",
                                           "$x",
                                           "\n",
                                           "''",
                                           R"('\'')",
                                           " --statusline",
                                           " --account b",
                                           "*",
                                           "-"};
    test::Random random;
    SCOPED_TRACE(random.trace());
    for (int round = 0; round < 50'000; ++round) {
        std::string path = "/";
        for (std::size_t count = random.below(8); count > 0; --count) {
            path += pieces[random.below(std::size(pieces))];
        }
        ASSERT_EQ(parseStatusLineCommand(statusLineCommand(path, std::nullopt)), path);
        ASSERT_EQ(parseStatusLineCommand(statusLineCommand(path, "한-1._a")), path);
    }
}

TEST(StatusLineCommand, TakesAnUnquotedPathThatNeedsNoQuotes) {
    EXPECT_EQ(parseStatusLineCommand("/usr/bin/brim-watch_2.한 --statusline"),
              "/usr/bin/brim-watch_2.한");
    EXPECT_EQ(parseStatusLineCommand("/usr/bin/brimwatch --statusline --account a"),
              "/usr/bin/brimwatch");
}

TEST(StatusLineCommand, RefusesEveryOtherForm) {
    for (const char* command : {"",
                                "--statusline",
                                " --statusline",
                                "'/a'",
                                "'/a' --statusline ",
                                "'/a' --statusline x",
                                "'/a' --statuslines",
                                "'/a' --statusline --account",
                                "'/a' --statusline --account ",
                                "'/a' --statusline --account a b",
                                "'/a' --statusline --account a/b",
                                "'/a' --statusline  --account a",
                                "'/a' --statusline --account 'a'",
                                "'/a' --statusline --other a",
                                "'/a' --statusline | cat",
                                "'/a'  --statusline",
                                "'a' --statusline",
                                "a --statusline",
                                "'' --statusline",
                                "' --statusline",
                                "'/a'b' --statusline",
                                "'/a''b' --statusline",
                                "'/a'\\'b' --statusline",
                                "\"/a\" --statusline",
                                "/a b --statusline",
                                "/a'b --statusline",
                                "/a$b --statusline",
                                "env X=1 '/a' --statusline",
                                "'/a' '/b' --statusline",
                                "/a; --statusline",
                                "/usr/bin/x\xFF --statusline"}) {
        EXPECT_FALSE(parseStatusLineCommand(command)) << command;
    }
}

TEST(StatusLineCommand, IsToldByItsLastModeArgument) {
    EXPECT_EQ(parseStatusLineCommand("'/a --statusline' --statusline"), "/a --statusline");
    EXPECT_FALSE(parseStatusLineCommand("'/a' --statusline --statusline"));
}

class ConnectedExecutable : public ::testing::Test {
  protected:
    static std::optional<std::string> connected(const std::string& settings) {
        const std::optional<JsonObject> object = parseJsonObject(settings);
        EXPECT_TRUE(object) << settings;
        return connectedExecutable(*object, "/opt/run/me");
    }
    static std::optional<std::string> connectedByCommand(const std::string& command) {
        return connected(R"({"statusLine":{"type":"command","command":")" + command + R"("}})");
    }
};

TEST_F(ConnectedExecutable, IsTheRunningOne) {
    EXPECT_EQ(connectedByCommand("'/opt/run/me' --statusline"), "/opt/run/me");
}

TEST_F(ConnectedExecutable, IsAnyCopyToldByTheEndOfItsPath) {
    EXPECT_EQ(connectedByCommand("'/x/Brimwatch.app/Contents/MacOS/Brimwatch' --statusline"),
              "/x/Brimwatch.app/Contents/MacOS/Brimwatch");
    EXPECT_EQ(connectedByCommand("'/home/a/.local/bin/brimwatch' --statusline --account b"),
              "/home/a/.local/bin/brimwatch");
}

TEST_F(ConnectedExecutable, IsNotAnotherProgramThatTakesTheSameArgument) {
    EXPECT_FALSE(connectedByCommand("/usr/bin/other --statusline"));
    EXPECT_FALSE(connectedByCommand("'/usr/bin/notbrimwatch' --statusline"));
    EXPECT_FALSE(connectedByCommand("'/x/NotBrimwatch.app/Contents/MacOS/Brimwatch' --statusline"));
    EXPECT_FALSE(connectedByCommand("'/opt/run/me2' --statusline"));
}

TEST_F(ConnectedExecutable, NeedsACommandEntryOfTheRightTypes) {
    EXPECT_FALSE(connected("{}"));
    EXPECT_FALSE(connected(R"({"statusLine":"'/usr/bin/brimwatch' --statusline"})"));
    EXPECT_FALSE(connected(R"({"statusLine":{"command":"'/usr/bin/brimwatch' --statusline"}})"));
    EXPECT_FALSE(connected(
        R"({"statusLine":{"type":"static","command":"'/usr/bin/brimwatch' --statusline"}})"));
    EXPECT_FALSE(
        connected(R"({"statusLine":{"type":1,"command":"'/usr/bin/brimwatch' --statusline"}})"));
    EXPECT_FALSE(connected(R"({"statusLine":{"type":"command"}})"));
    EXPECT_FALSE(connected(R"({"statusLine":{"type":"command","command":7}})"));
}

class UsableCopy : public ::testing::Test {
  protected:
    bool usable(const std::string& path,
                DevelopmentLocations locations = DevelopmentLocations::rejected) {
        return isUsable(files_, path, locations, [this](const std::string& asked) {
            asked_ = asked;
            return executable_;
        });
    }

    PosixFileSystem files_;
    bool executable_ = true;
    std::string asked_;
};

TEST_F(UsableCopy, IsAnExecutableFile) {
    EXPECT_TRUE(usable("/usr/bin/brimwatch"));
    EXPECT_EQ(asked_, "/usr/bin/brimwatch");
    executable_ = false;
    EXPECT_FALSE(usable("/usr/bin/brimwatch"));
}

TEST_F(UsableCopy, IsNotOneOnADiskImageOrInATranslocatedPlace) {
    for (const DevelopmentLocations locations :
         {DevelopmentLocations::accepted, DevelopmentLocations::rejected}) {
        EXPECT_FALSE(
            usable("/Volumes/Brimwatch/Brimwatch.app/Contents/MacOS/Brimwatch", locations));
        EXPECT_FALSE(
            usable("/x/AppTranslocation/y/Brimwatch.app/Contents/MacOS/Brimwatch", locations));
    }
    EXPECT_TRUE(usable("/VolumesOfMine/bin/brimwatch"));
}

TEST_F(UsableCopy, IsNotABundleInABuildOrTemporaryFolderWhereTheseAreRejected) {
    const std::string bundle = "/Brimwatch.app/Contents/MacOS/Brimwatch";
    for (const char* folder : {"/a/DerivedData/b", "/a/build/b", "/build", "/tmp/x",
                               "/private/tmp/x", "/var/folders/x", "/private/var/folders/x"}) {
        EXPECT_FALSE(usable(folder + bundle)) << folder;
        EXPECT_TRUE(usable(folder + bundle, DevelopmentLocations::accepted)) << folder;
    }
}

TEST_F(UsableCopy, MayLieInAFolderWhoseNameOnlyBeginsLikeABuildFolder) {
    const std::string bundle = "/Brimwatch.app/Contents/MacOS/Brimwatch";
    for (const char* folder : {"/a/builds", "/a/build-2", "/a/DerivedData2", "/tmpx", "/a/tmp"}) {
        EXPECT_TRUE(usable(folder + bundle)) << folder;
    }
}

TEST_F(UsableCopy, OutsideABundleMayLieInABuildFolder) {
    EXPECT_TRUE(usable("/home/a/project/build/dev/bin/brimwatch"));
    EXPECT_TRUE(usable("/tmp/prefix/bin/brimwatch"));
}

TEST_F(UsableCopy, IsJudgedByWhereItsLinksLeadButAskedForAsGiven) {
    const test::TemporaryFolder folder;
    const std::string real = std::filesystem::canonical(folder.path());
    std::filesystem::create_directories(real + "/build/Brimwatch.app/Contents/MacOS");
    std::filesystem::create_symlink(real + "/build/Brimwatch.app", real + "/link");
    EXPECT_FALSE(usable(real + "/link/Contents/MacOS/Brimwatch"));
    const std::string throughLink = real + "/link/../outside/./brimwatch";
    EXPECT_TRUE(usable(throughLink));
    EXPECT_EQ(asked_, throughLink);
}

}  // namespace
}  // namespace brimwatch
