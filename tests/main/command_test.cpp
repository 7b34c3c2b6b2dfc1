// The command as a process: which role it takes, and what it leaves on its streams.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "harness/process.h"
#include "harness/temporary_folder.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;

constexpr const char* usage =
    "Use --configure-private-updates <0600 JSON file> or --clear-private-updates.\n";

class Command : public ::testing::Test {
  protected:
    // An installation in a folder of its own: <prefix>/bin/brimwatch.
    void SetUp() override {
        fs::create_directories(prefix_ + "/bin");
        fs::copy_file(BRIMWATCH_COMMAND, prefix_ + "/bin/brimwatch");
    }

    void installDesktopProgram() {
        fs::create_directories(prefix_ + "/libexec/brimwatch");
        fs::copy_file(BRIMWATCH_PRINT_ARGUMENTS, prefix_ + "/libexec/brimwatch/brimwatch-desktop");
    }

    test::ProcessResult run(std::vector<std::string> arguments) {
        return runAs(prefix_ + "/bin/brimwatch", std::move(arguments));
    }

    test::ProcessResult runAs(const std::string& program, std::vector<std::string> arguments,
                              const std::string& workingFolder = "/") {
        return test::runProcess(
            {.program = program,
             .arguments = std::move(arguments),
             .environment = {{"HOME", folder_.file("home")}, {"BRIMWATCH_TEST_MARK", "mark"}},
             .input = "",
             .prepare = [&] { fs::current_path(workingFolder); }});
    }

    test::TemporaryFolder folder_;
    std::string prefix_ = fs::canonical(folder_.path()).string() + "/versions/1";
};

TEST_F(Command, WithoutTheDesktopProgramTheApplicationSaysSoAndExitsWithOne) {
    const test::ProcessResult result = run({});
    EXPECT_TRUE(result.exitedWith(1));
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errorOutput,
              "brimwatch: can't start the desktop program " + prefix_ +
                  "/libexec/brimwatch/brimwatch-desktop: No such file or directory\n");
}

TEST_F(Command, TheStatusLineFlagBehindAnotherArgumentStartsTheApplication) {
    EXPECT_TRUE(run({"x", "--statusline"}).exitedWith(1));
    installDesktopProgram();
    EXPECT_TRUE(run({"x", "--statusline"}).exitedWith(7));
}

TEST_F(Command, TheApplicationIsTheDesktopProgramWithArgumentsAndEnvironmentKept) {
    installDesktopProgram();
    const test::ProcessResult result = run({"--some", "argument", ""});
    EXPECT_TRUE(result.exitedWith(7));
    EXPECT_EQ(result.output, prefix_ + "/bin/brimwatch\n--some\nargument\n\nmark\n");
}

TEST_F(Command, ThePathHandedOverIsTheOneThatWasCalledThroughItsLinks) {
    installDesktopProgram();
    const std::string root = fs::canonical(folder_.path());
    fs::create_directory_symlink("versions/1", root + "/current");
    fs::create_symlink("current/bin/brimwatch", root + "/brimwatch");
    const auto called = [](const test::ProcessResult& result) {
        return result.output.substr(0, result.output.find('\n'));
    };
    EXPECT_EQ(called(runAs(root + "/current/bin/brimwatch", {})), root + "/current/bin/brimwatch");
    EXPECT_EQ(called(runAs(root + "/brimwatch", {})), root + "/brimwatch");
    EXPECT_EQ(called(runAs("./brimwatch", {}, root)), root + "/brimwatch");
    EXPECT_EQ(called(runAs("current/../1/bin/brimwatch", {}, root)),
              root + "/current/../1/bin/brimwatch");
    EXPECT_EQ(called(runAs("../bin/brimwatch", {}, prefix_ + "/libexec")),
              prefix_ + "/bin/brimwatch");
}

TEST_F(Command, ThePathHandedOverDoesNotDependOnAWorkingFolderThatHasGone) {
    installDesktopProgram();
    const std::string root = fs::canonical(folder_.path());
    fs::create_directory_symlink("versions/1", root + "/current");
    const test::ProcessResult result = test::runProcess({
        .program = "/bin/sh",
        .arguments = {"-c", "mkdir gone && cd gone && rmdir ../gone && exec '" + root +
                                "/current/bin/brimwatch'"},
        .environment = {{"PATH", "/usr/bin:/bin"}},
        .input = "",
        .prepare = [&] { fs::current_path(root); },
    });
    EXPECT_TRUE(result.output.starts_with(root + "/current/bin/brimwatch\n")) << result.output;
}

TEST_F(Command, ThePathHandedOverIsNeverADescriptor) {
    installDesktopProgram();
    const int file = ::open((prefix_ + "/bin/brimwatch").c_str(), O_RDONLY);
    const std::string descriptor = "/proc/self/fd/" + std::to_string(file);
    const auto output = [&] {
        return test::runProcess({.program = descriptor,
                                 .arguments = {},
                                 .environment = {},
                                 .input = "",
                                 .prepare = nullptr})
            .output;
    };
    EXPECT_TRUE(output().starts_with(prefix_ + "/bin/brimwatch\n"));
    fs::remove(prefix_ + "/bin/brimwatch");
    EXPECT_TRUE(output().starts_with(prefix_ + "/bin/brimwatch\n"));
    ::close(file);
}

TEST_F(Command, ADesktopProgramThatCantBeStartedIsNamedWithTheReason) {
    fs::create_directories(prefix_ + "/libexec/brimwatch/brimwatch-desktop");
    const test::ProcessResult result = run({});
    EXPECT_TRUE(result.exitedWith(1));
    EXPECT_TRUE(result.errorOutput.ends_with("brimwatch-desktop: Permission denied\n"));
}

TEST_F(Command, AMeaninglessPrivateUpdateCommandExitsWithTwoAndTheUsage) {
    installDesktopProgram();
    const std::vector<std::string> forms[] = {
        {"--configure-private-updates"},           {"--configure-private-updates", ""},
        {"--configure-private-updates", "--path"}, {"--configure-private-updates", "a", "b"},
        {"--clear-private-updates", "extra"},      {"--statusline", "--clear-private-updates"},
    };
    for (const std::vector<std::string>& form : forms) {
        const test::ProcessResult result = run(form);
        EXPECT_TRUE(result.exitedWith(2));
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errorOutput, usage);
    }
}

TEST_F(Command, APrivateUpdateCommandIsCarriedOutByTheDesktopProgram) {
    installDesktopProgram();
    EXPECT_EQ(run({"--clear-private-updates"}).output,
              prefix_ + "/bin/brimwatch\n--clear-private-updates\nmark\n");
    EXPECT_EQ(run({"--configure-private-updates", "x"}).output,
              prefix_ + "/bin/brimwatch\n--configure-private-updates\nx\nmark\n");
}

TEST_F(Command, WithoutTheDesktopProgramAPrivateUpdateCommandFailsWithTwo) {
    for (const std::vector<std::string>& form :
         {std::vector<std::string>{"--clear-private-updates"},
          {"--configure-private-updates", "x"}}) {
        const test::ProcessResult result = run(form);
        EXPECT_TRUE(result.exitedWith(2));
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errorOutput, "Private update configuration failed.\n");
    }
}

TEST_F(Command, TheStatusLineDoesNotNeedTheDesktopProgram) {
    const test::ProcessResult result = run({"--statusline"});
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_EQ(result.output, "\n");
    EXPECT_EQ(result.errorOutput, "");
}

}  // namespace
}  // namespace brimwatch
