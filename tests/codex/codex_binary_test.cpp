#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "codex/codex_accounts.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;

constexpr std::size_t bundledCandidates = 9;

bool isExecutable(const std::string& path) {
    return std::filesystem::is_regular_file(path) && ::access(path.c_str(), X_OK) == 0;
}

class CodexBinary : public ::testing::Test {
  protected:
    std::vector<std::string> candidates() {
        return CodexAccounts::binaryCandidates(files_, folder_.path());
    }
    // Those behind the first nine, below the home folder "~".
    std::vector<std::string> linuxCandidates() {
        std::vector<std::string> paths = candidates();
        paths.erase(paths.begin(), paths.begin() + bundledCandidates);
        for (std::string& path : paths) {
            if (path.starts_with(folder_.path())) path.replace(0, folder_.path().size(), "~");
        }
        return paths;
    }
    void installNode(const std::string& version) {
        std::filesystem::create_directories(folder_.file(".nvm/versions/node/" + version));
    }
    std::string install(const std::string& path) {
        test::writeFile(folder_.file(path), "");
        std::filesystem::permissions(folder_.file(path), std::filesystem::perms::owner_all);
        return folder_.file(path);
    }
    // Only below the home folder: what the machine itself has installed stays out of the tests.
    std::optional<std::string> found() {
        return CodexAccounts::findBinary(files_, folder_.path(), [this](const std::string& path) {
            return path.starts_with(folder_.path()) && isExecutable(path);
        });
    }

    test::TemporaryFolder folder_;
    PosixFileSystem files_;
};

TEST_F(CodexBinary, IsLookedForInTheseNinePlacesFirst) {
    std::vector<std::string> paths = CodexAccounts::binaryCandidates(files_, "/home/a");
    ASSERT_GE(paths.size(), bundledCandidates);
    paths.resize(bundledCandidates);
    EXPECT_THAT(
        paths,
        ElementsAre("/Applications/ChatGPT.app/Contents/Resources/codex-cli/bin/codex",
                    "/Applications/ChatGPT.app/Contents/Resources/codex",
                    "/Applications/Codex.app/Contents/Resources/codex-cli/bin/codex",
                    "/Applications/Codex.app/Contents/Resources/codex",
                    "/home/a/Applications/ChatGPT.app/Contents/Resources/codex-cli/bin/codex",
                    "/home/a/Applications/ChatGPT.app/Contents/Resources/codex",
                    "/opt/homebrew/bin/codex", "/usr/local/bin/codex", "/home/a/.local/bin/codex"));
}

TEST_F(CodexBinary, IsLookedForWhereLinuxToolsInstallItAfterThat) {
    EXPECT_THAT(linuxCandidates(),
                ElementsAre("/usr/bin/codex", "~/.npm-global/bin/codex", "~/.bun/bin/codex",
                            "~/.volta/bin/codex", "~/.local/share/mise/shims/codex"));
}

TEST_F(CodexBinary, IsLookedForInEveryNodeVersionTheHighestFirst) {
    for (const char* version : {"v9.11.2", "v18.9.1", "v18.20.4", "v20.0.0", "v100.0.0"})
        installNode(version);
    EXPECT_THAT(
        linuxCandidates(),
        ElementsAre(
            "/usr/bin/codex", "~/.npm-global/bin/codex", "~/.bun/bin/codex", "~/.volta/bin/codex",
            "~/.nvm/versions/node/v100.0.0/bin/codex", "~/.nvm/versions/node/v20.0.0/bin/codex",
            "~/.nvm/versions/node/v18.20.4/bin/codex", "~/.nvm/versions/node/v18.9.1/bin/codex",
            "~/.nvm/versions/node/v9.11.2/bin/codex", "~/.local/share/mise/shims/codex"));
}

