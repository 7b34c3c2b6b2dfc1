#include "platform/posix/executable_path.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "harness/temporary_folder.h"

namespace brimwatch {
namespace {

namespace fs = std::filesystem;

TEST(ExecutableFile, IsAFileThatMayBeExecuted) {
    const test::TemporaryFolder folder;
    test::writeFile(folder.file("program"), "#!/bin/sh\n");
    EXPECT_FALSE(isExecutableFile(folder.file("program")));
    fs::permissions(folder.file("program"), fs::perms::owner_all);
    EXPECT_TRUE(isExecutableFile(folder.file("program")));
    fs::create_symlink("program", folder.file("link"));
    EXPECT_TRUE(isExecutableFile(folder.file("link")));
}

TEST(ExecutableFile, IsNoFolderAndNothingThatIsMissing) {
    const test::TemporaryFolder folder;
    EXPECT_FALSE(isExecutableFile(folder.path()));
    EXPECT_FALSE(isExecutableFile(folder.file("none")));
    EXPECT_FALSE(isExecutableFile(""));
    fs::create_symlink("none", folder.file("dangling"));
    EXPECT_FALSE(isExecutableFile(folder.file("dangling")));
}

TEST(ExecutablePath, OfTheRunningProgramLeadsToIt) {
    ASSERT_TRUE(resolvedExecutablePath());
    EXPECT_TRUE(isExecutableFile(*resolvedExecutablePath()));
    ASSERT_TRUE(calledExecutablePath());
    EXPECT_TRUE(fs::equivalent(*calledExecutablePath(), *resolvedExecutablePath()));
}

}  // namespace
}  // namespace brimwatch