TEST_F(CodexBinary, ComparesNodeVersionsOfAnyForm) {
    for (const char* version :
         {"v0018.1.0", "v18.2", "v18.2.0-rc.10", "v18.2.0", "v20", "system", "한글", "v\xFF",
          "v99999999999999999999999999.0.0", "v099999999999999999999999998.0.0"}) {
        installNode(version);
    }
    std::vector<std::string> paths = linuxCandidates();
    ASSERT_THAT(paths, SizeIs(15));
    paths = {paths.begin() + 4, paths.begin() + 14};
    std::vector<std::string> versions;
    for (const std::string& path : paths)
        versions.emplace_back(std::filesystem::path(path).parent_path().parent_path().filename());
    EXPECT_THAT(
        versions,
        ElementsAre("v99999999999999999999999999.0.0", "v099999999999999999999999998.0.0", "v20",
                    "v18.2.0", "v18.2.0-rc.10", "v18.2", "v0018.1.0", "system", "v\xFF", "한글"));
}

TEST_F(CodexBinary, IsLookedForWithoutNodeVersionsWhereTheyCanNotBeListed) {
    installNode("v18.20.4");
    test::ScriptedFileSystem failing(files_);
    failing.failAtStep(0, std::errc::permission_denied);
    EXPECT_THAT(CodexAccounts::binaryCandidates(failing, folder_.path()),
                SizeIs(bundledCandidates + 5));
    EXPECT_THAT(failing.steps(), ElementsAre("entries " + folder_.file(".nvm/versions/node")));
}

TEST_F(CodexBinary, IsNoneWhereNoCandidateIsAnExecutableFile) {
    EXPECT_EQ(found(), std::nullopt);
    std::filesystem::create_directories(folder_.file(".bun/bin/codex"));
    test::writeFile(folder_.file(".local/bin/codex"), "");
    std::filesystem::permissions(folder_.file(".local/bin/codex"),
                                 std::filesystem::perms::owner_read);
    std::filesystem::create_directories(folder_.file(".volta/bin"));
    std::filesystem::create_symlink(folder_.file("gone"), folder_.file(".volta/bin/codex"));
    EXPECT_EQ(found(), std::nullopt);
}

TEST_F(CodexBinary, IsTheFirstCandidateThatIsAnExecutableFile) {
    const std::string shim = install(".local/share/mise/shims/codex");
    EXPECT_EQ(found(), shim);
    const std::string oldNode = install(".nvm/versions/node/v9.0.0/bin/codex");
    EXPECT_EQ(found(), oldNode);
    installNode("v20.0.0");
    EXPECT_EQ(found(), oldNode);
    const std::string newNode = install(".nvm/versions/node/v18.0.0/bin/codex");
    EXPECT_EQ(found(), newNode);
    const std::string local = install(".local/bin/codex");
    EXPECT_EQ(found(), local);
    const std::string bundled = install("Applications/ChatGPT.app/Contents/Resources/codex");
    EXPECT_EQ(found(), bundled);
}

TEST_F(CodexBinary, KeepsTheCandidatesPathWhereItIsASymbolicLink) {
    install("elsewhere/codex.js");
    std::filesystem::create_directories(folder_.file(".npm-global/bin"));
    std::filesystem::create_symlink("../../elsewhere/codex.js",
                                    folder_.file(".npm-global/bin/codex"));
    EXPECT_EQ(found(), folder_.file(".npm-global/bin/codex"));
}

TEST_F(CodexBinary, IsFoundAmongAThousandNodeVersions) {
    for (int minor = 0; minor < 1000; ++minor)
        installNode("v18." + std::to_string(minor) + ".0");
    const std::string installed = install(".nvm/versions/node/v18.7.0/bin/codex");
    EXPECT_EQ(found(), installed);
    EXPECT_EQ(candidates().size(), bundledCandidates + 5 + 1000);
    EXPECT_EQ(candidates().at(bundledCandidates + 4),
              folder_.file(".nvm/versions/node/v18.999.0/bin/codex"));
}

}  // namespace
}  // namespace brimwatch
